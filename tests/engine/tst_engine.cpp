// The probe engine against servers that misbehave on the wire: datagrams from
// strangers, from another port, twice, late, or carrying another server's answer
// never end up in a wrong server's result.
#include "engine/echobatch.h"
#include "engine/probeengine.h"
#include "probes/address.h"
#include "probes/icmppacket.h"

#include <QNetworkDatagram>
#include <QTimer>
#include <QUdpSocket>
#include <QtTest>

#include <functional>
#include <memory>

namespace {
const QByteArray kHeader(4, '\xff');
QByteArray infoAnswer(const QByteArray &name) { return kHeader + "info\n" + name.rightJustified(16) + "    q2dm1  1/ 8\n"; }
QByteArray wrongVersion(const QByteArray &name) { return kHeader + "info\n" + name + ": wrong version\n"; }

// Every echo answered at once in 5 ms.
struct QuickEcho : EchoService {
    int sendEcho(qint32 destination, const QByteArray &, int, int, EchoReply &reply) override
    {
        reply = EchoReply{};
        reply.Address = destination;
        reply.RoundTripTime = 5;
        return 1;
    }
};

// A UDP socket on a loopback address that hands each datagram to `onDatagram`.
struct Peer {
    Peer(const char *address, quint16 port = 0)
    {
        socket.bind(QHostAddress(QString::fromLatin1(address)), port);
        QObject::connect(&socket, &QUdpSocket::readyRead, [this] {
            while (socket.hasPendingDatagrams()) {
                const QNetworkDatagram d = socket.receiveDatagram();
                ++received;
                if (onDatagram)
                    onDatagram(d);
            }
        });
    }
    void sendTo(const QByteArray &data, const QNetworkDatagram &query)
    {
        socket.writeDatagram(data, query.senderAddress(), quint16(query.senderPort()));
    }
    QUdpSocket socket;
    int received = 0;
    std::function<void(const QNetworkDatagram &)> onDatagram;
};

int askedProtocol(const QNetworkDatagram &d)
{
    const QByteArray text = d.data();
    const qsizetype at = text.indexOf("info ");
    return at < 0 ? 0 : text.mid(at + 5).trimmed().toInt();
}

// Probes `entries` (two tries per query) and waits for the end of the run.
bool runToEnd(ProbeEngine &engine, EchoBatch &batch, int queryTimeoutMs, const QList<ProbeEntry> &entries)
{
    engine.setEchoBatch(&batch);
    ProbeSettings settings;
    settings.queryTimeoutMs = queryTimeoutMs;
    settings.tries = 2;
    engine.setSettings(settings);
    QSignalSpy finished(&engine, &ProbeEngine::finished);
    engine.start(entries);
    return !finished.isEmpty() || finished.wait(10000);
}
}

class TestEngine : public QObject {
    Q_OBJECT
private slots:
    void hostileDatagramsNeverMakeAWrongResult()
    {
        QuickEcho echo;
        ServiceEchoBatch batch(echo);

        // A: silent itself; every query it gets is answered from another port of its
        // address and from a stranger's address.
        Peer a("127.0.45.1", 27910), aOtherPort("127.0.45.1"), stranger("127.0.45.9");
        a.onDatagram = [&](const QNetworkDatagram &q) {
            aOtherPort.sendTo(infoAnswer("Impostor"), q);
            stranger.sendTo(infoAnswer("Impostor"), q);
        };
        // B speaks 32, takes 100 ms for the lower numbers and says everything twice,
        // 40 ms apart: each copy lands while the next query is being asked.
        Peer b("127.0.45.2", 27910);
        b.onDatagram = [&](const QNetworkDatagram &q) {
            const int asked = askedProtocol(q);
            const QByteArray answer = asked == 32 ? infoAnswer("Bee") : wrongVersion("Bee");
            const int delay = asked == 34 ? 0 : 100;
            for (const int at : {delay, delay + 40})
                QTimer::singleShot(at, &b.socket, [&b, q, answer] { b.sendTo(answer, q); });
        };
        // C answers at once; D after 150 ms. Once C is done, C's address sends D's
        // answer while D is still being asked.
        Peer c("127.0.45.3", 27910), d("127.0.45.4", 27910);
        c.onDatagram = [&](const QNetworkDatagram &q) { c.sendTo(infoAnswer("Sea"), q); };
        d.onDatagram = [&](const QNetworkDatagram &q) {
            c.sendTo(infoAnswer("Dee"), q);
            QTimer::singleShot(150, &d.socket, [&d, q] { d.sendTo(infoAnswer("Dee"), q); });
        };

        ProbeEngine engine;  // A gets a re-send of every query: two tries
        QVERIFY(runToEnd(engine, batch, 600, {{QStringLiteral("127.0.45.1"), false}, {QStringLiteral("127.0.45.2:27910"), false},
                                              {QStringLiteral("127.0.45.3"), true}, {QStringLiteral("127.0.45.4"), false}}));
        const QList<ProbeResult> r = engine.results();
        QCOMPARE(r.size(), 4);
        for (const ProbeResult &one : r)
            QVERIFY2(one.done && one.accepted && !one.row.contains(QStringLiteral("Impostor")), qPrintable(one.row));
        QCOMPARE(r[0].answered, false);
        QVERIFY2(r[0].row.contains(QStringLiteral(" - No ")), qPrintable(r[0].row));
        QVERIFY2(r[1].row.contains(QStringLiteral("Bee")) && r[1].version == QStringLiteral("3.15"), qPrintable(r[1].row));
        QVERIFY2(r[2].row.contains(QStringLiteral("Sea")) && r[2].version == QStringLiteral("3.19"), qPrintable(r[2].row));
        QVERIFY2(r[2].row.contains(QStringLiteral(" -*127.0.45.3")), qPrintable(r[2].row));
        QVERIFY2(r[3].row.contains(QStringLiteral("Dee")), qPrintable(r[3].row));
        // Two strangers per query A got, B's three second copies, C's answer for D.
        QVERIFY2(engine.foreignDatagrams() >= 2 * a.received + 3, qPrintable(QString::number(engine.foreignDatagrams())));

        // Answers after the end change nothing.
        c.onDatagram = {};
        QTest::qWait(250);  // D's delayed copies arrive
        QCOMPARE(engine.results().size(), r.size());
        for (int i = 0; i < r.size(); ++i)
            QCOMPARE(engine.results()[i].row, r[i].row);
    }

    // Without ICMP, "ping"s go one after another and the least "ack" is the round
    // trip; a server that never acks is timed by its first answer.
    void withoutIcmpPingAndAckGiveTheRoundTrip()
    {
        struct NoIcmp : EchoBatch {
            QString unavailableReason() override { return QStringLiteral("ICMP is not allowed here"); }
            void send(int, qint32, const QByteArray &, int, int) override { ++sent; }
            void clear() override {}
            int sent = 0;
        } batch;
        // Acks after 90, 40 and 70 ms; its info answer takes 250 ms to build.
        Peer acking("127.0.45.31", 27910), quiet("127.0.45.32", 27910), noAck("127.0.45.33", 27910);
        QList<QByteArray> pings;
        acking.onDatagram = [&](const QNetworkDatagram &q) {
            if (!q.data().endsWith("ping")) {
                QTimer::singleShot(250, &acking.socket, [&acking, q] { acking.sendTo(infoAnswer("Up"), q); });
                return;
            }
            pings << q.data();
            const int delay = QList<int>{90, 40, 70}.value(pings.size() - 1, 0);
            QTimer::singleShot(delay, &acking.socket, [&acking, q] { acking.sendTo(kHeader + "ack", q); });
        };
        noAck.onDatagram = [&](const QNetworkDatagram &q) {
            if (!q.data().endsWith("ping"))
                QTimer::singleShot(80, &noAck.socket, [&noAck, q] { noAck.sendTo(infoAnswer("Mute"), q); });
        };

        ProbeEngine engine;
        QSignalSpy notices(&engine, &ProbeEngine::notice);
        QVERIFY(runToEnd(engine, batch, 600, {{QStringLiteral("127.0.45.31"), false}, {QStringLiteral("127.0.45.32"), false},
                                              {QStringLiteral("127.0.45.33"), false}}));
        QCOMPARE(notices.size(), 1);
        const QString notice = notices[0][0].toString();
        QVERIFY(notice.startsWith(QStringLiteral("ICMP is not allowed here")) && notice == engine.rttNotice());
        QCOMPARE(batch.sent, 0);
        const ProbeResult &a = engine.results()[0], &b = engine.results()[1], &c = engine.results()[2];
        QCOMPARE(pings, QList<QByteArray>(3, kHeader + "ping"));
        QVERIFY2(a.accepted && a.rttSource == RttSource::UdpAck && a.ping >= 40 && a.ping < 70, qPrintable(a.row));
        QVERIFY(a.row.contains(QStringLiteral("Up")));
        QVERIFY(!b.accepted);
        QCOMPARE(b.log, QStringList{QStringLiteral("Reply from 127.0.45.32: Failed code = 11010")});
        QVERIFY2(c.accepted && c.rttSource == RttSource::GameQuery && c.ping >= 80 && c.ping < 250, qPrintable(c.row));
    }

    void manyEchoesAtOnceEachAnsweredOnceByItsToken()
    {
        IcmpEchoBatch batch;
        if (!batch.unavailableReason().isEmpty())
            QSKIP("ICMP echo is not allowed here (needs a ping socket group or cap_net_raw)");
        QHash<int, int> answers;
        QHash<int, EchoReply> replies;
        connect(&batch, &EchoBatch::answered, this, [&](int token, int result, const EchoReply &reply) {
            answers[token] += result;
            replies[token] = reply;
        });
        constexpr int kEchoes = 300;
        const auto address = [](int i) { return DottedToAddress(QStringLiteral("127.0.46.%1").arg(1 + i % 250)); };
        for (int i = 0; i < kEchoes; ++i)
            batch.send(i, address(i), QByteArrayLiteral("echo me"), 64, 2000);
        batch.send(kEchoes, 0, QByteArrayLiteral("echo me"), 64, 2000);  // no address: refused at once
        QTRY_COMPARE_WITH_TIMEOUT(answers.size(), kEchoes + 1, 10000);
        for (int i = 0; i < kEchoes; ++i) {
            QCOMPARE(answers[i], 1);
            QCOMPARE(replies[i].Status, quint32(0));
            QCOMPARE(replies[i].Address, address(i));
        }
        QCOMPARE(answers[kEchoes], 0);
        QCOMPARE(replies[kEchoes].Status, quint32(EchoStatus::BadDestination));

        // Forgotten requests are never answered, not even the ones refused at once.
        answers.clear();
        batch.send(1, address(0), QByteArrayLiteral("echo me"), 64, 300);
        batch.send(2, 0, QByteArrayLiteral("echo me"), 64, 300);
        batch.clear();
        QTest::qWait(500);
        QVERIFY(answers.isEmpty());
    }

    void settingsOutOfBoundsAreRefusedOrClamped()
    {
        QVERIFY(ProbeSettings{}.check().isEmpty());
        for (const auto &bad : std::initializer_list<std::function<void(ProbeSettings &)>>{
                 [](ProbeSettings &x) { x.rate = 0; }, [](ProbeSettings &x) { x.rate = 1 << 30; },
                 [](ProbeSettings &x) { x.queryTimeoutMs = 0; }, [](ProbeSettings &x) { x.tries = -5; },
                 [](ProbeSettings &x) { x.inFlight = 0; }, [](ProbeSettings &x) { x.pingLimit = std::nan(""); }}) {
            ProbeSettings x;
            bad(x);
            QVERIFY(!x.check().isEmpty());
            QVERIFY(x.clamped().check().isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(TestEngine)
#include "tst_engine.moc"
