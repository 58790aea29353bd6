#include "../support/filesizelimit.h"
#include "favorites/favfile.h"
#include "finder/friends.h"

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

    // Pulsebox.friends: UTF-8, one name a line; whatever the bytes, a list of
    // names comes out, and saving it gives the same list back.
    void friendsFileRoundTripsAndSurvivesDamage()
    {
        const QStringList names{QStringLiteral("Vector"), QStringLiteral("[Q2]Mynx"), QStringLiteral("\u0417\u0435\u0434")};
        QCOMPARE(Friends::serialize(names), QStringLiteral("Vector\n[Q2]Mynx\n\u0417\u0435\u0434\n").toUtf8());
        QCOMPARE(Friends::parse(Friends::serialize(names)), names);
        // CR LF, blanks, empty lines, controls, the same name twice in other letters, an over-long name.
        QCOMPARE(Friends::parse("  Vector \r\n\r\n\x01\nVEC\x02TOR\nMynx\n" + QByteArray(20000, 'z')),
                 (QStringList{QStringLiteral("Vector"), QStringLiteral("Mynx"), QString(Friends::kMaxNameLength, u'z')}));
        const QStringList binary = Friends::parse(QByteArray("\xff\xfe\x00\x80\n\xc3", 6));
        QCOMPARE(binary, (QStringList{QString(3, QChar(0xFFFD)), QString(1, QChar(0xFFFD))}));  // read as what it is

        // A friend appears between two refreshes: only the new sighting is news,
        // and a friend moving to another server joins that one.
        const Friends::Sighting a{QStringLiteral("Vector"), QStringLiteral("127.0.0.2:27910"), QStringLiteral("Arena")};
        const Friends::Sighting b{QStringLiteral("Mynx"), QStringLiteral("127.0.0.3:27910"), QString()};
        Friends::Sighting moved = a;
        moved.target = QStringLiteral("127.0.0.4:27910");
        QCOMPARE(Friends::joined({a}, {a, b}), QList<Friends::Sighting>{b});
        QCOMPARE(Friends::joined({a, b}, {b}), QList<Friends::Sighting>{});
        QCOMPARE(Friends::joined({a}, {moved, moved}), QList<Friends::Sighting>{moved});
        QCOMPARE(Friends::joinedText(a), QStringLiteral("Vector joined Arena"));
        QCOMPARE(Friends::joinedText(b), QStringLiteral("Mynx joined 127.0.0.3:27910"));
    }
};

QTEST_APPLESS_MAIN(TestFavFile)
#include "tst_favfile.moc"
