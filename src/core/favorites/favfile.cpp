#include "favorites/favfile.h"

#include "shell/wiretext.h"

#include <QFileInfo>
#include <QTemporaryFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

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
    QString text;
    for (const QString &line : lines)
        text += line + QStringLiteral("\r\n");
    return WireText::toFileBytes(text);
}

// QSaveFile is not enough here: on a full disk it can commit a short file
// (a partial write is not reported), so the size on disk is checked before the rename.
bool WriteFileAtomically(const QString &path, const QByteArray &bytes, QString *error)
{
    const QFileInfo target(path);
    QTemporaryFile temp(target.absolutePath() + u'/' + target.fileName() + QStringLiteral(".XXXXXX"));
    const auto fail = [&](const QString &why) {
        if (error)
            *error = why;
        return false;
    };
    if (!temp.open())
        return fail(temp.errorString());
    const bool written = temp.write(bytes) == bytes.size() && temp.flush() && temp.size() == bytes.size()
        && ::fsync(temp.handle()) == 0;
    if (!written)
        return fail(temp.error() != QFileDevice::NoError ? temp.errorString()
                                                         : QStringLiteral("the disk is full or the file too large"));
    temp.setPermissions(target.exists() ? QFile::permissions(path)
                                        : QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    temp.close();
    if (::rename(QFile::encodeName(temp.fileName()).constData(), QFile::encodeName(path).constData()) != 0)
        return fail(QString::fromLocal8Bit(std::strerror(errno)));
    temp.setAutoRemove(false);
    return true;
}

namespace FavFile {

QList<Favorite> parse(const QByteArray &bytes)
{
    const QStringList lines = SplitLines(WireText::fromFileBytes(bytes));
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

QByteArray appended(const QByteArray &existing, const Favorite &favorite)
{
    const QByteArray added = serialize({favorite});
    const QString before = WireText::fromFileBytes(existing);
    const QString after = WireText::fromFileBytes(added);
    // Only a change of encoding needs the old bytes re-encoded; otherwise they stay byte for byte.
    if (WireText::fitsCodePage(before + after) && WireText::fromBytes(existing) == before)
        return existing + added;
    return (before + after).toUtf8();
}

}
