#include "serverlist/masterlist.h"

#include <QTest>

using namespace MasterList;

namespace {
QByteArray bytes(const char *text, qsizetype size) { return QByteArray(text, size); }
}

class TestMasterList : public QObject {
    Q_OBJECT
private slots:
    void recordsInNetworkOrder()
    {
        // 127.0.0.2:27910 and 10.20.30.40:27911, with and without the 0xFF prefix.
        const QByteArray records = bytes("\x7f\x00\x00\x02\x6d\x06" "\x0a\x14\x1e\x28\x6d\x07", 12);
        for (const QByteArray &head : {bytes("\xff\xff\xff\xffservers ", 12), bytes("servers ", 8),
                                       bytes("servers\n", 8)}) {
            const auto reply = parse(head + records);
            QVERIFY(reply);
            QCOMPARE(reply->records, (QList<Record>{{0x7f000002, 27910}, {0x0a141e28, 27911}}));
            QCOMPARE(reply->truncatedBytes, 0);
        }
        QCOMPARE(entryText({0x7f000002, 27910}), QStringLiteral("127.0.0.2:27910"));
        QCOMPARE(entryText({0xffffffff, 65535}), QStringLiteral("255.255.255.255:65535"));
    }

    void badAnswers()
    {
        // Zero records: an answer with no servers.
        QVERIFY(parse(bytes("\xff\xff\xff\xffservers ", 12))->records.isEmpty());
        QVERIFY(parse("servers")->records.isEmpty());  // even the separator missing
        // Junk: not an answer at all.
        for (const QByteArray &junk : {QByteArray(), bytes("\xff\xff\xff\xff", 4), QByteArray("server"),
                                       bytes("\xff\xff\xff\xffprint\nservers ", 18), QByteArray("SERVERS "),
                                       bytes("\xff\xff\xffservers ", 11)})
            QVERIFY2(!parse(junk), junk.toHex().constData());
    }

    void locations()
    {
        Location l;
        QVERIFY(!parseUrl(QStringLiteral("http://127.0.0.1/quake2/gamespy.txt"), &l));
        QVERIFY(!parseUrl(QStringLiteral("127.0.0.1:27900"), &l));
        QVERIFY(parseUrl(QStringLiteral("MASTER://Master.Example:27950/"), &l));
        QCOMPARE(l.host, QStringLiteral("Master.Example"));
        QCOMPARE(l.port, quint16(27950));
        QVERIFY(parseUrl(QStringLiteral("master://127.0.0.1"), &l));
        QCOMPARE(l.port, kDefaultPort);
        for (const char *bad : {"master://", "master://:27900", "master://host:0", "master://host:65536",
                                "master://host:x", "master://host/list", "master://a b"}) {
            QVERIFY(parseUrl(QLatin1String(bad), &l));
            QVERIFY2(l.host.isEmpty(), bad);
        }
        QCOMPARE(parseHostPort(QStringLiteral("127.0.0.1:65535"))->port, quint16(65535));
        QVERIFY(!parseHostPort(QStringLiteral("127.0.0.1:")));
        QVERIFY(!parseHostPort(QString()));
    }
};

QTEST_GUILESS_MAIN(TestMasterList)
#include "tst_masterlist.moc"
