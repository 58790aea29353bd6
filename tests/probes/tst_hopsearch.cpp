// The tick rule, the bound and Cancel are checked through Count Hops in tst_counthops.
#include "probes/address.h"
#include "probes/hopsearch.h"

#include <QtTest>

class TestHopSearch : public QObject {
    Q_OBJECT
private slots:
    void noReplyAndTheByte()
    {
        // No reply never counts as reached, even when the record names the destination.
        const qint32 server = DottedToAddress(QStringLiteral("127.0.40.9"));
        HopSearch search(server, 5);
        search.record(false, server, 0, 0);
        QVERIFY(!search.reached());
        QCOMPARE(search.hops(), 0);

        // Past 255 the byte keeps its last value while the counter goes on.
        HopSearch endless(server, 0);
        for (int i = 0; i < 200; ++i)
            endless.record(true, DottedToAddress(QStringLiteral("127.0.41.1")), 1, 1);  // two steps per probe
        QCOMPARE(endless.counter(), 401);
        QCOMPARE(endless.ttl(), 255);
        QVERIFY(endless.goOn(401, false));
        QVERIFY(!endless.goOn(400, false));
    }
};

QTEST_GUILESS_MAIN(TestHopSearch)
#include "tst_hopsearch.moc"
