// The probe engine against servers that misbehave on the wire: datagrams from
// strangers, from another port, twice, late, or carrying another server's answer
// never end up in a wrong server's result.
#include "engine/echobatch.h"
#include "engine/probeengine.h"
#include "probes/address.h"
#include "probes/hoppacing.h"
#include "probes/icmppacket.h"
#include "support/udppeer.h"

#include <QTimer>
#include <QtTest>

#include <functional>
#include <map>
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
        UdpPeer a("127.0.45.1", 27910), aOtherPort("127.0.45.1"), stranger("127.0.45.9");
        a.onDatagram = [&](const QNetworkDatagram &q) {
            aOtherPort.sendTo(infoAnswer("Impostor"), q);
            stranger.sendTo(infoAnswer("Impostor"), q);
        };
        // B speaks 32, takes 100 ms for the lower numbers and says everything twice,
        // 40 ms apart: each copy lands while the next query is being asked.
        UdpPeer b("127.0.45.2", 27910);
        b.onDatagram = [&](const QNetworkDatagram &q) {
            const int asked = askedProtocol(q);
            const QByteArray answer = asked == 32 ? infoAnswer("Bee") : wrongVersion("Bee");
            const int delay = asked == 34 ? 0 : 100;
            for (const int at : {delay, delay + 40})
                QTimer::singleShot(at, &b.socket, [&b, q, answer] { b.sendTo(answer, q); });
        };
        // C answers at once; D after 150 ms. Once C is done, C's address sends D's
        // answer while D is still being asked.
        UdpPeer c("127.0.45.3", 27910), d("127.0.45.4", 27910);
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
        UdpPeer acking("127.0.45.31", 27910), quiet("127.0.45.32", 27910), noAck("127.0.45.33", 27910);
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

    // The pacer against a simulated network on a fake clock: servers at distances 1
    // to 4 behind routers that answer in 5 ms (one of them never), servers that
    // answer in 10 ms, and one server that never answers.
    void hopPacerKeepsItsBudgetsAndEndsEachSearchEarly()
    {
        HopPacing pacing;
        pacing.maxTtl = 8;
        pacing.rate = 500;
        pacing.routerBudget = 6;
        pacing.timeoutMs = 300;
        const std::vector<int> distance{1, 2, 3, 3, 4, 4, 3, 0};  // 0: never answers
        const int silentRouterTtl = 2;                             // no router answers there
        const int servers = static_cast<int>(distance.size());
        HopPacer pacer(servers, pacing, 0);
        std::multimap<qint64, std::pair<HopPacer::Probe, bool>> outcomes;  // at ms: probe, reached
        std::vector<std::vector<qint64>> sendsByTtl(static_cast<size_t>(pacing.maxTtl) + 1);
        std::vector<qint64> allSends;
        std::vector<int> sentTo(static_cast<size_t>(servers), 0);
        qint64 now = 0;
        for (; now <= 20000 && !pacer.allDone(); ++now) {
            while (!outcomes.empty() && outcomes.begin()->first <= now) {
                const auto [probe, reached] = outcomes.begin()->second;
                outcomes.erase(outcomes.begin());
                pacer.settle(probe.server, probe.ttl, reached);
            }
            const qint64 next = pacer.nextSendMs(now);
            QVERIFY(next == -1 || next >= now);
            while (const auto probe = pacer.take(now)) {
                QVERIFY(next == now);  // never a probe before the time it was promised
                sendsByTtl[static_cast<size_t>(probe->ttl)].push_back(now);
                allSends.push_back(now);
                ++sentTo[static_cast<size_t>(probe->server)];
                const int d = distance[static_cast<size_t>(probe->server)];
                if (d > 0 && probe->ttl >= d)
                    outcomes.insert({now + 10, {*probe, true}});
                else if (probe->ttl == silentRouterTtl || d == 0)
                    outcomes.insert({now + pacing.timeoutMs, {*probe, false}});
                else
                    outcomes.insert({now + 5, {*probe, false}});
            }
        }
        QVERIFY(pacer.allDone());
        for (int s = 0; s < servers; ++s) {
            QCOMPARE(pacer.hops(s), distance[static_cast<size_t>(s)]);
            QVERIFY(pacer.done(s));
        }
        QCOMPARE(sentTo.back(), pacing.maxTtl);  // the silent server got every probe, once
        QVERIFY(sentTo.front() < pacing.maxTtl);  // its answer ended a near server's search
        // Never more than the budget with one time-to-live in any second, nor more than
        // the rate and one burst (5 probes) in any second.
        const auto mostInASecond = [](const std::vector<qint64> &sends) {
            size_t most = 0;
            for (size_t i = 0; i < sends.size(); ++i)
                most = std::max(most, size_t(std::upper_bound(sends.begin(), sends.end(), sends[i] + 999) - sends.begin()) - i);
            return int(most);
        };
        int busiest = 0;
        for (const auto &sends : sendsByTtl)
            busiest = std::max(busiest, mostInASecond(sends));
        QCOMPARE(busiest, pacing.routerBudget);  // 8 servers a time-to-live: the budget binds
        QVERIFY(mostInASecond(allSends) <= pacing.rate + 5);
        // Eight servers with a budget of six: the last two wait a second for their first
        // probe, and the silent ones for their time-out after that.
        QVERIFY2(now >= 1000 + pacing.timeoutMs && now < 2000 + pacing.timeoutMs, qPrintable(QString::number(now)));

        HopPacer none(0, pacing, 0);  // nothing to count: done at once
        QVERIFY(none.allDone() && !none.take(0) && none.nextSendMs(0) == -1);
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
