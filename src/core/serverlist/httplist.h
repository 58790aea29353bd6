#pragma once
#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

// Server lists as today's web servers publish them, read by the standard HTTP
// client: plain text, one HOST[:PORT] a line, or binary 6-byte records (four
// address bytes and the port, network order), like a master's answer.
namespace HttpList {
// A body larger than this is refused: far beyond any real list.
constexpr qsizetype kMaxBytes = 16 * 1024 * 1024;
// A text line longer than this names no server (a host name is at most 253).
constexpr qsizetype kMaxLineBytes = 1024;

// The locations the list request players know cannot serve: secure ones
// ("https://") and those with a query string ("?"). Any letter case.
bool needsStandardClient(const QString &location);

// Whether the first line of a list server's answer to the list request is a
// success status line ("HTTP/1.0 200 OK"). Today's web servers answer that
// request with an error (nginx: "HTTP/1.1 400 Bad Request"), a redirect, or an
// error page without any status line (Python's http.server).
bool servedListRequest(const QString &firstLine);

enum class Form { Text, Binary };
// Decided by the first line (the bytes before the first line feed): text when
// it holds nothing a text list never holds (bytes below 32 other than tab and
// carriage return); binary otherwise. Nothing while the body so far cannot tell
// (no line feed and no such byte yet); at its end, call with `complete`.
std::optional<Form> formOf(const QByteArray &body, bool complete);

struct List {
    Form form = Form::Text;
    QStringList entries;  // in the body's order; blank lines name no server
    // Text lines holding a NUL or longer than kMaxLineBytes; binary records of
    // address 0 or port 0. Left out, and said so.
    int skipped = 0;
    // Not empty when the body is no list at all: the sentence says why.
    QString problem;
};
List decode(const QByteArray &body);

// One sentence on what was left out ("" when nothing was).
QString skippedText(const List &list);
// "The list is larger than 16 MiB: too large to be one." for a bound of `limit` bytes.
QString tooLargeText(qint64 limit);
}
