#include "probes/gamequery.h"
#include "shell/wiretext.h"

#include <QtTest>

namespace {
QString wire(const char *bytes, qsizetype size = -1)
{
    return WireText::fromBytes(size < 0 ? QByteArray(bytes) : QByteArray(bytes, size));
}
}

// The bytes of "info 31".."info 34" and "status" are checked as a server receives
// them, in tst_gamequeries.
class TestGameQuery : public QObject {
    Q_OBJECT
private slots:
    void infoLines()
    {
        QVERIFY(GameQuery::datagram(0).isEmpty() && GameQuery::datagram(5).isEmpty());  // modes that send nothing
        QCOMPARE(GameQuery::infoLine(QString()), QStringLiteral("No data returned"));
        QCOMPARE(GameQuery::infoLine(wire("\xff\xff\xff\xffinfo")), QStringLiteral("Malformed data returned"));
        QCOMPARE(GameQuery::infoLine(wire("\xff\xff\xff\xffinfo\n     Pulse Arena    q2dm1  3/ 8\n")),
                 QStringLiteral("     Pulse Arena    q2dm1  3/ 8"));
        QVERIFY(GameQuery::isWrongVersion(wire("\xff\xff\xff\xffinfo\nPulse: wrong version\n")));
        QCOMPARE(GameQuery::infoLine(wire("x\n\x01\x7f\x80\x99\xff", 8)), wire("\x7f\x80\xff"));
    }

    // Settings are checked through Server Info; short, pairless and unterminated
    // answers still give the two headings, and player lines end in CR LF.
    void serverInfoTextOfOddAnswers()
    {
        const QString headings = QStringLiteral("SERVER STATUS:\r\n\r\nPLAYER STATUS:\r\n");
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\n")), headings);
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\nno pairs here\n0 9 \"P\"\n")),
                 headings + QStringLiteral("0 9 \"P\"\r\n"));
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\n\\a\\1")), headings + QStringLiteral("\\a\\1"));
    }
};

QTEST_APPLESS_MAIN(TestGameQuery)
#include "tst_gamequery.moc"
