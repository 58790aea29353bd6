#pragma once
#include <QString>

// A server as the lists give it: host, or host ":" port.
struct ServerEntry {
    QString host;       // lowercased, everything before the first ":"
    QString port;       // everything after the first ":", or "27910"
    bool isName = false;  // the host starts with a letter: it must be looked up

    static ServerEntry split(const QString &entry);
};

// Field 1 (host name), 2 (map) or 3 (players) of a server's info line, found by
// scanning from the right: spaces after a "/" never separate, everything left of
// the second separator is the host name. Any other field number gives "".
QString ReplyField(const QString &line, int field);
