#include "support/dialogsupport.h"
#include "support/testsupport.h"

#include "launch/gamelauncher.h"
#include "launch/gamepath.h"
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

    // Start-up reading the favorites is tested with them.
    void startUpReadsTheGamePath()
    {
        TestEnvironment env;
        const QString game = env.dir.filePath(u"QUAKE2.EXE"_s);
        writeFile(game);
        writeFile(u"Pulsebox.cfg"_s, game.toLocal8Bit() + "\r\nignored\r\n");
        {
            MainWindow w;
            w.start();
            QCOMPARE(w.gamePath(), game);
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
    }

    // The separator scan's edges (the launch above sees the usual paths) and a config
    // line the code page cannot hold, which must survive a save and a restart.
    void separatorScanAndConfigEncoding()
    {
        QCOMPARE(LastSeparatorPosition(u"quake2.exe"_s), 1);
        QCOMPARE(LastSeparatorPosition(u"a/"_s), 1);  // the last character is never looked at
        QCOMPARE(LastSeparatorPosition(QString()), -1);
        QCOMPARE(GameConfig::firstLine(QByteArray()), QString());
        const QString cyrillic = u"/home/\u0438\u0433\u0440\u044b/quake2.exe"_s;
        QCOMPARE(GameConfig::firstLine(GameConfig::serialize(cyrillic)), cyrillic);
        QCOMPARE(GameConfig::serialize(u"/jeux/\u00e9t\u00e9/quake2.exe"_s), QByteArray("/jeux/\xe9t\xe9/quake2.exe\r\n"));
        QCOMPARE(GameConfig::firstLine("/jeux/\xe9t\xe9/quake2.exe\r\n"), u"/jeux/\u00e9t\u00e9/quake2.exe"_s);
    }
};

QTEST_MAIN(TestLaunch)
#include "tst_launch.moc"
