#include "probes/address.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

class TestAddress : public QObject {
    Q_OBJECT
private slots:
    void dottedAddresses()
    {
        const qint32 value = DottedToAddress(QStringLiteral("200.200.200.100"));
        unsigned char bytes[4];
        std::memcpy(bytes, &value, 4);
        QCOMPARE(bytes[0], 200);  // network order in memory
        QCOMPARE(bytes[3], 100);
        QCOMPARE(AddressToHostOrder(DottedToAddress(QStringLiteral("127.0.0.1"))), 0x7F000001u);
        // Parts are taken modulo 256.
        for (const auto &[text, dotted] : {std::pair{"200.200.200.100", "200.200.200.100"}, {"0.0.0.0", "0.0.0.0"},
                                           {"255.255.255.255", "255.255.255.255"}, {"300.1.2.3", "44.1.2.3"},
                                           {"1.2.3.256", "1.2.3.0"}, {"1.2.3.99999999999999", "1.2.3.255"}})
            QCOMPARE(AddressToDotted(DottedToAddress(QLatin1String(text))), QLatin1String(dotted));
        // Text that is no address gives 0.
        for (const char *bad : {"1.2.3", "", "1.2.3.4.5", "a.b.c.d", "1..3.4", "-1.2.3.4", " 1.2.3.4",
                                "1.2.3.4 ", "1.2.3.4:27910", "999999999999999999999.1.1.1"})
            QCOMPARE(DottedToAddress(QString::fromLatin1(bad)), 0);
    }

    void fileExistsAndLeadingNumbers()
    {
        QVERIFY(!FileExists(QString()));
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("QUAKE2.EXE"));
        QVERIFY(!FileExists(path));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        QVERIFY(FileExists(path));
        QVERIFY(!FileExists(dir.path()));  // a folder is not a file
        QVERIFY(!FileExists(QStringLiteral(" ") + path));

        // As the old conversions read a leading number.
        for (const auto &[text, value] : {std::pair{"230", 230}, {"  90abc", 90}, {"abc", 0}, {"", 0}, {"-5", -5}})
            QCOMPARE(LeadingNumber(QLatin1String(text)), value);
        QVERIFY(LeadingNumber(QStringLiteral("99999999999999999999999999")) > 0xFFFFFFFFLL);
    }
};

QTEST_APPLESS_MAIN(TestAddress)
#include "tst_address.moc"
