#include "launch/gamepath.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestGamePath : public QObject {
    Q_OBJECT
private slots:
    void pathCheckNeedsNameAndFile()
    {
        QTemporaryDir dir;
        const QString game = dir.filePath(QStringLiteral("quake2.exe"));
        QVERIFY(!GamePathPasses(game, game));
        QFile file(game);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        QVERIFY(GamePathPasses(game, game));
        QVERIFY(GamePathPasses(QStringLiteral("  ") + game + QStringLiteral(" "), game));
        QVERIFY(!GamePathPasses(QStringLiteral(" ") + game, QStringLiteral(" ") + game));
        const QString other = dir.filePath(QStringLiteral("yquake2"));
        QFile(other).open(QIODevice::WriteOnly);
        QVERIFY(!GamePathPasses(other, other));
        QVERIFY(!GamePathPasses(QString(), QString()));
    }

    void lastSeparatorScan()
    {
        QCOMPARE(LastSeparatorPosition(QStringLiteral("C:\\QUAKE2\\QUAKE2.EXE")), 10);
        QCOMPARE(LastSeparatorPosition(QStringLiteral("/games/q2/quake2.exe")), 10);
        QCOMPARE(LastSeparatorPosition(QStringLiteral("quake2.exe")), 1);
        QCOMPARE(LastSeparatorPosition(QStringLiteral("/quake2.exe")), 1);  // position 1 does not count
        QCOMPARE(LastSeparatorPosition(QStringLiteral("a/")), 1);           // the last character is never looked at
        QCOMPARE(LastSeparatorPosition(QString()), -1);
    }

    void configFile()
    {
        QCOMPARE(GameConfig::serialize(QStringLiteral(" /g/quake2.exe ")), QByteArray(" /g/quake2.exe \r\n"));
        QCOMPARE(GameConfig::firstLine(" /g/quake2.exe \r\nsecond\r\n"), QStringLiteral(" /g/quake2.exe "));
        QCOMPARE(GameConfig::firstLine(QByteArray()), QString());
        // A folder name the code page cannot hold survives a save and a restart.
        const QString cyrillic = QStringLiteral("/home/\u0438\u0433\u0440\u044b/quake2.exe");
        QCOMPARE(GameConfig::firstLine(GameConfig::serialize(cyrillic)), cyrillic);
        QCOMPARE(GameConfig::serialize(QStringLiteral("/jeux/\u00e9t\u00e9/quake2.exe")),
                 QByteArray("/jeux/\xe9t\xe9/quake2.exe\r\n"));
        QCOMPARE(GameConfig::firstLine("/jeux/\xe9t\xe9/quake2.exe\r\n"), QStringLiteral("/jeux/\u00e9t\u00e9/quake2.exe"));
    }
};

QTEST_APPLESS_MAIN(TestGamePath)
#include "tst_gamepath.moc"
