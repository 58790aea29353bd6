#pragma once
#include <QString>
#include <QtGlobal>

class DsSocket;
class Ticker;

// The steps of one game query, shared by the main window's queries and the
// launcher bar's: the datagram socket is opened if it is not, aimed at the
// server, QueryMode and LastReply set and the send asked for; then the caller's
// one-second timer runs while the wait yields, until a reply arrives or `ticks`
// reaches `tickLimit`. Returns LastReply (empty for no reply). Mod().QueryBusy
// is set for the wait, so that no second query starts meanwhile.
QString RunGameQuery(DsSocket &socket, Ticker &timer, qint32 &ticks, int tickLimit,
                     const QString &address, const QString &port, int mode);

// The send-ready event of a query socket: the datagram QueryMode selects.
void SendSelectedQuery(DsSocket &socket);
