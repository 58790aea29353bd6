#include "support/demoservers.h"
#include "support/dialogsupport.h"
#include "support/udppeer.h"
#include "support/testsupport.h"

#include "probes/address.h"
#include "probes/serverinfowindow.h"
#include "probes/statuspopup.h"
#include "probes/gamequerychannel.h"
#include "serverlist/refreshdecisions.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/wiretext.h"

#include <QLineEdit>
#include <QScreen>
#include <QNetworkDatagram>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUdpSocket>
#include <QtTest>

namespace {
// A game server on `address`:27910 that speaks `protocol`; null when it cannot start.
std::unique_ptr<Demo::GameServer> fake(const char *address, const char *protocol, int delayMs = 0)
{
    Demo::Server s = demoServer(QLatin1String(address), QLatin1String(protocol), QStringLiteral("Test Server"),
                                {{QStringLiteral("Vector"), 21, 38}, {QStringLiteral("Doc Holiday"), 3, 120},
                                 {QStringLiteral("Mynx"), -2, 999}});
    s.delayMs = delayMs;
    auto server = std::make_unique<Demo::GameServer>(s);
    QString error;
    return server->start(&error) ? std::move(server) : nullptr;
}
}

class TestGameQueries : public QObject {
    Q_OBJECT
private slots:
    void versionProbeFindsTheProtocol()
    {
        TestEnvironment env;
        GameQueryChannel channel(env.prompts);
        struct Case { const char *address, *protocol, *version; int queries; };
        // Every protocol's step: tst_refreshdecisions; here the first, the last and a refuser on the wire.
        for (const Case &c : {Case{"127.0.10.1", "31", "3.14", 1}, Case{"127.0.10.3", "34", "3.19", 4},
                              Case{"127.0.10.4", "none", "3.20", 4}}) {
            const auto server = fake(c.address, c.protocol);
            QVERIFY(server);
            const auto result = channel.versionProbe(QString::fromLatin1(c.address), QStringLiteral("27910"));
            QCOMPARE(result.version, QLatin1String(c.version));
            QCOMPARE(server->received.size(), c.queries);
            for (int i = 0; i < c.queries; ++i)
                QCOMPARE(server->received[i], QByteArray("\xff\xff\xff\xffinfo 3") + QByteArray::number(i + 1));
            QCOMPARE(result.infoLine, QLatin1String(c.protocol) == u"none" ? QStringLiteral("No data returned")
                                                                            : QStringLiteral("     Test Server    q2dm1  3/ 8"));
        }
    }

    void silentAndLateServers()
    {
        TestEnvironment env;
        GameQueryChannel channel(env.prompts);
        const auto silent = fake("127.0.10.6", "silent"), slow = fake("127.0.10.8", "34", 300);  // two ticks are 100 ms here
        QVERIFY(silent && slow);
        QElapsedTimer clock;
        clock.start();
        const auto result = channel.versionProbe(QStringLiteral("127.0.10.6"), QStringLiteral("27910"));
        QVERIFY(clock.elapsed() >= 90);  // waited out its two ticks
        QCOMPARE(result.version, QStringLiteral("3.14"));
        QCOMPARE(result.infoLine, QStringLiteral("No data returned"));
        QCOMPARE(silent->received.size(), 1);

        // A late answer stays until the next query.
        QVERIFY(channel.query(QStringLiteral("127.0.10.8"), QStringLiteral("27910"), 4).isEmpty());
        QTRY_VERIFY(!channel.lastReply().isEmpty());
        QVERIFY(channel.lastReply().startsWith(QString(4, QChar(0xFF)) + QStringLiteral("info\n")));
        QVERIFY(channel.query(QStringLiteral("127.0.10.6"), QStringLiteral("27910"), 1).isEmpty());
        QVERIFY(channel.lastReply().isEmpty());
    }

    void hostileRepliesNeverBreakAProbe()
    {
        TestEnvironment env;
        GameQueryChannel channel(env.prompts);
        UdpPeer peer("127.0.10.10", 27910);
        QVERIFY(peer.bound);
        QByteArray answer;  // to every datagram
        peer.onDatagram = [&](const QNetworkDatagram &d) { peer.sendTo(answer, d); };
        const QList<std::pair<QByteArray, QString>> cases{
            {QByteArray(1, '\xff'), QStringLiteral("Malformed data returned")},
            {QByteArray(65000, 'z'), QStringLiteral("Malformed data returned")},
            {QByteArray("\xff\xff\xff\xffinfo\n\0\0name\0 map 1/2", 24), QStringLiteral("name map 1/2")},
            {QByteArray("\n\x80\x81\xfe\xff"), WireText::fromBytes("\x80\x81\xfe\xff")},
            {QByteArray("\xff\xff\xff\xffprint\nno pairs\n"), QStringLiteral("no pairs")},
        };
        for (const auto &[reply, infoLine] : cases) {
            answer = reply;
            const auto result = channel.versionProbe(QStringLiteral("127.0.10.10"), QStringLiteral("27910"));
            QCOMPARE(result.infoLine, infoLine);
            QCOMPARE(result.version, QStringLiteral("3.14"));
            QCOMPARE(WireText::toBytes(channel.lastReply()), reply);
        }
        answer.clear();  // an empty datagram is no answer
        QCOMPARE(channel.versionProbe(QStringLiteral("127.0.10.10"), QStringLiteral("27910")).infoLine,
                 QStringLiteral("No data returned"));
        QVERIFY(env.prompts.shown.isEmpty());

        // A port that is no port: the send fails, the user is told, the probe goes on.
        const auto result = channel.versionProbe(QStringLiteral("127.0.10.10"), QStringLiteral("99999"));
        QCOMPARE(result.infoLine, QStringLiteral("No data returned"));
        QCOMPARE(env.prompts.shown.size(), 1);
        QCOMPARE(env.prompts.shown[0].title, QStringLiteral("Socket 2!"));
        // The whole error number (a failed send is a network error, 10051), then the reason.
        const QString box = env.prompts.shown[0].text;
        QCOMPARE(box.left(6), QStringLiteral(" 10051"));
        QVERIFY(box.size() > 6 && !box.at(6).isDigit());
    }

    void popUpTextFollowsTheWindowSize()
    {
        StatusPopup pop;
        pop.resize(300, 200);
        pop.show();
        QTRY_COMPARE(pop.findChild<QWidget *>(QStringLiteral("playersText_"))->geometry(), pop.rect());  // no empty strips at the edges
    }

    void serverInfoShowsSettingsAndPlayers()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        auto *list = w->findChild<ItemList *>(QStringLiteral("serverList_"));
        auto *serverInfo = w->findChild<QPushButton *>(QStringLiteral("serverInfoButton_"));
        const auto clickRow = [&](int row) {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
        };
        QVERIFY(!serverInfo->isEnabled());
        const auto server = fake("127.0.10.11", "34");
        QVERIFY(server);
        const int index = addListedServer(*w, "127.0.10.11", 27910);
        clickRow(0);
        QVERIFY(serverInfo->isEnabled());  // a click on a row enables it when no run is going
        w->move(0, 0);  // Server Info opens in the middle of the screen, not of the main window
        QTest::mouseClick(serverInfo, Qt::LeftButton);
        QCOMPARE(server->received.last(), QByteArray("\xff\xff\xff\xffstatus"));
        QCOMPARE(w->findChild<QLineEdit *>(QStringLiteral("serverAddressEdit_"))->text(), QStringLiteral("127.0.10.11"));
        auto *info = w->findChild<ServerInfoWindow *>(QStringLiteral("ServerInfoWindow"));
        QVERIFY(info && info->isVisible());
        QVERIFY(info->isModal());
        QVERIFY((info->geometry().center() - info->screen()->geometry().center()).manhattanLength() <= 10);
        const QString text = info->text();
        QVERIFY(text.startsWith(QStringLiteral("SERVER STATUS:\ncheats=0\ndeathmatch=1\n")));
        QVERIFY(text.contains(QStringLiteral("\nmaxclients=8\nprotocol=34\n")));
        QVERIFY(text.endsWith(QStringLiteral("\nPLAYER STATUS:\n21 38 \"Vector\"\n3 120 \"Doc Holiday\"\n-2 999 \"Mynx\"\n")));
        QTest::mouseClick(info->findChild<QPushButton *>(QStringLiteral("okButton_")), Qt::LeftButton);
        QTRY_VERIFY(!w->findChild<ServerInfoWindow *>(QStringLiteral("ServerInfoWindow")));

        // A silent server shows nothing at all.
        w->servers().Servers[static_cast<size_t>(index)].Address = DottedToAddress(QStringLiteral("127.0.10.12"));
        QTest::mouseClick(serverInfo, Qt::LeftButton);
        QVERIFY(!w->findChild<ServerInfoWindow *>(QStringLiteral("ServerInfoWindow")));
        QVERIFY(env.prompts.shown.isEmpty());
    }
};

QTEST_MAIN(TestGameQueries)
#include "tst_gamequeries.moc"
