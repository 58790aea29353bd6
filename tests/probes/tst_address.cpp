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
        QCOMPARE(bytes[0], 200);
        QCOMPARE(bytes[3], 100);
        QCOMPARE(AddressToDotted(value), QStringLiteral("200.200.200.100"));
        QCOMPARE(AddressToHostOrder(DottedToAddress(QStringLiteral("127.0.0.1"))), 0x7F000001u);
        QCOMPARE(AddressFromHostOrder(0x7F000001u), DottedToAddress(QStringLiteral("127.0.0.1")));
        QCOMPARE(AddressToDotted(DottedToAddress(QStringLiteral("0.0.0.0"))), QStringLiteral("0.0.0.0"));
        QCOMPARE(AddressToDotted(DottedToAddress(QStringLiteral("255.255.255.255"))), QStringLiteral("255.255.255.255"));
        // Parts are taken modulo 256.
        QCOMPARE(AddressToDotted(DottedToAddress(QStringLiteral("300.1.2.3"))), QStringLiteral("44.1.2.3"));
        QCOMPARE(AddressToDotted(DottedToAddress(QStringLiteral("1.2.3.256"))), QStringLiteral("1.2.3.0"));
        QCOMPARE(AddressToDotted(DottedToAddress(QStringLiteral("1.2.3.99999999999999"))), QStringLiteral("1.2.3.255"));
        // Text that is no address gives 0.
        for (const char *bad : {"1.2.3", "", "1.2.3.4.5", "a.b.c.d", "1..3.4", "-1.2.3.4", " 1.2.3.4",
                                "1.2.3.4 ", "1.2.3.4:27910", "999999999999999999999.1.1.1"})
            QCOMPARE(DottedToAddress(QString::fromLatin1(bad)), 0);
    }

    void fileExistsFindsOnlyExistingFiles()
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
    }

    void leadingNumberReadsLikeTheOldConversions()
    {
        QCOMPARE(LeadingNumber(QStringLiteral("230")), 230);
        QCOMPARE(LeadingNumber(QStringLiteral("  90abc")), 90);
        QCOMPARE(LeadingNumber(QStringLiteral("abc")), 0);
        QCOMPARE(LeadingNumber(QString()), 0);
        QCOMPARE(LeadingNumber(QStringLiteral("-5")), -5);
        QVERIFY(LeadingNumber(QStringLiteral("99999999999999999999999999")) > 0xFFFFFFFFLL);
    }
};

QTEST_APPLESS_MAIN(TestAddress)
#include "tst_address.moc"
