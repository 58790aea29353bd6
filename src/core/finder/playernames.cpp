#include "finder/playernames.h"
#include "shell/wiretext.h"

namespace PlayerNames {

QString folded(const QString &name)
{
    const QByteArray bytes = WireText::toBytes(name);
    QString out;
    out.reserve(name.size());
    for (qsizetype i = 0; i < name.size() && i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        if (b == '?' && name[i] != u'?') {  // not in the code page: matches no name
            out.append(name[i]);
            continue;
        }
        const int letter = b & 0x7F;
        if (letter < 0x20 || letter == 0x7F)
            continue;
        out.append(QChar(letter >= 'A' && letter <= 'Z' ? letter + ('a' - 'A') : letter));
    }
    return out;
}

bool contains(const QString &name, const QString &text)
{
    const QString needle = folded(text);
    return !needle.isEmpty() && folded(name).contains(needle);
}

QString foldedLines(const QList<StatusAnswer::Player> &players)
{
    QString lines;
    for (const StatusAnswer::Player &player : players) {
        lines += folded(player.name);
        lines += u'\n';
    }
    return lines;
}

bool anyContains(const QString &foldedLines, const QString &foldedText)
{
    return !foldedText.isEmpty() && foldedLines.contains(foldedText);
}

bool onlyBots(const QList<StatusAnswer::Player> &players)
{
    if (players.isEmpty())
        return false;
    for (const StatusAnswer::Player &player : players) {
        if (player.ping != 0)
            return false;
    }
    return true;
}

QStringList friendsAmong(const QStringList &playerNames, const QStringList &friends)
{
    QStringList foldedFriends;
    for (const QString &name : friends) {
        if (const QString f = folded(name); !f.isEmpty())
            foldedFriends << f;
    }
    QStringList found;
    for (const QString &player : playerNames) {
        const QString name = folded(player);
        for (const QString &f : std::as_const(foldedFriends)) {
            if (name.contains(f)) {
                found << player;
                break;
            }
        }
    }
    return found;
}

}
