#include "favorites/favfile.h"

#include "shell/wiretext.h"

#include <QSaveFile>

QStringList SplitLines(const QString &text)
{
    QStringList lines;
    QString line;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'\r' || c == u'\n') {
            lines += line;
            line.clear();
            if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
        } else {
            line += c;
        }
    }
    if (!line.isEmpty())
        lines += line;
    return lines;
}

QByteArray CrLfLines(const QStringList &lines)
{
    QByteArray bytes;
    for (const QString &line : lines)
        bytes += WireText::toBytes(line) + "\r\n";
    return bytes;
}

bool WriteFileAtomically(const QString &path, const QByteArray &bytes, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (error)
            *error = file.errorString();
        file.cancelWriting();
        return false;
    }
    return true;
}

namespace FavFile {

QList<Favorite> parse(const QByteArray &bytes)
{
    const QStringList lines = SplitLines(WireText::fromBytes(bytes));
    QList<Favorite> favorites;
    for (qsizetype i = 0; i < lines.size(); i += 2)
        favorites.append({lines[i], i + 1 < lines.size() ? lines[i + 1] : QString()});
    return favorites;
}

QByteArray serialize(const QList<Favorite> &favorites)
{
    QStringList lines;
    for (const Favorite &f : favorites)
        lines << f.address << f.description;
    return CrLfLines(lines);
}

}
