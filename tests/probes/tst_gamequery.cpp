#include "probes/gamequery.h"
#include "shell/wiretext.h"

#include <QtTest>

namespace {
QString wire(const char *bytes, qsizetype size = -1)
{
    return WireText::fromBytes(size < 0 ? QByteArray(bytes) : QByteArray(bytes, size));
}
}

class TestGameQuery : public QObject {
    Q_OBJECT
private slots:
    void datagramsAreExactOnTheWire()
    {
        QCOMPARE(WireText::toBytes(GameQuery::datagram(1)), QByteArray("\xff\xff\xff\xffinfo 31"));
        QCOMPARE(WireText::toBytes(GameQuery::datagram(4)), QByteArray("\xff\xff\xff\xffinfo 34"));
        QCOMPARE(WireText::toBytes(GameQuery::datagram(99)), QByteArray("\xff\xff\xff\xffstatus"));
        QVERIFY(GameQuery::datagram(0).isEmpty());
        QVERIFY(GameQuery::datagram(5).isEmpty());
    }

    void infoLines()
    {
        QCOMPARE(GameQuery::infoLine(QString()), QStringLiteral("No data returned"));
        QCOMPARE(GameQuery::infoLine(wire("\xff\xff\xff\xffinfo")), QStringLiteral("Malformed data returned"));
        QCOMPARE(GameQuery::infoLine(wire("\xff\xff\xff\xffinfo\n     Pulse Arena    q2dm1  3/ 8\n")),
                 QStringLiteral("     Pulse Arena    q2dm1  3/ 8"));
        QVERIFY(GameQuery::isWrongVersion(wire("\xff\xff\xff\xffinfo\nPulse: wrong version\n")));
        QCOMPARE(GameQuery::infoLine(wire("x\n\x01\x7f\x80\x99\xff", 8)), wire("\x7f\x80\xff"));
    }

    void serverInfoText()
    {
        const QString answer = wire("\xff\xff\xff\xffprint\n\\maxclients\\8\\mapname\\q2dm1\n"
                                    "12 45 \"Vector\"\n3 80 \"Doc Holiday\"\n0 999 \"Lag\"\n");
        QCOMPARE(GameQuery::serverInfoText(answer),
                 QStringLiteral("SERVER STATUS:\r\nmaxclients=8\r\nmapname=q2dm1\r\n\r\nPLAYER STATUS:\r\n"
                                "12 45 \"Vector\"\r\n3 80 \"Doc Holiday\"\r\n0 999 \"Lag\"\r\n"));
        // Short, pairless and unterminated answers still give the two headings.
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\n")),
                 QStringLiteral("SERVER STATUS:\r\n\r\nPLAYER STATUS:\r\n"));
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\nno pairs here\n")),
                 QStringLiteral("SERVER STATUS:\r\n\r\nPLAYER STATUS:\r\n"));
        QCOMPARE(GameQuery::serverInfoText(wire("\xff\xff\xff\xffprint\n\\a\\1")),
                 QStringLiteral("SERVER STATUS:\r\n\r\nPLAYER STATUS:\r\n\\a\\1"));
    }
};

QTEST_APPLESS_MAIN(TestGameQuery)
#include "tst_gamequery.moc"
