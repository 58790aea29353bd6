#pragma once
#include <QByteArray>
#include <QString>

// A file read whole, but never more than a bound: a file larger than any the
// program writes, or a device or pipe that never ends (/dev/zero), costs at most
// the bound plus one byte.
struct BoundedFile {
    enum class Status { Read, CannotOpen, TooLarge };
    Status status = Status::CannotOpen;
    // Read: the whole file. TooLarge: its first maxBytes bytes, for the readers
    // that look at no more than that.
    QByteArray bytes;
    // CannotOpen: the system's reason. TooLarge: "it is N bytes long", or for a
    // device or pipe "it holds more than N bytes".
    QString problem;

    static BoundedFile read(const QString &path, qint64 maxBytes);
};
