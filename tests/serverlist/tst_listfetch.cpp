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
// Starts the window's list fetch from `url`; false if the location is refused at once.
bool fetchFrom(frmPulsebox &window, const QString &url)
{
    window.Text1->setEditText(url);
    QString host;
    if (!window.fetchPrepare(&host))
        return false;
    window.fetchStart(host);
    return true;
}

struct Fetch {
    explicit Fetch(const QByteArray &response)
    {
        network.setRawResponse(response);
        QString error;
        Demo::Config config;
        config.httpPort = 0;
        QVERIFY(network.start(config, &error, true));
    }
    void run()
    {
        QVERIFY(fetchFrom(*window, QStringLiteral("  http://127.0.0.1:%1/quake2/gamespy.txt ").arg(network.httpPort())));
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

    void urlWithoutPortFetchesFromPort80()
    {
        QTcpServer web;
        if (!web.listen(QHostAddress(QStringLiteral("127.0.19.1")), 80))
            QSKIP("port 80 on 127.0.19.1 cannot be opened here (needs root or a low "
                  "net.ipv4.ip_unprivileged_port_start)");
        TestEnvironment env;
        auto window = newMainWindow();
        QVERIFY(fetchFrom(*window, QStringLiteral("http://127.0.19.1/quake2/gamespy.txt")));
        QTRY_VERIFY(web.hasPendingConnections());
        QCOMPARE(window->dsSocket1->RemotePort, quint16(80));
        delete web.nextPendingConnection();  // closes: the fetch ends with an empty list
        QTRY_VERIFY(!Mod().FetchBusy);
    }

    void badLocations()
    {
        TestEnvironment env;
        auto window = newMainWindow();
        // Refused: the status line says why, no box.
        QVERIFY(fetchFrom(*window, QStringLiteral("http://127.0.0.1:%1/quake2/gamespy.txt").arg(closedPort())));
        QTRY_VERIFY(!Mod().FetchBusy);
        QVERIFY(window->Statusbar->text().startsWith(QStringLiteral("dsSocket1 Error : 10061:")));
        QCOMPARE(window->dsSocket1->State(), int(DsSocket::StateFailed));
        QCOMPARE(window->lbHost->ListCount(), 0);
        QVERIFY(env.prompts.shown.isEmpty());

        QVERIFY(!fetchFrom(*window, QStringLiteral("127.0.0.1/quake2/gamespy.txt")));  // no host without http://
        // A port that is no number: a box with the whole error number.
        QVERIFY(fetchFrom(*window, QStringLiteral("http://127.0.0.1:http/quake2/gamespy.txt")));
        QCOMPARE(env.prompts.shown.size(), 1);
        QVERIFY(env.prompts.shown[0].text.startsWith(QStringLiteral("Error connecting to host\r10049:")));
        QCOMPARE(env.prompts.shown[0].title, QStringLiteral("Pulsebox"));
        QCOMPARE(window->dsSocket1->State(), int(DsSocket::StateFailed));
    }
};

QTEST_MAIN(TestListFetch)
#include "tst_listfetch.moc"
