#include "shell/serverrow.h"

#include <QtTest>

class TestServerRow : public QObject {
    Q_OBJECT
private slots:
    void rowColumnsMatchTheHeaders()
    {
        const QString row = ServerRow::format(45, false, QStringLiteral("1.2.3.4:27910"),
                                              QStringLiteral("My Server"), QStringLiteral("3.19"),
                                              QStringLiteral("q2dm1"), QStringLiteral("3/ 8"));
        QCOMPARE(row, QStringLiteral("045 - 1.2.3.4:27910          - My Server                         - "
                                     "3.19 - q2dm1    - 3/ 8 "));
        QCOMPARE(row.size(), 90);
        QCOMPARE(row.mid(6, 22), QStringLiteral("1.2.3.4:27910         "));
        QCOMPARE(row.mid(67, 4), QStringLiteral("3.19"));
        QCOMPARE(row.mid(74, 8), QStringLiteral("q2dm1   "));
    }

    void favoriteMarkAndPingWidths()
    {
        const auto row = [](qint64 ping, bool fav) {
            return ServerRow::format(ping, fav, QStringLiteral("a:1"), {}, {}, {}, {});
        };
        QVERIFY(row(45, true).startsWith(QStringLiteral("045 -*")));
        QVERIFY(row(45, false).startsWith(QStringLiteral("045 - ")));
        QVERIFY(row(0, false).startsWith(QStringLiteral("000 - ")));
        QVERIFY(row(999, false).startsWith(QStringLiteral("999 - a:1")));
        QVERIFY(row(1000, false).startsWith(QStringLiteral("1000 - a:1")));  // shifts the rest
        QCOMPARE(row(1000, false).size(), 91);
    }

    void longTextsAreCut()
    {
        const QString name(40, u'N');
        const QString row = ServerRow::format(1, false, QString(30, u'A'), name, QStringLiteral("unknown"),
                                              QStringLiteral("averyverylongmap"), QStringLiteral("10/100"));
        QCOMPARE(row.mid(6, 22), QString(22, u'A'));
        QCOMPARE(row.mid(31, 33), QString(33, u'N'));
        QCOMPARE(row.mid(67, 4), QStringLiteral("unkn"));
        QCOMPARE(row.mid(74, 8), QStringLiteral("averyver"));
        QCOMPARE(row.mid(85), QStringLiteral("10/10"));
        QCOMPARE(ServerRow::pad(name, 50), name + QString(10, u' '));
    }

    void hopColumnRewritesSevenCharacters()
    {
        const QString row = ServerRow::format(45, false, QStringLiteral("1.2.3.4:27910"),
                                              QStringLiteral("My Server"), QStringLiteral("3.19"),
                                              QStringLiteral("q2dm1"), QStringLiteral("3/ 8"));
        const QString one = ServerRow::withHops(row, 1);
        QCOMPARE(one.mid(58, 7), QStringLiteral(" -   1 "));
        QCOMPARE(one.size(), row.size());
        QCOMPARE(one.left(58), row.left(58));
        QCOMPARE(one.mid(65), row.mid(65));
        QCOMPARE(ServerRow::withHops(row, 0).mid(58, 7), QStringLiteral(" -     "));
        QCOMPARE(ServerRow::withHops(row, 123).mid(58, 7), QStringLiteral(" - 123 "));
        QCOMPARE(ServerRow::withHops(row, 1234).mid(58, 7), QStringLiteral(" - 234 "));
        QCOMPARE(ServerRow::withHops(QStringLiteral("short"), 5).size(), 65);
    }

    void meanRoundsHalfToEven()
    {
        QCOMPARE(ServerRow::roundHalfEven(41.333), 41);
        QCOMPARE(ServerRow::roundHalfEven(40.5), 40);
        QCOMPARE(ServerRow::roundHalfEven(41.5), 42);
        QCOMPARE(ServerRow::roundHalfEven(41.6667), 42);
        QCOMPARE(ServerRow::roundHalfEven(1e12), 0);
    }
};

QTEST_APPLESS_MAIN(TestServerRow)
#include "tst_serverrow.moc"
