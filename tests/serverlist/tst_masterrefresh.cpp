#include "support/testsupport.h"

#include "demonet/demonetwork.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/vblist.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

namespace {
Demo::Server fake(const char *address, const char *protocol, const char *name)
{
    Demo::Server s;
    s.address = QHostAddress(QLatin1String(address));
    s.protocol = QLatin1String(protocol);
    s.hostName = QLatin1String(name);
    s.map = QStringLiteral("q2dm1");
    return s;
}

// The main window and a demo network whose master lists its game servers.
struct MasterRefresh {
    explicit MasterRefresh(bool silentMaster = false)
    {
        Demo::Config config;
        config.httpPort = 0;
        config.masterPort = 0;
        config.servers = {fake("127.0.12.1", "34", "Master Listed One"), fake("127.0.12.2", "31", "Master Listed Two"),
                          fake("127.0.12.3", "silent", "Quiet")};
        QString error;
        started = network.start(config, &error, true);
        network.master()->silent = silentMaster;
        window->Text1->setEditText(QStringLiteral(" ") + network.masterUrl() + QStringLiteral(" "));
    }
    TestEnvironment env;
    Demo::Network network;
    bool started = false;
    std::unique_ptr<frmPulsebox> window = newMainWindow();
};
}

class TestMasterRefresh : public QObject {
    Q_OBJECT
private slots:
    void refreshFromTheDemoMaster_data()
    {
        QTest::addColumn<bool>("fast");
        QTest::newRow("one at a time") << false;
        QTest::newRow("Fast Refresh") << true;
    }

    void refreshFromTheDemoMaster()
    {
        QFETCH(bool, fast);
        MasterRefresh r;
        QVERIFY(r.started);
        if (fast)
            r.window->mnuFastRefresh->trigger();
        QCOMPARE(r.window->mnuFastRefresh->isChecked(), fast);
        QTest::mouseClick(r.window->Command2, Qt::LeftButton);

        QCOMPARE(r.network.master()->received, QList<QByteArray>{QByteArray("query\n\0", 7)});
        QCOMPARE(r.window->lbHost->Texts(), (QStringList{QStringLiteral("127.0.12.1:27910"),
                                                          QStringLiteral("127.0.12.2:27910"),
                                                          QStringLiteral("127.0.12.3:27910")}));
        QVERIFY(r.env.prompts.shown.isEmpty());
        const QStringList rows = r.window->List1->Texts();
        QCOMPARE(rows.size(), 3);
        QVERIFY(rows[0].contains(QStringLiteral("127.0.12.1:27910")) && rows[0].contains(QStringLiteral("Master Listed One")));
        QVERIFY(rows[1].contains(QStringLiteral("Master Listed Two")) && rows[1].contains(QStringLiteral("3.14")));
        QVERIFY(rows[2].contains(QStringLiteral("127.0.12.3:27910")) && rows[2].contains(QStringLiteral("No ")));
        QCOMPARE(r.window->Label14->text(), QStringLiteral("3"));
        QCOMPARE(r.window->Statusbar->text(), QStringLiteral("Done..."));
        QVERIFY(r.window->Command2->isEnabled() && !r.window->Command1->isEnabled());
    }

    void masterProblemsAskAboutFavorites()
    {
        MasterRefresh r(true);
        QVERIFY(r.started);
        r.window->appendFavorite(QStringLiteral("127.0.12.1"), QStringLiteral("fav"));
        QStringList statuses;
        connect(r.window.get(), &frmPulsebox::statusChanged, this, [&](const QString &s) { statuses << s; });
        const QString question = QStringLiteral("Do you want to continue trying favorites?");
        r.env.prompts.answers = {true};
        QTest::mouseClick(r.window->Command2, Qt::LeftButton);  // a master that never answers, answered Yes
        QCOMPARE(r.env.prompts.texts(), (QStringList{QStringLiteral("problem getting list of server"), question}));
        QVERIFY(statuses.contains(QStringLiteral("Problem getting list from server: The master server 127.0.0.1 did not answer.")));
        QCOMPARE(r.window->List1->Texts().size(), 1);  // the favorite only
        QCOMPARE(r.window->Statusbar->text(), QStringLiteral("Done..."));

        // A master location without a host is as invalid as any other URL without one.
        r.env.prompts.shown.clear();
        r.window->Text1->setEditText(QStringLiteral("master://:27900"));
        QTest::mouseClick(r.window->Command2, Qt::LeftButton);  // answered No
        QCOMPARE(r.env.prompts.texts(), (QStringList{QStringLiteral("Invalid URL supplied."), question}));
        QCOMPARE(r.network.master()->received.size(), 1);  // only the first refresh asked the master
        QVERIFY(r.window->List1->Texts().isEmpty());
    }
};

QTEST_MAIN(TestMasterRefresh)
#include "tst_masterrefresh.moc"
