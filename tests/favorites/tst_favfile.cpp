#include "../support/filesizelimit.h"
#include "favorites/favfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestFavFile : public QObject {
    Q_OBJECT
private slots:
    // Files as the program writes them, with 50 NULs or padded descriptions, are
    // checked byte for byte with the favorites window and its editor.
    void damagedFilesLoadWhatTheyHold()
    {
        QCOMPARE(FavFile::parse("a\r\nA\r\nb"), (QList<Favorite>{{QStringLiteral("a"), QStringLiteral("A")},
                                                               {QStringLiteral("b"), QString()}}));
        QCOMPARE(FavFile::parse("a\nA\rb\r\n\r\n"), (QList<Favorite>{{QStringLiteral("a"), QStringLiteral("A")},
                                                                   {QStringLiteral("b"), QString()}}));
        QCOMPARE(FavFile::parse("5.6.7.8\r\n" + QByteArray(50, '\0') + "\r\n"),
                 (QList<Favorite>{{QStringLiteral("5.6.7.8"), QString(50, QChar(0))}}));
        QCOMPARE(FavFile::parse("\xff\x80\r\n  x  \r\n"), (QList<Favorite>{{QStringLiteral("\u00ff\u20ac"), QStringLiteral("  x  ")}}));
    }

    void textOutsideTheCodePageRoundTrips()
    {
        // Text the code page holds stays single-byte, as files from the past are.
        const QList<Favorite> western{{QStringLiteral("caf\u00e9.example:27910"), QStringLiteral("\u20ac Arena")}};
        QCOMPARE(FavFile::serialize(western), QByteArray("caf\xe9.example:27910\r\n\x80 Arena\r\n"));
        // One description the code page cannot hold makes the whole file UTF-8,
        // so every other line still reads back whole.
        const QList<Favorite> mixed{{QStringLiteral("caf\u00e9:27910"), QStringLiteral("\u0421\u0435\u0440\u0432\u0435\u0440")},
                                    {QStringLiteral("127.0.0.2"), QStringLiteral("\u03a3 \u00e9")}};
        const QByteArray bytes = FavFile::serialize(mixed);
        QVERIFY(bytes.contains("caf\xc3\xa9"));
        QCOMPARE(FavFile::parse(bytes), mixed);
        // Bytes that are no valid UTF-8 are Windows-1252, and plain ASCII is both.
        QCOMPARE(FavFile::parse("caf\xe9\r\n\xc3\r\n").first().description, QStringLiteral("\u00c3"));
        QCOMPARE(FavFile::parse("a\r\nb\r\n"), (QList<Favorite>{{QStringLiteral("a"), QStringLiteral("b")}}));
        // Add to Favorites appends to a file of either encoding without mixing the two.
        const Favorite added{QStringLiteral("127.0.0.2:27910"), QStringLiteral("\u00e9t\u00e9")};
        QCOMPARE(FavFile::parse(FavFile::appended(bytes, added)), mixed + QList<Favorite>{added});
        QCOMPARE(FavFile::appended("x\ny\n", added), QByteArray("x\ny\n127.0.0.2:27910\r\n\xe9t\xe9\r\n"));
        const Favorite greek{QStringLiteral("127.0.0.3"), QStringLiteral("\u03a3")};
        QCOMPARE(FavFile::parse(FavFile::appended(FavFile::serialize(western), greek)), western + QList<Favorite>{greek});
    }

    void failedWriteLeavesTheOldFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(FavFile::kName);
        const auto contents = [&] {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
        };
        QString error;
        QVERIFY(WriteFileAtomically(path, "old\r\nfile\r\n", &error));
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner);
        if (!QFileInfo(dir.path()).isWritable())  // root writes anyway
            QVERIFY(!WriteFileAtomically(path, "new", &error) && !error.isEmpty());
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        error.clear();
        {
            FileSizeLimit fullDisk(4);
            QVERIFY(!WriteFileAtomically(path, "a longer new file\r\n", &error) && !error.isEmpty());
        }

        QVERIFY(!WriteFileAtomically(dir.filePath(QStringLiteral("missing/x.fav")), "new", &error));  // no such folder
        QCOMPARE(contents(), QByteArray("old\r\nfile\r\n"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{FavFile::kName});  // no leftovers
        QVERIFY(WriteFileAtomically(path, "new\r\n", &error));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{FavFile::kName});
        QCOMPARE(contents(), QByteArray("new\r\n"));
    }
};

QTEST_APPLESS_MAIN(TestFavFile)
#include "tst_favfile.moc"
