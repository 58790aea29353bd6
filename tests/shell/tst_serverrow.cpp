#include "shell/serverrow.h"

#include <QtTest>

class TestServerRow : public QObject {
    Q_OBJECT
private slots:
    void rowColumnsMatchTheHeaders()
    {
        QCOMPARE(ServerRow::format(45, false, QStringLiteral("1.2.3.4:27910"), QStringLiteral("My Server"),
                                   QStringLiteral("3.19"), QStringLiteral("q2dm1"), QStringLiteral("3/ 8")),
                 QStringLiteral("045 - 1.2.3.4:27910          - My Server                         - "
                                "3.19 - q2dm1    - 3/ 8 "));
        // Long texts are cut to their columns.
        QCOMPARE(ServerRow::format(1, false, QString(30, u'A'), QString(40, u'N'), QStringLiteral("unknown"),
                                   QStringLiteral("averyverylongmap"), QStringLiteral("10/100")),
                 QStringLiteral("001 - ") + QString(22, u'A') + QStringLiteral(" - ") + QString(33, u'N')
                     + QStringLiteral(" - unkn - averyver - 10/10"));
        QCOMPARE(ServerRow::pad(QStringLiteral("name"), 6), QStringLiteral("name  "));

        const auto row = [](qint64 ping, bool fav) { return ServerRow::format(ping, fav, QStringLiteral("a:1"), {}, {}, {}, {}); };
        QVERIFY(row(45, true).startsWith(QStringLiteral("045 -*a:1")));
        QVERIFY(row(0, false).startsWith(QStringLiteral("000 - a:1")));
        QVERIFY(row(1000, false).startsWith(QStringLiteral("1000 - a:1")));  // shifts the rest
        QCOMPARE(row(1000, false).size(), 91);
    }

    void hopColumnRewritesSevenCharacters()
    {
        const QString row = ServerRow::format(45, false, QStringLiteral("1.2.3.4:27910"), QStringLiteral("My Server"),
                                              QStringLiteral("3.19"), QStringLiteral("q2dm1"), QStringLiteral("3/ 8"));
        for (const auto &[hops, column] : {std::pair{0, " -     "}, {1, " -   1 "}, {123, " - 123 "}, {1234, " - 234 "}})
            QCOMPARE(ServerRow::withHops(row, hops), row.left(58) + QLatin1String(column) + row.mid(65));
        QCOMPARE(ServerRow::withHops(QStringLiteral("short"), 5).size(), 65);
    }

    void meanRoundsHalfToEven()
    {
        for (const auto &[mean, rounded] : {std::pair{41.333, 41}, {40.5, 40}, {41.5, 42}, {41.6667, 42}, {1e12, 0}})
            QCOMPARE(ServerRow::roundHalfEven(mean), rounded);
    }
};

QTEST_APPLESS_MAIN(TestServerRow)
#include "tst_serverrow.moc"
