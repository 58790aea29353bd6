#include "support/testsupport.h"

#include "probes/dssocket.h"
#include "shell/wiretext.h"

#include <QNetworkDatagram>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>
#include <QtTest>

namespace {
// Serves `bytes` to the first client, then closes.
struct OneShotServer {
    explicit OneShotServer(const QByteArray &bytes)
    {
        server.listen(QHostAddress::LocalHost);
        QObject::connect(&server, &QTcpServer::newConnection, [this, bytes] {
            QTcpSocket *client = server.nextPendingConnection();
            client->write(bytes);
            client->disconnectFromHost();
        });
    }
    QString hostText() const { return QStringLiteral("127.0.0.1:%1").arg(server.serverPort()); }
    QTcpServer server;
};

struct Events {
    explicit Events(DsSocket &socket)
    {
        QObject::connect(&socket, &DsSocket::Connected, [this] { log << QStringLiteral("connected"); });
        QObject::connect(&socket, &DsSocket::SendReady, [this] { log << QStringLiteral("send-ready"); });
        QObject::connect(&socket, &DsSocket::DataArrival, [this](const QString &d) { data << d; });
        QObject::connect(&socket, &DsSocket::Closed, [this] { log << QStringLiteral("close"); });
        QObject::connect(&socket, &DsSocket::Error, [this](int n, const QString &) { log << QStringLiteral("error %1").arg(n); });
    }
    QStringList log, data;
};
}

class TestDsSocket : public QObject {
    Q_OBJECT
private slots:
    // The long unterminated line, refusals and the events' order are checked through the web list in tst_listsource.
    void lineModeKeepsCarriageReturnsAndEmptyLines()
    {
        OneShotServer server("line1\nline2\r\n\nlast");
        DsSocket socket(DsSocket::Kind::Stream);
        Events events(socket);
        socket.LineMode = true;
        socket.RemoteHost = server.hostText();  // the port after the host wins over RemotePort
        socket.RemotePort = 80;
        QVERIFY(socket.Connect());
        QTRY_COMPARE(events.log.value(2), QStringLiteral("close"));
        QCOMPARE(events.data, (QStringList{QStringLiteral("line1"), QStringLiteral("line2\r"), QString(), QStringLiteral("last")}));
        QCOMPARE(socket.State(), int(DsSocket::StateClosed));

        socket.RemoteHost.clear();  // a port that is no number: tst_listsource webListFailures (10049)
        QVERIFY(!socket.Connect());
    }

    void datagramsArriveWholeWithEveryByte()
    {
        QUdpSocket peer;
        QVERIFY(peer.bind(QHostAddress(QStringLiteral("127.0.9.1")), 0));
        DsSocket socket(DsSocket::Kind::Datagram);
        Events events(socket);
        QVERIFY(socket.SetAction(DsSocket::OpenAction));
        QCOMPARE(socket.State(), int(DsSocket::StateOpen));
        socket.RemoteDotted = QStringLiteral("127.0.9.1");
        socket.RemotePort = peer.localPort();
        QByteArray all;
        for (int b = 0; b < 256; ++b)
            all += static_cast<char>(b);
        socket.Send(WireText::fromBytes(all));
        QTRY_VERIFY(peer.hasPendingDatagrams());
        const QNetworkDatagram got = peer.receiveDatagram();
        QCOMPARE(got.data(), all);
        // Odd answers arrive whole too: tst_gamequeries.
        peer.writeDatagram(all, got.senderAddress(), static_cast<quint16>(got.senderPort()));
        QTRY_COMPARE(events.data.size(), 1);
        QCOMPARE(WireText::toBytes(events.data.first()), all);
    }

    void silentPeersRaiseNoErrorAndResolve()
    {
        DsSocket socket(DsSocket::Kind::Datagram);
        Events events(socket);
        socket.RemoteDotted = QStringLiteral("127.0.9.2");
        socket.RemotePort = closedPort();
        socket.Send(QStringLiteral("hello"));
        socket.Send(QStringLiteral("again"));
        QTest::qWait(100);
        QVERIFY(events.log.isEmpty());

        socket.Connect();  // a datagram socket's connect asks for a send-ready event
        QTRY_COMPARE(events.log, QStringList{QStringLiteral("send-ready")});
        socket.RemoteDotted = QStringLiteral("not an address");
        socket.Send(QStringLiteral("x"));
        QCOMPARE(events.log.last(), QStringLiteral("error 10049"));

        // Resolve leaves the preset when nothing resolves.
        socket.RemoteHost = QStringLiteral("localhost");
        socket.RemoteDotted = QStringLiteral("0.0.0.0");
        QVERIFY(socket.SetAction(DsSocket::ResolveAction));
        QCOMPARE(socket.RemoteDotted, QStringLiteral("127.0.0.1"));
        socket.RemoteHost.clear();
        socket.RemoteDotted = QStringLiteral("0.0.0.0");
        QVERIFY(!socket.SetAction(DsSocket::ResolveAction));
        QCOMPARE(socket.RemoteDotted, QStringLiteral("0.0.0.0"));
    }
};

QTEST_MAIN(TestDsSocket)
#include "tst_dssocket.moc"
