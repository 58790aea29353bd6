#include "probes/address.h"
#include "probes/hopsearch.h"

#include <QtTest>

namespace {
const qint32 kServer = DottedToAddress(QStringLiteral("127.0.40.9"));
qint32 router(int n) { return DottedToAddress(QStringLiteral("127.0.41.%1").arg(n)); }

struct Probe {
    bool answered;
    qint32 from;
    qint64 ticks;
};

// Runs a whole trace as Count Hops does; returns the time-to-live of every probe.
QList<int> trace(HopSearch &search, const QList<Probe> &probes, qint64 bound, QStringList *lines = nullptr)
{
    QList<int> ttls;
    for (const Probe &p : probes) {
        ttls << search.ttl();
        const QStringList made = search.record(p.answered, p.from, 7, p.ticks);
        if (lines)
            *lines += made;
        if (!search.goOn(bound, false))
            break;
    }
    return ttls;
}
}

class TestHopSearch : public QObject {
    Q_OBJECT
private slots:
    // A silent router is tried again with the same time-to-live until the ticks
    // pass the limit; from then on every probe also counts one silent hop.
    void tickRuleStepsOverSilence()
    {
        HopSearch search(kServer, 5);
        QStringList lines;
        const QList<int> ttls = trace(search, {{true, router(1), 1}, {false, 0, 3}, {false, 0, 5}, {false, 0, 6},
                                               {true, router(3), 7}, {true, kServer, 8}}, 90, &lines);
        QCOMPARE(ttls, (QList<int>{1, 2, 2, 2, 3, 5}));
        QCOMPARE(lines, (QStringList{QStringLiteral("Trace Route: Hop 1 127.0.41.1 time=7 ms."),
                                     QStringLiteral("Trace Route: Hop 2 *.*.*.* time=*** ms."),
                                     QStringLiteral("Trace Route: Hop 3 127.0.41.3 time=7 ms."),
                                     QStringLiteral("Trace Route: Hop 4 *.*.*.* time=*** ms."),
                                     QStringLiteral("Trace Route: Hop 5 127.0.40.9 time=7 ms."),
                                     QStringLiteral("Trace Route: Hop 6 *.*.*.* time=*** ms.")}));
        QCOMPARE(search.hops(), 6);  // the last pass ran both rules
        QVERIFY(search.reached() && search.lastAnswered());

        // The matcher's limit of 15 lets the same silence be retried longer.
        HopSearch patient(kServer, 15);
        QCOMPARE(trace(patient, {{false, 0, 6}, {false, 0, 15}, {false, 0, 16}}, 250), (QList<int>{1, 1, 1}));
        QCOMPARE(patient.ttl(), 2);
        QVERIFY(!patient.lastAnswered());
    }

    void boundCancelAndTheByte()
    {
        // No reply never counts as reached, even when the record names the destination.
        HopSearch search(kServer, 5);
        search.record(false, kServer, 0, 0);
        QVERIFY(!search.reached());
        QVERIFY(search.goOn(1, false));
        QVERIFY(!search.goOn(0, false));   // a TTL box of "0" or "abc": one probe only
        QVERIFY(!search.goOn(90, true));   // Cancel
        QCOMPARE(search.hops(), 0);

        // The bound is read after every probe; the count ends at bound + 1 at most.
        HopSearch far(kServer, 5);
        QCOMPARE(trace(far, {{true, router(1), 0}, {true, router(2), 0}, {true, router(3), 0}}, 2), (QList<int>{1, 2}));
        QCOMPARE(far.hops(), 2);

        // Past 255 the byte keeps its last value while the counter goes on.
        HopSearch endless(kServer, 0);
        for (int i = 0; i < 200; ++i)
            endless.record(true, router(1), 1, 1);  // two steps per probe
        QCOMPARE(endless.counter(), 401);
        QCOMPARE(endless.ttl(), 255);
        QVERIFY(endless.goOn(401, false));
        QVERIFY(!endless.goOn(400, false));
    }
};

QTEST_GUILESS_MAIN(TestHopSearch)
#include "tst_hopsearch.moc"
