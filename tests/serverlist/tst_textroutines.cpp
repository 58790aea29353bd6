#include "serverlist/linesplit.h"
#include "serverlist/serverentry.h"
#include "serverlist/urltext.h"
#include "shell/wiretext.h"

#include <QtTest>

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
};

QTEST_APPLESS_MAIN(TestTextRoutines)
#include "tst_textroutines.moc"
