#include "support/matcherdata.h"
#include "support/testsupport.h"

#include "pinglists/pinglist.h"
#include "pinglists/pinglistfiles.h"
#include "probes/address.h"
#include "serverlist/refreshdecisions.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"
#include "shell/serverrow.h"

#include <QAction>
#include <QApplication>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {
QString warning(const QString &text) { return text + u"|Pulsebox|"_s + QString::number(int(Prompter::Icon::Warning)); }

struct Files {
    TestEnvironment env;
    std::unique_ptr<MainWindow> window = newMainWindow();
    int matchersOpened = 0;

    void add(const char *dotted, qint32 port, qint32 ping, qint32 hops, const QString &name, bool favorite)
    {
        ServerRec r;
        r.Address = DottedToAddress(QLatin1String(dotted));
        r.Port = port;
        r.PingMs = ping;
        r.Hops = hops;
        r.HostName = ServerRow::pad(name, 50);
        r.Version = ServerRow::pad(u"3.20"_s, 5);
        r.IsFavorite = favorite ? 1 : 0;
        window->servers().appendServer(r);
    }
    void save(const QString &file, QList<bool> answers = {}, QStringList names = {})
    {
        env.prompts.shown.clear();
        env.prompts.fileNames = {file};
        env.prompts.answers = answers;
        env.prompts.inputs = names;
        window->findChild<QAction *>(QStringLiteral("saveAction_"))->trigger();
    }
    // Whether the matcher opened: a good file opens it, and Load returns once it is closed again.
    bool load(const QString &file)
    {
        env.prompts.shown.clear();
        env.prompts.fileNames = {file};
        const int before = matchersOpened;
        QTimer::singleShot(0, window.get(), [this] {
            if (QWidget *matcher = QApplication::activeModalWidget()) {
                ++matchersOpened;
                matcher->close();
            }
        });
        window->findChild<QAction *>(QStringLiteral("loadAction_"))->trigger();
        return matchersOpened > before;
    }
    // The messages the last command showed: text, title and icon.
    QStringList messages() const
    {
        QStringList list;
        for (const auto &s : env.prompts.shown)
            if (s.kind == u"message"_s)
                list << s.text + u'|' + s.title + u'|' + QString::number(int(s.icon));
        return list;
    }
};

QByteArray header(qint32 p, qint32 n) { return PingList::kMagic + le32(p) + le32(n); }

// Two players of N servers each, names and records all different.
MatcherData twoPlayers(int n)
{
    QList<std::pair<int, int>> first, second;
    for (int s = 1; s <= n; ++s)
        first << std::pair(s, 10 * s), second << std::pair(s + 1, 20 * s);
    MatcherData d = matcherData({{u"Alice"_s, first}, {u"Bob \u00e9\u20ac"_s, second}});
    for (int s = 1; s <= n; ++s)
        d.record(1, s)->IsFavorite = qint16(s % 2);
    return d;
}

MatcherData earlier() { return matcherData({{u"Earlier"_s, {{0, 0}}}}); }
}

class TestPingListFiles : public QObject {
    Q_OBJECT
private slots:
    // The saved file, byte for byte, and the prompts on the way.
    void saveTheServerTable()
    {
        Files f;
        f.add("127.0.70.1", 27910, 45, 3, u"Caf\u00e9 Arena \u20ac"_s, true);
        f.add("127.0.70.2", 27911, 120, 0, u"Far"_s, false);
        f.save(u"mine"_s, {}, {u"Alice"_s});

        QStringList shown;  // the dialog and the name: no question for a new file
        for (const auto &s : f.env.prompts.shown)
            shown << s.kind + u'|' + s.text + u'|' + s.defaultText;
        QCOMPARE(shown, QStringList({u"save|Pulsebox (*.Pbx)|"_s, u"input|Your name:|Unknown"_s}));

        QByteArray expected = "Pulsebox 1.0" + le32(1) + le32(2) + "Alice          ";
        expected += QByteArray::fromHex("7f004601" "066d0000" "2d000000" "03000000");
        expected += QByteArray("Caf\xe9 Arena \x80").leftJustified(50, ' ') + "3.20 " + QByteArray("\x01\x00", 2);
        expected += QByteArray::fromHex("7f004602" "076d0000" "78000000" "00000000");
        expected += QByteArray("Far").leftJustified(50, ' ') + "3.20 " + QByteArray("\x00\x00", 2);
        QCOMPARE(readFile(u"mine.Pbx"_s), expected);  // no extension typed: ".Pbx" added
        QCOMPARE(readFile(u"mine"_s), QByteArray("<missing>"));

        // A cancelled name box gives "Unknown" (names cut to 15: tst_pingmatcher).
        f.save(u"anon.Pbx"_s);
        QCOMPARE(readFile(u"anon.Pbx"_s).mid(20, 15), QByteArray("Unknown        "));

        // Saving changes no matcher data.
        QCOMPARE(f.window->matcherData().PlayerCount, 0);
        QVERIFY(f.window->matcherData().PlayerNames.empty());
    }

    void replaceOnlyOnYes()
    {
        Files f;
        f.add("127.0.70.1", 27910, 45, 3, u"A"_s, false);
        writeFile(u"old.Pbx"_s, "keep me");
        f.save(u"old.Pbx"_s, {false}, {u"Bob"_s});
        QCOMPARE(f.env.prompts.texts(), QStringList({u"Pulsebox (*.Pbx)"_s, u"File Exists, Replace?"_s}));
        QCOMPARE(f.env.prompts.shown[1].title, u"Pulsebox"_s);
        QCOMPARE(readFile(u"old.Pbx"_s), QByteArray("keep me"));
        f.save(u"old.Pbx"_s, {true}, {u"Bob"_s});
        QCOMPARE(readFile(u"old.Pbx"_s).size(), 20 + 15 + 73);

        // A cancelled dialog: nothing asked, nothing written.
        f.save(QString());
        QCOMPARE(f.env.prompts.shown.size(), 1);

        // A write that fails leaves the old file whole and says so.
        {
            FileSizeLimit limit(40);
            f.save(u"old.Pbx"_s, {true}, {u"Carol"_s});
        }
        QCOMPARE(readFile(u"old.Pbx"_s).mid(20, 3), QByteArray("Bob"));
        QCOMPARE(f.messages().size(), 1);
        QVERIFY(f.messages()[0].startsWith(u"Could not save old.Pbx"_s));
    }

    // Before any refresh: 35 bytes, which a load refuses as damaged. A refusal shows the reader's
    // message (all of them: failuresAndTheStateTheyLeave), opens no matcher, leaves the data as read.
    void emptyTableAndLoadFailures()
    {
        Files f;
        f.save(u"empty.Pbx"_s, {}, {u"Al"_s});
        const QByteArray empty = "Pulsebox 1.0" + le32(1) + le32(0) + "Al             ";
        QCOMPARE(readFile(u"empty.Pbx"_s), empty);

        const MatcherData before = earlier();
        f.window->matcherData() = before;
        QVERIFY(!f.load(u"empty.Pbx"_s));
        QCOMPARE(f.messages(), QStringList{warning(u"Invalid (Possibly Damaged) file"_s)});
        QCOMPARE(f.window->matcherData(), PingList::read(empty, before).data);
        // The dialog's cancel: nothing at all.
        f.load(QString());
        QCOMPARE(f.env.prompts.shown.size(), 1);
        QCOMPARE(f.env.prompts.shown[0].kind, u"open"_s);
        QCOMPARE(f.env.prompts.shown[0].text, u"Pulsebox (*.Pbx)"_s);
    }

    // The matcher's save and a load give back the same players; a cut file says
    // where each player's list ended and keeps what was read.
    void matcherSaveAndLoad()
    {
        Files f;
        MatcherData saved = matcherData({{u"Alice"_s, {{1, 10}, {2, 20}, {3, 30}, {4, 40}, {5, 50}}},
                                         {u"Bob"_s, {{0, 20}, {0, 40}, {0, 60}, {0, 80}, {0, 100}}}});
        saved.PlayerNames[2] = QString(15, QChar(0));  // a Ping run's player, cancelled before the name
        f.env.prompts.fileNames = {u"both"_s};
        PingListFiles::saveMatcher(saved);
        QCOMPARE(f.env.prompts.texts(), QStringList{u"Pulsebox (*.Pbx)"_s});  // no name prompt
        const QByteArray bytes = readFile(u"both.Pbx"_s);
        QCOMPARE(bytes, PingList::matcherBytes(saved));

        f.window->matcherData() = MatcherData{};
        QVERIFY(f.load(u"both.Pbx"_s));
        QVERIFY(f.messages().isEmpty());
        QCOMPARE(f.window->matcherData(), saved);

        writeFile(u"cut.Pbx"_s, bytes.left(20 + 15 + 3 * 73 + 40));
        QVERIFY(f.load(u"cut.Pbx"_s));
        QCOMPARE(f.messages(), QStringList({u"File ended at: 5|Error |0"_s, u"File ended at: 1|Error |0"_s}));
        QCOMPARE(f.window->matcherData(), PingList::read(bytes.left(20 + 15 + 3 * 73 + 40), saved).data);
    }

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
};

QTEST_MAIN(TestPingListFiles)
#include "tst_pinglistfiles.moc"
