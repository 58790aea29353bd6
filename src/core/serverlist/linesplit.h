#pragma once
#include <QByteArray>
#include <QList>

// Takes the complete lines off the front of `pending`, the bytes a stream has
// delivered so far: each line without its `eol` byte, a line longer than
// `maxLine` in pieces of `maxLine` bytes. With `all` (the stream has ended) the
// bytes left over are the last line. What is not taken stays in `pending`
// (at most `maxLine` bytes, no `eol`). How the stream was cut into deliveries
// makes no difference to the lines.
QList<QByteArray> TakeLines(QByteArray &pending, char eol, bool all, qsizetype maxLine);
