#include "support/testsupport.h"

#include "demonet/demonetwork.h"
#include "probes/dssocket.h"
#include "serverlist/urltext.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/vblist.h"
#include "shell/wiretext.h"

#include <QComboBox>
#include <QLabel>
#include <QTcpServer>
#include <QtTest>

namespace {
struct Fetch {
    explicit Fetch(const QByteArray &response)
    {
        network.setRawResponse(response);
        QString error;
        Demo::Config config;
        config.httpPort = 0;
        QVERIFY(network.start(config, &error, true));
        window->Text1->setEditText(QStringLiteral("  http://127.0.0.1:%1/quake2/gamespy.txt ").arg(network.httpPort()));
    }
    void run()
    {
        QString host;
        QVERIFY(window->fetchPrepare(&host));
        window->fetchStart(host);
        QTRY_VERIFY_WITH_TIMEOUT(!Mod().FetchBusy, 10000);
    }
    QString host() const { return QStringLiteral("127.0.0.1:%1").arg(network.httpPort()); }
    TestEnvironment env;
    Demo::Network network;
    std::unique_ptr<frmPulsebox> window = newMainWindow();
    QStringList statuses;
    QMetaObject::Connection recorder = QObject::connect(window.get(), &frmPulsebox::statusChanged,
                                                        [this](const QString &text) { statuses << text; });
};
}

class TestListFetch : public QObject {
    Q_OBJECT
private slots:
    void requestAndEntries()
    {
        Fetch fetch("HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nX-Odd: \t\r\n\r\n"
                    "1.2.3.4:27910\r\n\r\n5.6.7.8\r\n  a\tb  \r\n");
        fetch.run();
        QCOMPARE(fetch.network.lastRequest,
                 WireText::toBytes(ListRequestText(fetch.host(), QStringLiteral("quake2/gamespy.txt"))));
        QVERIFY(fetch.network.lastRequest.startsWith("GET /quake2/gamespy.txt text/plain\r\n"));
        QVERIFY(fetch.network.lastRequest.contains("\r\nHost: " + fetch.host().toLatin1() + "\r\n"));
        QVERIFY(fetch.network.lastRequest.endsWith("Connection: \r\n\r\n\r"));
        QCOMPARE(Mod().ListUrl, QStringLiteral("http://127.0.0.1:%1/quake2/gamespy.txt").arg(fetch.network.httpPort()));
        QCOMPARE(fetch.window->lbHost->Texts(), (QStringList{QStringLiteral("1.2.3.4:27910"), QString(),
                                                             QStringLiteral("5.6.7.8"), QStringLiteral("ab")}));
        QCOMPARE(Mod().BytesReceived, 14 + 1 + 8 + 8);  // body lines only, as delivered
        QCOMPARE(fetch.window->Statusbar->text(), QStringLiteral("Connection closed...31 bytes received."));
        QVERIFY(fetch.window->Label14->text().isEmpty());  // fewer than ten lines
    }

    void everyTenthLineCounts()
    {
        QByteArray body = "HTTP/1.0 200 OK\r\n\r\n";
        for (int i = 0; i < 25; ++i)
            body += "127.0.0." + QByteArray::number(i) + "\n";
        Fetch fetch(body);
        fetch.run();
        QCOMPARE(fetch.window->lbHost->ListCount(), 25);
        QCOMPARE(fetch.window->Label14->text(), QStringLiteral("20"));
        QCOMPARE(fetch.statuses, (QStringList{QStringLiteral("Connected..."), QStringLiteral("Ready to Send..."),
                                              QStringLiteral("Retreiving List....10"), QStringLiteral("Retreiving List....20"),
                                              QStringLiteral("Connection closed...%1 bytes received.").arg(Mod().BytesReceived)}));
    }

    void responseWithoutEmptyLineGivesNothing()
    {
        Fetch fetch("HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n1.2.3.4\r\n5.6.7.8");
        fetch.run();
        QCOMPARE(fetch.window->lbHost->ListCount(), 0);
        QCOMPARE(Mod().BytesReceived, 0);
        QCOMPARE(fetch.window->Statusbar->text(), QStringLiteral("Connection closed...0 bytes received."));
    }

    void hostileBodiesAreSurvived()
    {
        QByteArray body = "HTTP/1.0 200 OK\r\n\r\n";
        body += QByteArray(200 * 1024, 'y');                 // a line that never ends
        body += QByteArray("\n\x00\x01\xff\x80 tail", 11);  // control and high bytes, no final line feed
        Fetch fetch(body);
        fetch.run();
        QCOMPARE(fetch.window->lbHost->ListCount(), 5);  // three whole pieces, the rest, the tail
        QCOMPARE(fetch.window->lbHost->Texts().last(), WireText::fromBytes("\xff\x80 tail"));
        QCOMPARE(Mod().BytesReceived, 200 * 1024 + 10);
    }

    void refusedConnection()
    {
        TestEnvironment env;
        auto window = newMainWindow();
        const quint16 port = closedPort();
        window->Text1->setEditText(QStringLiteral("http://127.0.0.1:%1/quake2/gamespy.txt").arg(port));
        QString host;
        QVERIFY(window->fetchPrepare(&host));
        window->fetchStart(host);
        QTRY_VERIFY(!Mod().FetchBusy);
        QVERIFY(window->Statusbar->text().startsWith(QStringLiteral("dsSocket1 Error : 10061:")));
        QCOMPARE(window->dsSocket1->State(), int(DsSocket::StateFailed));
        QCOMPARE(window->lbHost->ListCount(), 0);
        QVERIFY(env.prompts.shown.isEmpty());
    }

    void urlWithoutPortFetchesFromPort80()
    {
        QTcpServer web;
        if (!web.listen(QHostAddress(QStringLiteral("127.0.19.1")), 80))
            QSKIP("port 80 on 127.0.19.1 cannot be opened here (needs root or a low "
                  "net.ipv4.ip_unprivileged_port_start)");
        TestEnvironment env;
        auto window = newMainWindow();
        window->Text1->setEditText(QStringLiteral("http://127.0.19.1/quake2/gamespy.txt"));
        QString host;
        QVERIFY(window->fetchPrepare(&host));
        window->fetchStart(host);
        QTRY_VERIFY(web.hasPendingConnections());
        QCOMPARE(window->dsSocket1->RemotePort, quint16(80));
        delete web.nextPendingConnection();  // closes: the fetch ends with an empty list
        QTRY_VERIFY(!Mod().FetchBusy);
    }

    void urlWithoutHostOrBadPort()
    {
        TestEnvironment env;
        auto window = newMainWindow();
        window->Text1->setEditText(QStringLiteral("127.0.0.1/quake2/gamespy.txt"));
        QString host;
        QVERIFY(!window->fetchPrepare(&host));
        QVERIFY(host.isEmpty());

        window->Text1->setEditText(QStringLiteral("http://127.0.0.1:http/quake2/gamespy.txt"));
        QVERIFY(window->fetchPrepare(&host));
        window->fetchStart(host);
        QCOMPARE(env.prompts.shown.size(), 1);
        QVERIFY(env.prompts.shown[0].text.startsWith(QStringLiteral("Error connecting to host\r10049:")));
        QCOMPARE(env.prompts.shown[0].title, QStringLiteral("Pulsebox"));
        QCOMPARE(window->dsSocket1->State(), int(DsSocket::StateFailed));
    }
};

QTEST_MAIN(TestListFetch)
#include "tst_listfetch.moc"
