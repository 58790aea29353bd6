#include "launch/gamepath.h"

#include "favorites/favfile.h"
#include "probes/address.h"
#include "shell/wiretext.h"

namespace GameConfig {
QString firstLine(const QByteArray &bytes)
{
    const QStringList lines = SplitLines(WireText::fromFileBytes(bytes));
    return lines.isEmpty() ? QString() : lines.first();
}

QByteArray serialize(const QString &typedPath)
{
    return CrLfLines({typedPath});
}
}

bool GamePathPasses(const QString &text, const QString &existsText)
{
    const bool named = text.toUpper().contains(QStringLiteral("QUAKE2.EXE"));
    const bool exists = FileExists(existsText);
    return named && exists;
}

int LastSeparatorPosition(const QString &gamePath)
{
    qsizetype i = gamePath.size();
    do {
        --i;
    } while (!(i <= 1 || gamePath[i - 1] == u'\\' || gamePath[i - 1] == u'/'));
    return static_cast<int>(i);
}

LaunchCommand BuildLaunchCommand(const QString &gamePath, int separatorPosition,
                                 const QString &target)
{
    const QString folder = gamePath.left(separatorPosition);
    return {gamePath,
            {QStringLiteral("+set"), QStringLiteral("basedir"), folder, QStringLiteral("+connect"), target},
            folder};
}
