// The probe's decisions as both refresh paths use them.
#include "probes/gamequery.h"
#include "serverlist/refreshdecisions.h"
#include "shell/wiretext.h"

#include <QtTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {
using Answers = std::function<QString(int protocol)>;  // what a server says to "info N"; "" = silence

const QString kHeader(4, QChar(0xFF));
QString wrong() { return kHeader + QStringLiteral("info\nHost: wrong version\n"); }
QString info(const char *name) { return kHeader + QStringLiteral("info\n%1    q2dm1  2/ 8\n").arg(QLatin1String(name)); }
QString wire(const char *bytes, qsizetype size = -1) { return WireText::fromBytes(size < 0 ? QByteArray(bytes) : QByteArray(bytes, size)); }

struct Verdict {
    QString version, infoLine;
    int queries = 0;
};

Verdict serial(const Answers &server)
{
    Verdict v;
    int mode = 1, next = 1;
    QString answer;
    while (next != 0) {
        mode = next;
        answer = mode <= 4 ? server(30 + mode) : QString();  // the fifth round sends nothing
        v.queries += mode <= 4;
        next = GameQuery::nextMode(mode, answer);
    }
    return {GameQuery::versionText(mode), GameQuery::infoLine(answer), v.queries};
}

Verdict fast(const Answers &server)
{
    GameQuery::FastVersionProbe probe;
    int queries = 0;
    while (!probe.done() && queries < 10) {
        probe.answer(server(30 + probe.mode()));
        ++queries;
    }
    return {probe.version(), probe.infoLine(), queries};
}
}

class TestRefreshDecisions : public QObject {
    Q_OBJECT
private slots:
    void versionProbeEqualsTheSerialOneForClassicServers()
    {
        for (int protocol = 31; protocol <= 34; ++protocol) {
            const Answers classic = [protocol](int asked) { return asked == protocol ? info("Classic") : wrong(); };
            const Verdict s = serial(classic), f = fast(classic);
            QCOMPARE(f.version, s.version);
            QCOMPARE(f.infoLine, s.infoLine);
            QCOMPARE(f.queries, protocol == 34 ? 1 : protocol - 30 + 1);  // 34 first, then 31 upwards
        }
        const Verdict refuser = fast([](int) { return wrong(); }), silent = fast([](int) { return QString(); });
        QCOMPARE(refuser.version, QStringLiteral("3.20"));
        QCOMPARE(refuser.infoLine, QStringLiteral("No data returned"));
        QCOMPARE(silent.version, serial([](int) { return QString(); }).version);
        QCOMPARE(silent.infoLine, QStringLiteral("No data returned"));
        QCOMPARE(silent.queries, 1);
        const Answers noLineFeed = [](int) { return kHeader + QStringLiteral("info Broken"); };
        QCOMPARE(fast(noLineFeed).version, QStringLiteral("3.14"));  // as the serial probe hears it at 31
        QCOMPARE(fast(noLineFeed).infoLine, QStringLiteral("Malformed data returned"));
        // Refuses 31 to 33, answers 34 without a line feed: 3.19 and malformed, both ways.
        const Answers oddAt34 = [](int asked) { return asked == 34 ? kHeader + QStringLiteral("x") : wrong(); };
        QCOMPARE(fast(oddAt34).version, serial(oddAt34).version);
        QCOMPARE(fast(oddAt34).infoLine, serial(oddAt34).infoLine);
        // Refuses 34, silent at 32: the serial probe ends at 32 too.
        const Answers gap = [](int asked) { return asked == 32 ? QString() : wrong(); };
        QCOMPARE(fast(gap).version, QStringLiteral("3.15"));
        QCOMPARE(serial(gap).version, QStringLiteral("3.15"));
    }

    // The other answers and the query bytes are checked as a server sends and receives them, in tst_gamequeries.
    void answersTurnedIntoText()
    {
        QVERIFY(GameQuery::datagram(0).isEmpty() && GameQuery::datagram(5).isEmpty());  // modes that send nothing
        QCOMPARE(GameQuery::infoLine(wire("x\n\x01\x7f\x80\x99\xff", 8)), wire("\x7f\x80\xff"));
        // Short, pairless and unterminated status answers still give the two headings; player lines end in CR LF.
        const QString headings = QStringLiteral("SERVER STATUS:\r\n\r\nPLAYER STATUS:\r\n");
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\n")), headings);
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\nno pairs here\n0 9 \"P\"\n")),
                 headings + QStringLiteral("0 9 \"P\"\r\n"));
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\n\\a\\1")), headings + QStringLiteral("\\a\\1"));
    }

    void typedNumbers()
    {
        for (const auto &[text, value] : QList<std::pair<QString, double>>{
                 {u"230.5"_s, 230.5}, {u"  -12.25ms"_s, -12.25}, {u".5"_s, 0.5}, {u"7."_s, 7.0}, {u"abc"_s, 0.0}, {u"."_s, 0.0},
                 {QString(5000, u'9'), 0.0}})  // beyond a double: no number
            QCOMPARE(Probe::NumberValue(text), value);
        QCOMPARE(Probe::PortNumber(QStringLiteral("27910.7")), 27911);
        QCOMPARE(Probe::PortNumber(QStringLiteral("27910.5")), 27910);  // halves to even
        QCOMPARE(Probe::PortNumber(QStringLiteral("27911.5")), 27912);
        QCOMPARE(Probe::PortNumber(QStringLiteral("99999999999")), qint32(2147483647));
        QCOMPARE(Probe::QueryPort(QStringLiteral("65535.4")), quint16(65535));
        QCOMPARE(Probe::QueryPort(QStringLiteral("65535.5")), quint16(0));
        QCOMPARE(Probe::QueryPort(QString()), quint16(0));
        QVERIFY(Probe::WithinLimit(230.5, QStringLiteral("230.5")));
        QVERIFY(!Probe::WithinLimit(230.51, QStringLiteral("230.5")));
        QVERIFY(!Probe::WithinLimit(1, QStringLiteral("none")));  // no number: every server too slow
    }
};

QTEST_GUILESS_MAIN(TestRefreshDecisions)
#include "tst_refreshdecisions.moc"
