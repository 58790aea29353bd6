#include "finder/playernames.h"
#include "finder/serverfilter.h"
#include "serverlist/linesplit.h"
#include "serverlist/serverentry.h"
#include "serverlist/urltext.h"
#include "shell/wiretext.h"

#include <QtTest>

using namespace Qt::StringLiterals;

class TestTextRoutines : public QObject {
    Q_OBJECT
private slots:
    // Found by fuzzing: a line exactly as long as the maximum, its line end in the
    // next delivery, came out as that line and an extra empty one. That any cut
    // gives the same lines is the line-split fuzz target's check.
    void linesDoNotDependOnDeliveries()
    {
        const QList<QByteArray> expected{"abcd", "efgh", "ij", "", "k"};
        QByteArray whole("abcd\nefghij\n\nk"), pending("abcd");
        QCOMPARE(TakeLines(whole, '\n', true, 4), expected);
        QList<QByteArray> lines = TakeLines(pending, '\n', false, 4);
        pending += "\nefghij\n\nk";
        lines += TakeLines(pending, '\n', true, 4);
        QCOMPARE(lines, expected);
    }

    void urlHostAndPath()
    {
        struct Case { const char *url, *host, *path; };
        for (const Case &c : {Case{"http://lists.example/quake2/gamespy.txt", "lists.example", "quake2/gamespy.txt"},
                              Case{"http://lists.example", "lists.example", ""}, Case{"http://lists.example/", "lists.example", ""},
                              Case{"lists.example/quake2", "", ""}, Case{"http://lists.example:8080/a/b", "lists.example:8080", "a/b"},
                              Case{"http://h/a//b", "h", "a//b"}, Case{"", "", ""}}) {
            QCOMPARE(UrlHost(QLatin1String(c.url)), QLatin1String(c.host));
            QCOMPARE(UrlPath(QLatin1String(c.url)), QLatin1String(c.path));
        }
        QVERIFY(ListRequestText(QStringLiteral("h"), QString()).startsWith(QStringLiteral("GET / text/plain\r\n")));
    }

    void printableTextDropsControlsOnly()
    {
        QCOMPARE(PrintableText(QStringLiteral("  a\tb  ")), QStringLiteral("  ab  "));
        QCOMPARE(PrintableText(QStringLiteral("1.2.3.4:27910\r\n")), QStringLiteral("1.2.3.4:27910"));
        QCOMPARE(PrintableText(WireText::fromBytes(QByteArray("\x00\x1f\x20\x7e\x7f\x80\x99\xa0\xff", 9))),
                 WireText::fromBytes(QByteArray("\x20\x7e\x7f\x80\xa0\xff")));
        QCOMPARE(TrimSpaces(PrintableText(QStringLiteral("  a\tb  "))), QStringLiteral("ab"));
        QCOMPARE(TrimSpaces(QStringLiteral("\t x \t")), QStringLiteral("\t x \t"));
    }

    void entriesSplitAtTheFirstColon()
    {
        struct Case { const char *entry, *host, *port; bool name; };
        const Case cases[] = {
            {"1.2.3.4:27920", "1.2.3.4", "27920", false}, {"1.2.3.4", "1.2.3.4", "27910", false},
            {"Q2Server:27910", "q2server", "27910", true}, {"3dserver", "3dserver", "27910", false},
            {"1.2.3.4:", "1.2.3.4", "", false},            {"", "", "27910", false},
            {"host:1:2", "host", "1:2", true},             {"Zed", "zed", "27910", true},
            {"_under", "_under", "27910", false},
        };
        for (const Case &c : cases) {
            const ServerEntry e = ServerEntry::split(QString::fromLatin1(c.entry));
            QCOMPARE(e.host, QString::fromLatin1(c.host));
            QCOMPARE(e.port, QString::fromLatin1(c.port));
            QCOMPARE(e.isName, c.name);
        }
    }

    void replyFieldScansFromTheRight()
    {
        struct Case { const char *line, *name, *map, *players; };
        for (const Case &c : {Case{"    My Server q2dm1  3/ 8", "My Server", "q2dm1", "3/ 8"},
                              Case{"    Big Server    q2dm1  3/ 8", "Big Server", "q2dm1", "3/ 8"},
                              Case{"  Pulse Arena    q2dm1 10/16", "Pulse Arena", "q2dm1", "10/16"},
                              Case{"No data returned", "No", "data", "returned"},
                              Case{"Malformed data returned", "Malformed", "data", "returned"},
                              Case{"nospaces", "", "", ""}, Case{"left right", "", "", "right"},
                              Case{"a b c d e", "a b c", "d", "e"}, Case{"", "", "", ""}}) {
            const QString line = QLatin1String(c.line);
            QCOMPARE((QStringList{ReplyField(line, 1), ReplyField(line, 2), ReplyField(line, 3)}),
                     (QStringList{QLatin1String(c.name), QLatin1String(c.map), QLatin1String(c.players)}));
        }
    }

    // Player names are wire text: a byte with bit 7 set is the same letter in the
    // game's other colour; case, clan tags and control bytes do not count, and a
    // searched text is plain text.
    void playerNamesMatch()
    {
        const auto wire = [](const char *bytes) { return WireText::fromBytes(QByteArray(bytes)); };
        struct Case { QString name, text; bool match; };
        for (const Case &c : {Case{u"Vector"_s, u"vec"_s, true}, Case{u"[Q2]Vector"_s, u"VECTOR"_s, true},
                              Case{wire("\xd6\xe5\xe3tor"), u"vector"_s, true},   // high-bit "Vec"
                              Case{u"Vector"_s, wire("\xf6"), true},               // a typed high-bit "v"
                              Case{wire("V\x01" "e\x81" "ctor"), u"vector"_s, true},     // control bytes, either half
                              Case{u"Mynx"_s, u"vector"_s, false}, Case{u"a.b"_s, u"a*b"_s, false},
                              Case{u"a*b [x]"_s, u"a*b [x"_s, true}, Case{u"Vector"_s, QString(), false},
                              Case{u"Vector"_s, wire("\x01\x81"), false},          // folds to nothing
                              Case{u"Vector"_s, u"\u0412ector"_s, false}}) {        // Cyrillic is no wire letter
            QVERIFY2(PlayerNames::contains(c.name, c.text) == c.match, qPrintable(c.name + u" / "_s + c.text));
        }
        const QString huge(20000, u'x');
        QVERIFY(PlayerNames::contains(huge + u"Zed"_s, u"xzed"_s));
        QStringList many;
        for (int i = 0; i < 3000; ++i)
            many << u"Player%1"_s.arg(i);
        QCOMPARE(PlayerNames::friendsAmong(many, {u"player2999"_s, u"PLAYER1000"_s}),
                 (QStringList{u"Player1000"_s, u"Player2999"_s}));
        QCOMPARE(PlayerNames::friendsAmong({u"[Q2]Vector"_s, u"Mynx"_s}, {u"vector"_s, u"\n"_s}),
                 QStringList{u"[Q2]Vector"_s});
    }

    // The bot rule and every filter, on the facts of one server at a time.
    void filtersHideOnlyWhatTheySay()
    {
        const QString status = u"\u00ff\u00ff\u00ff\u00ffprint\n\\mapname\\q2dm1\n"_s;
        const ServerFacts bots = ServerFacts::of(u"127.0.0.2:27910"_s, true, u"Bots"_s, u"3.20"_s, u"q2dm1"_s,
                                                 u" 2/ 8"_s, 30, status + u"0 0 \"Bot1\"\n5 0 \"Bot2\"\n"_s);
        const ServerFacts full = ServerFacts::of(u"127.0.0.3:27910"_s, true, u"Full"_s, u"3.19"_s, u"Q2DM8"_s,
                                                 u" 2/ 2"_s, 80, status + u"0 0 \"Bot1\"\n5 48 \"[Q2]Vector\"\n"_s);
        const ServerFacts empty = ServerFacts::of(u"127.0.0.4:27910"_s, true, u"Empty"_s, u"unkn"_s, u"base1"_s,
                                                  u" 0/ 8"_s, 120, status);
        // No info line: the row's fields read "No data returned", which are no facts.
        const ServerFacts silent = ServerFacts::of(u"127.0.0.5:27910"_s, false, u"No"_s, u"3.14"_s, u"data"_s,
                                                   u"returned"_s, 10, {});
        // A status reply without a line feed holds no players, whatever its text.
        const ServerFacts broken = ServerFacts::of(u"127.0.0.6:27910"_s, true, u"Broken"_s, u"3.20"_s, u"q2dm1"_s,
                                                   u" 1/ 8"_s, 10, u"\u00ff\u00ff\u00ff\u00ffBroken Reply"_s);
        QVERIFY(bots.onlyBots && !full.onlyBots && !empty.onlyBots && !silent.onlyBots);  // no players: no bots
        QVERIFY(broken.playersAsked && broken.playerNames.isEmpty() && !broken.onlyBots);
        QCOMPARE(full.playerNames, (QStringList{u"Bot1"_s, u"[Q2]Vector"_s}));

        const auto shown = [&](const ServerFilter &filter) {
            QString names;
            for (const ServerFacts *f : {&bots, &full, &empty, &silent})
                names += filter.accepts(*f) ? f->target.mid(8, 1) : QString();
            return names;
        };
        ServerFilter off;
        QVERIFY(!off.isOn() && !off.needsPlayers());
        QCOMPARE(shown(off), u"2345"_s);
        const auto with = [](auto set) {
            ServerFilter f;
            set(f);
            return f;
        };
        QCOMPARE(shown(with([](ServerFilter &f) { f.hideEmpty = true; })), u"23"_s);  // no count is no player
        QCOMPARE(shown(with([](ServerFilter &f) { f.hideFull = true; })), u"24"_s);  // no data: hidden
        QCOMPARE(shown(with([](ServerFilter &f) { f.hideOnlyBots = true; })), u"34"_s);
        QCOMPARE(shown(with([](ServerFilter &f) { f.version = u" 3.19 "_s; })), u"3"_s);
        QCOMPARE(shown(with([](ServerFilter &f) { f.mapText = u"dm"_s; })), u"23"_s);
        QCOMPARE(shown(with([](ServerFilter &f) { f.mapText = u"data"_s; })), QString());
        QCOMPARE(shown(with([](ServerFilter &f) { f.maxPing = 80; })), u"235"_s);
        QCOMPARE(shown(with([](ServerFilter &f) { f.maxPing = 0; })), QString());
        QCOMPARE(shown(with([](ServerFilter &f) { f.playerText = u"vec"_s; })), u"3"_s);
        QCOMPARE(shown(with([](ServerFilter &f) { f.playerText = u"bot"_s, f.hideFull = true; })), u"2"_s);
        QVERIFY(with([](ServerFilter &f) { f.hideOnlyBots = true; }).needsPlayers());
        QVERIFY(!with([](ServerFilter &f) { f.playerText = u"\u0001"_s; }).isOn());

        // Remembered apart from the search text; a damaged file gives defaults.
        FinderSettings settings;
        settings.filter = with([](ServerFilter &f) { f.hideFull = true, f.mapText = u"dm\n1"_s, f.maxPing = 100; });
        settings.filter.playerText = u"vec"_s;
        settings.watchFriends = true;
        settings.watchSeconds = 90;
        FinderSettings read = FinderSettings::parse(settings.serialize());
        QCOMPARE(read.filter.mapText, u"dm 1"_s);
        QVERIFY(read.filter.playerText.isEmpty());
        read.filter.playerText = u"vec"_s, read.filter.mapText = u"dm\n1"_s;
        QVERIFY(read == settings);
        QCOMPARE(FinderSettings::parse("watchSeconds=5\nmaxPing=x\n\xff\x00=1\nhideEmpty=yes").watchSeconds,
                 FinderSettings::kMinWatchSeconds);
        QVERIFY(FinderSettings::parse("\xff\xfe\x00garbage") == FinderSettings{});
    }
};

QTEST_APPLESS_MAIN(TestTextRoutines)
#include "tst_textroutines.moc"
