#include "support/dialogsupport.h"
#include "support/testsupport.h"

#include "favorites/favfile.h"
#include "launch/gamelauncher.h"
#include "launch/settingsdialog.h"

#include <QAction>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;

class TestLaunch : public QObject {
    Q_OBJECT
private slots:
    void settingsCheckAndSave()
    {
        TestEnvironment env;
        const QString game = env.dir.filePath(u"games/Quake2.exe"_s);
        QDir(env.dir.path()).mkdir(u"games"_s);
        writeFile(game);
        writeFile(env.dir.filePath(u"games/yquake2"_s));

        auto *settings = new SettingsDialog(nullptr);
        QPointer<SettingsDialog> guard = settings;
        QSignalSpy saved(settings, &SettingsDialog::gamePathSaved);
        settings->show();
        QLineEdit *path = child<QLineEdit>(*settings, "pathEdit_");
        QVERIFY(path->text().isEmpty());
        for (const QString &bad : {env.dir.filePath(u"games/missing/quake2.exe"_s), env.dir.filePath(u"games/yquake2"_s),
                                   QString()}) {
            path->setText(bad);
            QTest::mouseClick(child<QPushButton>(*settings, "okButton_"), Qt::LeftButton);
            QCOMPARE(env.prompts.texts().last(), u"Didn't find QUAKE2.EXE"_s);
            QVERIFY(settings->isVisible());
            QCOMPARE(readFile(u"Pulsebox.cfg"_s), "<missing>");
        }
        QCOMPARE(env.prompts.shown.size(), 3);

        // Written as typed, reported trimmed.
        path->setText(u"  "_s + game + u" "_s);
        QTest::mouseClick(child<QPushButton>(*settings, "okButton_"), Qt::LeftButton);
        QTRY_VERIFY(!guard);
        QCOMPARE(readFile(u"Pulsebox.cfg"_s), "  " + game.toLocal8Bit() + " \r\n");
        QCOMPARE(saved.size(), 1);
        QCOMPARE(saved[0][0].toString(), game);

        // Through the menu: opens with the line as stored; Cancel changes nothing, OK
        // is used by the next launch at once.
        auto w = newMainWindow();
        addListedServer(*w, "127.0.0.2", 27910);
        MainWindowDriver::trigger(*w, "settingsAction_");
        settings = w->findChild<SettingsDialog *>();
        QCOMPARE(child<QLineEdit>(*settings, "pathEdit_")->text(), u"  "_s + game + u" "_s);
        QTest::mouseClick(child<QPushButton>(*settings, "cancelButton_"), Qt::LeftButton);
        QTRY_VERIFY(!w->findChild<SettingsDialog *>());
        MainWindowDriver::trigger(*w, "settingsAction_");
        QTest::mouseClick(child<QPushButton>(*w->findChild<SettingsDialog *>(), "okButton_"), Qt::LeftButton);
        env.prompts.answers = {true};
        MainWindowDriver::doubleClickRow(*w, 0);
        QCOMPARE(env.prompts.shown.last().text, u"Launch to Server?"_s);
        QCOMPARE(env.starter.started.size(), 1);
        QCOMPARE(env.starter.started[0].program, game);
    }

    void startUpReadsBothFiles()
    {
        TestEnvironment env;
        const QString game = env.dir.filePath(u"QUAKE2.EXE"_s);
        writeFile(game);
        writeFile(u"Pulsebox.cfg"_s, game.toLocal8Bit() + "\r\nignored\r\n");
        writeFile(FavFile::kName, "1.2.3.4\r\nOne\r\n");
        {
            MainWindow w;
            w.start();
            QCOMPARE(w.gamePath(), game);
            QCOMPARE(MainWindowDriver::favoriteAddresses(w), QStringList{u"1.2.3.4"_s});
        }
        // Leading blanks are part of the path that must exist, so this line does not qualify.
        writeFile(u"Pulsebox.cfg"_s, " " + game.toLocal8Bit() + "\r\n");
        MainWindow w;
        w.start();
        QVERIFY(w.gamePath().isEmpty());
    }

    void launchStartsTheGameInItsFolder()
    {
        TestEnvironment env;
        env.prompts.answers = {true, true};
        GameLauncher(u"/games/q2/quake2.exe"_s).launch(u"127.0.0.2:27910"_s, u"Launch to Server?"_s);
        GameLauncher(u"C:\\QUAKE2\\QUAKE2.EXE"_s).launch(u"127.0.0.3:0"_s, u"Launch to Server?\nArena"_s);
        QCOMPARE(env.prompts.shown[0].text, u"Launch to Server?"_s);
        QCOMPARE(env.prompts.shown[0].title, u"Launch?"_s);
        QCOMPARE(env.prompts.shown[1].text, u"Launch to Server?\nArena"_s);
        QCOMPARE(env.starter.started.size(), 2);
        const ScriptedStarter::Started &slashes = env.starter.started[0], &backslashes = env.starter.started[1];
        QCOMPARE(slashes.program, u"/games/q2/quake2.exe"_s);
        QCOMPARE(slashes.arguments, (QStringList{u"+set"_s, u"basedir"_s, u"/games/q2/"_s, u"+connect"_s, u"127.0.0.2:27910"_s}));
        QCOMPARE(slashes.workingFolder, u"/games/q2/"_s);
        QCOMPARE(backslashes.arguments, (QStringList{u"+set"_s, u"basedir"_s, u"C:\\QUAKE2\\"_s, u"+connect"_s, u"127.0.0.3:0"_s}));
        // The program's own files stay in the folder it started in.
        QCOMPARE(QDir::currentPath(), QDir(env.dir.path()).canonicalPath());
    }

    void launchRefusals()
    {
        struct Case {
            QString path;
            bool answer;
            QString text, title;
        };
        const QString noPath = u"Your Quake 2 path isn't set.  Go to Options/Settings to set your Quake 2 path"_s;
        for (const Case &c : QList<Case>{{u"   "_s, true, noPath, u"Lauch Aborted"_s},
                                         {u"/quake2.exe"_s, true, u"Bad Path to Quake 2"_s, u"Pulsebox"_s},
                                         {u"C:\\QUAKE2\\QUAKE2.EXE"_s, false, u"Launch to Server?"_s, u"Launch?"_s}}) {
            TestEnvironment env;
            env.prompts.answers = {c.answer};
            GameLauncher(c.path).launch(u"127.0.0.2:27910"_s, u"Launch to Server?"_s);
            QCOMPARE(env.prompts.shown.size(), 1);
            QCOMPARE(env.prompts.shown[0].text, c.text);
            QCOMPARE(env.prompts.shown[0].title, c.title);
            QVERIFY(env.starter.started.isEmpty());
        }
        TestEnvironment env;  // a game that cannot be started: said, and the program goes on
        env.prompts.answers = {true};
        env.starter.fail = true;
        GameLauncher(u"C:\\QUAKE2\\QUAKE2.EXE"_s).launch(u"127.0.0.2:27910"_s, u"Launch to Server?"_s);
        QVERIFY(env.prompts.shown.last().text.startsWith(u"Could not start C:\\QUAKE2\\QUAKE2.EXE"_s));

        auto w = newMainWindow();  // a double-click on a row without a record
        MainWindowDriver::serverList(*w)->addRow(u"000 - a row without a record"_s);
        MainWindowDriver::doubleClickRow(*w, 0);
        QCOMPARE(env.prompts.shown.last().text, u"Pick a server from the list first."_s);
    }
};

QTEST_MAIN(TestLaunch)
#include "tst_launch.moc"
