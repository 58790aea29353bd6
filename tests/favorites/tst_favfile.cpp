#include "favorites/favfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>

class TestFavFile : public QObject {
    Q_OBJECT
private slots:
    void pairsOfCrLfLines()
    {
        const QString desc = QStringLiteral("Pulse Arena") + QString(39, u' ');
        const QList<Favorite> favorites{{QStringLiteral("1.2.3.4:27910"), desc},
                                        {QStringLiteral("5.6.7.8"), QString(50, QChar(0))}};
        const QByteArray bytes = FavFile::serialize(favorites);
        QCOMPARE(bytes, QByteArray("1.2.3.4:27910\r\n") + desc.toLatin1() + "\r\n5.6.7.8\r\n"
                            + QByteArray(50, '\0') + "\r\n");
        QCOMPARE(FavFile::parse(bytes), favorites);
        QCOMPARE(FavFile::serialize({}), QByteArray());
        QVERIFY(FavFile::parse(QByteArray()).isEmpty());
    }

    void damagedFilesLoadWhatTheyHold()
    {
        QCOMPARE(FavFile::parse("a\r\nA\r\nb"), (QList<Favorite>{{QStringLiteral("a"), QStringLiteral("A")},
                                                               {QStringLiteral("b"), QString()}}));
        QCOMPARE(FavFile::parse("a\nA\rb\r\n\r\n"), (QList<Favorite>{{QStringLiteral("a"), QStringLiteral("A")},
                                                                   {QStringLiteral("b"), QString()}}));
        QCOMPARE(FavFile::parse("\xff\x80\r\n  x  \r\n").first().address, QStringLiteral("\u00ff\u20ac"));
        QCOMPARE(FavFile::parse("\xff\x80\r\n  x  \r\n").first().description, QStringLiteral("  x  "));
    }

    void failedWriteLeavesTheOldFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(FavFile::kName);
        QString error;
        QVERIFY(WriteFileAtomically(path, "old\r\nfile\r\n", &error));
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner);
        const bool writable = QFileInfo(dir.path()).isWritable();  // root writes anyway
        if (!writable) {
            QVERIFY(!WriteFileAtomically(path, "new", &error));
            QVERIFY(!error.isEmpty());
        }
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        {
            // A full disk: no file may grow past 4 bytes, whoever we are.
            std::signal(SIGXFSZ, SIG_IGN);
            rlimit limit{};
            getrlimit(RLIMIT_FSIZE, &limit);
            const rlim_t previous = limit.rlim_cur;
            limit.rlim_cur = 4;
            setrlimit(RLIMIT_FSIZE, &limit);
            const bool ok = WriteFileAtomically(path, "a longer new file\r\n", &error);
            limit.rlim_cur = previous;
            setrlimit(RLIMIT_FSIZE, &limit);
            QVERIFY(!ok);
            QVERIFY(!error.isEmpty());
        }
        // A path whose folder does not exist fails cleanly too.
        QVERIFY(!WriteFileAtomically(dir.filePath(QStringLiteral("missing/x.fav")), "new", &error));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("old\r\nfile\r\n"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{FavFile::kName});  // no leftovers
        QVERIFY(WriteFileAtomically(path, "new\r\n", &error));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{FavFile::kName});
        QFile again(path);
        QVERIFY(again.open(QIODevice::ReadOnly));
        QCOMPARE(again.readAll(), QByteArray("new\r\n"));
    }
};

QTEST_APPLESS_MAIN(TestFavFile)
#include "tst_favfile.moc"
