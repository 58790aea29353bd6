#pragma once
#include <QString>

// The host to connect to: the text between the first "//" and the next "/".
// A port written after the host stays part of it. Empty without "//".
QString UrlHost(const QString &url);
// The path after the host, without its leading "/". Empty without "//" or path.
QString UrlPath(const QString &url);
// The text without control characters: keeps every character from " " up to the
// euro sign (character 128 of the Western code page), in order, spaces untouched.
QString PrintableText(const QString &text);
// The list request, byte for byte as list servers have always been sent it.
QString ListRequestText(const QString &host, const QString &path);
// Leading and trailing spaces removed; other blanks (tabs, no-break spaces) stay.
QString TrimSpaces(const QString &text);

// The lines of a list server's answer: the header up to its first empty line is
// skipped; each later line gives one list entry, control characters and outer
// spaces removed. One reader per fetch.
class ListBodyReader {
public:
    // True when `line` is a body line; *entry is then its entry text.
    bool take(const QString &line, QString *entry);

private:
    bool inBody_ = false;
};
