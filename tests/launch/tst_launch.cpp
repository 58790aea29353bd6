#include "support/testsupport.h"

#include "favorites/favfile.h"
#include "launch/frmsettings.h"
#include "probes/address.h"
#include "serverlist/probedecisions.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/pulseboxmod.h"
#include "shell/serverrow.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

namespace {
frmSettings *openSettings(MainWindow &w)
{
    MainWindowDriver::trigger(w, "settingsAction_");
    return w.findChild<frmSettings *>(QStringLiteral("frmSettings"));
}

void addServer(MainWindow &w, const char *address, int port)
{
    ServerRec rec;
    rec.Address = DottedToAddress(QLatin1String(address));
    rec.Port = port;
    MainWindowDriver::addServer(w, rec, QStringLiteral("010 - %1").arg(w.servers().ServerCount + 1));
}
}

class TestLaunch : public QObject {
    Q_OBJECT
private slots:
    void settingsCheckAndSave()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        const QString game = env.dir.filePath(QStringLiteral("games/Quake2.exe"));
        QDir(env.dir.path()).mkdir(QStringLiteral("games"));
        writeFile(game);
        writeFile(env.dir.filePath(QStringLiteral("games/yquake2")));

        frmSettings *settings = openSettings(*w);
        QVERIFY(settings && settings->isVisible());
        QVERIFY(settings->Text1->text().isEmpty());

        for (const QString &bad : {env.dir.filePath(QStringLiteral("games/missing/quake2.exe")),
                                   env.dir.filePath(QStringLiteral("games/yquake2")), QString()}) {
            settings->Text1->setText(bad);
            QTest::mouseClick(settings->Command1, Qt::LeftButton);
            QCOMPARE(env.prompts.texts().last(), QStringLiteral("Didn't find QUAKE2.EXE"));
            QVERIFY(settings->isVisible());
            QVERIFY(!QFile::exists(QStringLiteral("Pulsebox.cfg")));
        }
        QCOMPARE(env.prompts.shown.size(), 3);

        settings->Text1->setText(QStringLiteral("  ") + game + QStringLiteral(" "));
        QTest::mouseClick(settings->Command1, Qt::LeftButton);
        QTRY_VERIFY(!w->findChild<frmSettings *>(QStringLiteral("frmSettings")));
        QCOMPARE(readFile(QStringLiteral("Pulsebox.cfg")), "  " + game.toLocal8Bit() + " \r\n");
        QCOMPARE(w->gamePath(), game);

        settings = openSettings(*w);  // opens with the line as stored; Cancel changes nothing
        QCOMPARE(settings->Text1->text(), QStringLiteral("  ") + game + QStringLiteral(" "));
        settings->Text1->setText(QStringLiteral("whatever"));
        QTest::mouseClick(settings->Command2, Qt::LeftButton);
        QCOMPARE(w->gamePath(), game);
        QCOMPARE(readFile(QStringLiteral("Pulsebox.cfg")), "  " + game.toLocal8Bit() + " \r\n");
    }

    void startUpReadsBothFiles()
    {
        TestEnvironment env;
        const QString game = env.dir.filePath(QStringLiteral("QUAKE2.EXE"));
        writeFile(game);
        writeFile(QStringLiteral("Pulsebox.cfg"), game.toLocal8Bit() + "\r\nignored\r\n");
        writeFile(QStringLiteral("Pulsebox.fav"), "1.2.3.4\r\nOne\r\n");
        {
            MainWindow w;
            w.start();
            QCOMPARE(w.gamePath(), game);
            QCOMPARE(MainWindowDriver::favoriteAddresses(w), QStringList{QStringLiteral("1.2.3.4")});
        }
        // Leading blanks are part of the path that must exist, so this line does not qualify.
        Mod() = PulseboxMod{};
        writeFile(QStringLiteral("Pulsebox.cfg"), " " + game.toLocal8Bit() + "\r\n");
        MainWindow w;
        w.start();
        QVERIFY(w.gamePath().isEmpty());
    }

    void launchStartsTheGameInItsFolder()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        MainWindowDriver::offerListCommands(*w);
        addServer(*w, "127.0.0.2", 27910);
        addServer(*w, "127.0.0.3", 0);
        w->setGamePath(QStringLiteral("/games/q2/quake2.exe"));
        env.prompts.answers = {true, true};
        MainWindowDriver::doubleClickRow(*w, 0);
        MainWindowDriver::doubleClickRow(*w, 1);
        QCOMPARE(env.prompts.shown.size(), 2);
        QCOMPARE(env.prompts.shown[0].text, QStringLiteral("Launch to Server?"));
        QCOMPARE(env.prompts.shown[0].title, QStringLiteral("Launch?"));
        QCOMPARE(env.starter.started.size(), 2);
        const QStringList common{QStringLiteral("+set"), QStringLiteral("basedir"), QStringLiteral("/games/q2/"),
                                 QStringLiteral("+connect")};
        QCOMPARE(env.starter.started[0].program, QStringLiteral("/games/q2/quake2.exe"));
        QCOMPARE(env.starter.started[0].arguments, common + QStringList{QStringLiteral("127.0.0.2:27910")});
        QCOMPARE(env.starter.started[0].workingFolder, QStringLiteral("/games/q2/"));
        QCOMPARE(env.starter.started[1].arguments, common + QStringList{QStringLiteral("127.0.0.3:0")});

        // The program's own files stay in the folder it started in.
        QCOMPARE(QDir::currentPath(), QDir(env.dir.path()).canonicalPath());
        MainWindowDriver::addToFavorites(*w, 0);
        QVERIFY(QFile::exists(env.dir.filePath(FavFile::kName)));
    }

    void launchRefusals()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        MainWindowDriver::serverList(*w)->addRow(QStringLiteral("000 - a row without a record"));
        MainWindowDriver::doubleClickRow(*w, 0);
        QCOMPARE(env.prompts.texts(), QStringList{QStringLiteral("Pick a server from the list first.")});
        addServer(*w, "127.0.0.2", 27910);

        w->setGamePath(QStringLiteral("   "));
        MainWindowDriver::doubleClickRow(*w, 1);
        QCOMPARE(env.prompts.shown.last().text,
                 QStringLiteral("Your Quake 2 path isn't set.  Go to Options/Settings to set your Quake 2 path"));
        QCOMPARE(env.prompts.shown.last().title, QStringLiteral("Lauch Aborted"));

        w->setGamePath(QStringLiteral("/quake2.exe"));
        MainWindowDriver::doubleClickRow(*w, 1);
        QCOMPARE(env.prompts.shown.last().text, QStringLiteral("Bad Path to Quake 2"));
        QCOMPARE(env.prompts.shown.last().title, QStringLiteral("Pulsebox"));

        w->setGamePath(QStringLiteral("C:\\QUAKE2\\QUAKE2.EXE"));
        env.prompts.answers = {false};
        MainWindowDriver::doubleClickRow(*w, 1);
        QCOMPARE(env.prompts.shown.last().title, QStringLiteral("Launch?"));
        QVERIFY(env.starter.started.isEmpty());

        env.prompts.answers = {true};
        env.starter.fail = true;
        MainWindowDriver::doubleClickRow(*w, 1);
        QCOMPARE(env.starter.started.size(), 1);
        QCOMPARE(env.starter.started[0].arguments[2], QStringLiteral("C:\\QUAKE2\\"));
        QVERIFY(env.prompts.shown.last().text.startsWith(QStringLiteral("Could not start C:\\QUAKE2\\QUAKE2.EXE")));
        QVERIFY(w->isVisible());
    }
};

QTEST_MAIN(TestLaunch)
#include "tst_launch.moc"
