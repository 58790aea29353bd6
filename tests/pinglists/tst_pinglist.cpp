#include "../support/matcherdata.h"

#include <QRandomGenerator>
#include <QtTest>

namespace {
QByteArray header(qint32 p, qint32 n) { return PingList::kMagic + le32(p) + le32(n); }

// Two players of N servers each, names and records all different.
MatcherData twoPlayers(int n)
{
    QList<std::pair<int, int>> first, second;
    for (int s = 1; s <= n; ++s)
        first << std::pair(s, 10 * s), second << std::pair(s + 1, 20 * s);
    MatcherData d = matcherData({{QStringLiteral("Alice"), first}, {QStringLiteral("Bob \u00e9\u20ac"), second}});
    for (int s = 1; s <= n; ++s)
        d.record(1, s)->IsFavorite = qint16(s % 2);
    return d;
}

MatcherData earlier() { return matcherData({{QStringLiteral("Earlier"), {{0, 0}}}}); }
}

class TestPingList : public QObject {
    Q_OBJECT
private slots:
    // The layout of a whole file is checked byte for byte in tst_pinglistfiles.
    void roundTripOfTheMatcher()
    {
        // Never-assigned texts are zero bytes; short texts are padded with blanks.
        ServerRec fresh;
        fresh.Version = QStringLiteral("3.2");
        QCOMPARE(PingList::recordBytes(fresh), QByteArray(16 + 50, '\0') + QByteArray("3.2  \0\0", 7));

        MatcherData d = twoPlayers(3);
        d.addPlayer();  // a cancelled Ping run: name never assigned, zero records
        const QByteArray bytes = PingList::matcherBytes(d);
        QCOMPARE(bytes.size(), 20 + 3 * (15 + 73 * 3));
        QCOMPARE(bytes.mid(20 + 2 * (15 + 219), 15), QByteArray(15, '\0'));
        const PingList::LoadResult r = PingList::read(bytes + "trailing bytes are ignored", earlier());
        QCOMPARE(r.outcome, PingList::Outcome::Loaded);
        QVERIFY(r.messages.isEmpty());
        QCOMPARE(r.data, d);
    }

    // Each stop leaves the data as far as the load got, and says why (and only that:
    // the matcher does not open).
    void failuresAndTheStateTheyLeave()
    {
        const MatcherData before = earlier();
        const auto only = [](const PingList::LoadResult &r) {
            return r.outcome != PingList::Outcome::Loaded && r.messages.size() == 1
                    && r.messages[0].title == QLatin1String("Pulsebox") && r.messages[0].exclamation
                ? r.messages[0].text : QStringLiteral("<other messages or loaded>");
        };
        const QString notOurs = QStringLiteral("Not a Pulsebox file"), version = QStringLiteral("Incorrect version");
        for (const auto &[bytes, text] : QList<std::pair<QByteArray, QString>>{
                 {QByteArray(), notOurs}, {"Pulsebo", notOurs}, {"pulsebox 1.0", notOurs}, {QByteArray(12, '\0'), notOurs},
                 {"Pulsebox", version}, {"Pulsebox 2.0" + le32(1) + le32(1), version}}) {
            const PingList::LoadResult r = PingList::read(bytes, before);
            QCOMPARE(only(r), text);
            QCOMPARE(r.data, before);
        }
        // P read and stored, then refused: nothing else changes. A missing P reads as 0.
        for (qint32 p : {0, -1, PingList::kMaxPlayers + 1, std::numeric_limits<qint32>::max()}) {
            const PingList::LoadResult r = PingList::read(header(p, 3) + QByteArray(5000, 'x'), before);
            QCOMPARE(only(r), QStringLiteral("Invalid (Possibly Damaged) file"));
            QCOMPARE(r.data.PlayerCount, p);
            QCOMPARE(r.data.MatchServerCount, before.MatchServerCount);
            QCOMPARE(r.data.PlayerNames, before.PlayerNames);
            QCOMPARE(r.data.PlayerLists, before.PlayerLists);
        }
        QCOMPARE(PingList::read(PingList::kMagic + "\x01\x00", before).data.PlayerCount, 0);
        // N read, names emptied for P players, then refused; the lists stay.
        for (qint32 n : {0, -5, std::numeric_limits<qint32>::max(), (16 * 1024 * 1024 - 20 - 3 * 15) / (3 * 73) + 1}) {
            const PingList::LoadResult r = PingList::read(header(3, n), before);
            QCOMPARE(only(r), QStringLiteral("Invalid (Possibly Damaged) file"));
            QCOMPARE(r.data.PlayerCount, 3);
            QCOMPARE(r.data.MatchServerCount, n);
            QCOMPARE(r.data.PlayerNames, std::vector<QString>(4, QString(15, QChar(0))));
            QCOMPARE(r.data.PlayerLists, before.PlayerLists);
        }
        // The largest count that fits is accepted, however short the file.
        const qint32 most = (16 * 1024 * 1024 - 20 - 15) / 73;
        const PingList::LoadResult big = PingList::read(header(1, most), before);
        QCOMPARE(big.outcome, PingList::Outcome::Loaded);
        QCOMPARE(big.data.PlayerLists[1].size(), size_t(most) + 1);
        QCOMPARE(big.messages.size(), 1);
    }

    void cutFilesKeepWhatWasRead()
    {
        const MatcherData full = twoPlayers(6);
        const QByteArray bytes = PingList::matcherBytes(full);
        // Cut inside player 1's fourth record.
        PingList::LoadResult r = PingList::read(bytes.left(20 + 15 + 3 * 73 + 30), earlier());
        QCOMPARE(r.outcome, PingList::Outcome::Loaded);
        const QList<PingList::Message> ended{{QStringLiteral("File ended at: 5"), QStringLiteral("Error "), false},
                                             {QStringLiteral("File ended at: 1"), QStringLiteral("Error "), false}};
        QCOMPARE(r.messages, ended);
        MatcherData kept = full;  // the counts, player 1's name and first three records; the cut record stays empty
        kept.PlayerNames[2] = QString(15, QChar(0));
        for (size_t s = 1; s <= 6; ++s) {
            kept.PlayerLists[2][s] = ServerRec{};
            if (s >= 4)
                kept.PlayerLists[1][s] = ServerRec{};
        }
        QCOMPARE(r.data, kept);
        // Cut at a record's end: noticed before the next read. Cut in the last
        // record of the last player: nothing to notice.
        r = PingList::read(bytes.left(20 + 15 + 6 * 73 + 15 + 2 * 73), earlier());
        QCOMPARE(r.messages.size(), 1);
        QCOMPARE(r.messages[0].text, QStringLiteral("File ended at: 4"));
        QCOMPARE(r.data.PlayerNames[2], full.PlayerNames[2]);
        r = PingList::read(bytes.left(bytes.size() - 1), earlier());
        QVERIFY(r.messages.isEmpty());
        QCOMPARE(r.data.PlayerLists[2][6], ServerRec{});
        QCOMPARE(r.data.PlayerLists[2][5], full.PlayerLists[2][5]);
    }

    // Hostile bytes (a good file cut anywhere, or the magic and random counts, with
    // a few bytes of the counts changed) load or fail with a message, with nothing
    // allocated beyond the content limit. Random junk is left to the fuzz target.
    void hostileBytes()
    {
        QRandomGenerator random(20261123);
        const QByteArray good = PingList::matcherBytes(twoPlayers(4));
        for (int round = 0; round < 2000; ++round) {
            QByteArray bytes = round % 2 ? good.left(random.bounded(good.size() + 1))
                                         : header(qint32(random.generate()) % 64, qint32(random.generate()))
                                               + QByteArray(random.bounded(400), char(random.bounded(256)));
            for (int i = random.bounded(4); i > 0 && bytes.size() >= 24; --i)
                bytes[random.bounded(12, 24)] = char(random.bounded(256));
            const PingList::LoadResult r = PingList::read(bytes, earlier());
            QVERIFY(r.outcome == PingList::Outcome::Loaded || r.messages.size() == 1);
            if (r.outcome == PingList::Outcome::Loaded) {
                QVERIFY(r.data.PlayerCount >= 1 && r.data.PlayerCount <= PingList::kMaxPlayers);
                QCOMPARE(r.data.PlayerLists.size(), size_t(r.data.PlayerCount) + 1);
                QVERIFY(20 + qint64(r.data.PlayerCount) * (15 + 73 * qint64(r.data.MatchServerCount))
                        <= PingList::kMaxContentBytes);
                QVERIFY(r.messages.size() <= r.data.PlayerCount);
                // What was loaded saves again as the same file, cut parts as empty
                // records (checked where that is quick: the loop stays bounded in time).
                if (qint64(r.data.PlayerCount) * r.data.MatchServerCount <= 4096) {
                    const QByteArray again = PingList::matcherBytes(r.data);
                    QCOMPARE(PingList::read(again, MatcherData{}).data, r.data);
                }
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestPingList)
#include "tst_pinglist.moc"
