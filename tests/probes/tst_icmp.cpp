#include "probes/address.h"
#include "probes/icmpecho.h"
#include "probes/icmppacket.h"

#include <QtEndian>
#include <QtTest>

#include <cerrno>
#include <sys/socket.h>

namespace {
const QByteArray kPayload("Server please echo this back.");

QByteArray ipHeader(quint32 source, quint32 destination, int ttl, int payloadSize)
{
    QByteArray h(20, '\0');
    h[0] = 0x45;
    qToBigEndian<quint16>(static_cast<quint16>(20 + payloadSize), h.data() + 2);
    h[8] = static_cast<char>(ttl);
    h[9] = 1;
    qToBigEndian(source, h.data() + 12);
    qToBigEndian(destination, h.data() + 16);
    return h;
}

QByteArray withType(QByteArray icmp, int type, int code)
{
    icmp[0] = static_cast<char>(type);
    icmp[1] = static_cast<char>(code);
    return icmp;
}
}

class TestIcmp : public QObject {
    Q_OBJECT
private slots:
    void echoRequestAndTheAnswersKept()
    {
        const quint32 me = 0x7F000001, server = 0x7F000002, router = 0x7F0000FE;
        const QByteArray request = IcmpPacket::echoRequest(0x1234, 7, kPayload);
        QCOMPARE(request.toHex().left(16), QByteArray("0800") + request.toHex().mid(4, 4) + "12340007");
        QCOMPARE(request.mid(8), kPayload);
        QCOMPARE(IcmpPacket::checksum(request), quint16(0));  // a correct checksum sums to zero
        // What the raw socket reads for `icmp` from `source` to `destination`, as an answer to our request 7.
        const auto parse = [&](quint32 source, quint32 destination, int ttl, const QByteArray &icmp) {
            return IcmpPacket::parseRaw(ipHeader(source, destination, ttl, int(icmp.size())) + icmp, 0x1234, 7, server);
        };
        // Our own request, seen on loopback, is not an answer; nor are another
        // program's reply and a reply to an older request.
        QVERIFY(!parse(me, server, 64, request));
        QVERIFY(!parse(server, me, 64, withType(IcmpPacket::echoRequest(0x9999, 7, kPayload), 0, 0)));
        QVERIFY(!parse(server, me, 64, withType(IcmpPacket::echoRequest(0x1234, 6, kPayload), 0, 0)));

        const auto answer = parse(server, me, 61, withType(request, 0, 0));
        QVERIFY(answer);
        QCOMPARE(answer->status, 0u);
        QCOMPARE(answer->from, server);
        QCOMPARE(answer->data, kPayload);
        QCOMPARE(answer->ttl, 61);

        // A router's "time exceeded" quotes our request: the router answers with 11013.
        const QByteArray exceeded = withType(QByteArray(8, '\0'), 11, 0);
        const auto hop = parse(router, me, 255, exceeded + ipHeader(me, server, 1, int(request.size())) + request.left(8));
        QVERIFY(hop);
        QCOMPARE(hop->status, 11013u);
        QCOMPARE(hop->from, router);
        // ... but not when it quotes a request to someone else.
        QVERIFY(!parse(router, me, 255, exceeded + ipHeader(me, 0x7F000009, 1, 37) + request.left(8)));
    }

    // Sockets refused at first, allowed later (sysctl or setcap while the program runs).
    void deniedSocketsAreTriedAgain()
    {
        struct Gated : LinuxIcmpEcho {
            bool allowed = false;
            int opened = 0;
            int openSocket(int) override
            {
                ++opened;
                if (!allowed) {
                    errno = EPERM;
                    return -1;
                }
                return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
            }
        } echo;
        EchoReply reply;
        QCOMPARE(echo.sendEcho(0, kPayload, 90, 200, reply), 0);  // no address: refused before any socket
        QCOMPARE(reply.Status, 11018u);
        QCOMPARE(echo.opened, 0);
        QCOMPARE(echo.sendEcho(DottedToAddress(QStringLiteral("127.0.0.1")), kPayload, 90, 200, reply), 0);
        QCOMPARE(reply.Status, 11050u);
        for (const char *advice : {"net.ipv4.ping_group_range", "no restart", "setcap cap_net_raw+ep", "started again"})
            QVERIFY2(echo.unavailableReason().contains(QLatin1String(advice)), advice);
        QCOMPARE(echo.socketKind(), QString());
        echo.allowed = true;
        QCOMPARE(echo.socketKind(), QStringLiteral("ping"));
        QCOMPARE(echo.unavailableReason(), QString());
        const int opened = echo.opened;
        echo.socketKind();
        QCOMPARE(echo.opened, opened);  // an open socket is kept, not reopened
    }

    void loopbackAnswers()
    {
        LinuxIcmpEcho echo;
        if (!echo.unavailableReason().isEmpty())
            QSKIP("ICMP is not allowed for this user here: neither a ping socket (net.ipv4.ping_group_range) "
                  "nor a raw socket (cap_net_raw) can be opened");
        EchoReply reply;
        for (int ttl : {90, 1, 0, 300}) {  // out-of-range time-to-live values are clamped, not fatal
            QCOMPARE(echo.sendEcho(DottedToAddress(QStringLiteral("127.0.0.1")), kPayload, ttl, 1000, reply), 1);
            QCOMPARE(reply.Status, 0u);
            QCOMPARE(AddressToDotted(reply.Address), QStringLiteral("127.0.0.1"));
            QCOMPARE(reply.Data, kPayload);
            QVERIFY(reply.RoundTripTime < 1000);
        }
        qInfo() << "echo socket kind:" << echo.socketKind();
    }
};

QTEST_APPLESS_MAIN(TestIcmp)
#include "tst_icmp.moc"
