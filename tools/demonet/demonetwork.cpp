#include "demonetwork.h"

#include <QNetworkDatagram>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

namespace Demo {

namespace {
Server server(const char *address, quint16 port, const QString &protocol, int delayMs,
              const QString &name, const QString &map, int max, QList<Player> players)
{
    return {QHostAddress(QLatin1String(address)), port, protocol, delayMs, name, map, max, players};
}

QByteArray latin1(const QString &s) { return s.toLatin1(); }
}

Config Config::builtIn()
{
    Config c;
    c.servers = {
        server("127.0.0.2", 27910, u"34"_s, 0, u"Pulse Arena"_s, u"q2dm1"_s, 8,
               {{u"Vector"_s, 21, 38}, {u"Mynx"_s, 17, 52}, {u"Doc Holiday"_s, 3, 120}}),
        server("127.0.0.3", 27910, u"34"_s, 40, u"Edge of Reason [CTF]"_s, u"q2ctf1"_s, 16,
               {{u"Red Fox"_s, 9, 61}, {u"Blue Jay"_s, 12, 44}}),
        server("127.0.0.4", 27911, u"33"_s, 0, u"Old Timers 3.17"_s, u"base1"_s, 12, {}),
        server("127.0.0.5", 27910, u"31"_s, 0, u"Classic Rail Only"_s, u"q2dm8"_s, 4,
               {{u"Lonely"_s, 0, 30}}),
        server("127.0.0.6", 27910, u"none"_s, 0, u"Stubborn Refuser"_s, u"q2dm3"_s, 8, {}),
        server("127.0.0.7", 27910, u"silent"_s, 0, u"Quiet Please"_s, u"q2dm2"_s, 8, {}),
        server("127.0.0.8", 27910, u"34"_s, 1300, u"Slowpoke on a Long Line"_s, u"q2dm5"_s, 8,
               {{u"Patience"_s, 5, 250}}),
        server("127.0.0.9", 27910, u"32"_s, 0, u"Rocket Garden 3.15"_s, u"fact3"_s, 10,
               {{u"Grenadier"_s, 14, 77}}),
        server("127.0.0.1", 27920, u"34"_s, 0, u"Named by Host"_s, u"q2dm4"_s, 8,
               {{u"Alias"_s, 2, 19}}),
        server("127.0.0.10", 27910, u"nolf"_s, 0, u"Broken Reply"_s, u"q2dm6"_s, 8, {}),
        server("127.0.0.12", 27910, u"34"_s, 0, u"Favorite Hideout"_s, u"q2dm7"_s, 6,
               {{u"Regular"_s, 30, 25}, {u"Nightowl"_s, 28, 33}}),
        server("127.0.0.11", 27910, u"q2pro"_s, 0, u"Modern Times"_s, u"q2dm1"_s, 16,
               {{u"Newcomer"_s, 7, 18}}),
    };
    c.masterPort = 27900;
    c.listLines = {u"127.0.0.2"_s, u"127.0.0.3:27910"_s, u"127.0.0.4:27911"_s, u"127.0.0.5"_s,
                   QString(), u"127.0.0.6:27910"_s, u"127.0.0.7"_s, u"127.0.0.8"_s,
                   u"127.0.0.9:27910"_s, u"localhost:27920"_s, u"127.0.0.10"_s, u"127.0.0.13"_s, u"127.0.0.11"_s};
    return c;
}

std::optional<Config> Config::parse(const QString &text, QString *error)
{
    Config c;
    int lineNumber = 0;
    for (const QString &raw : text.split(u'\n')) {
        ++lineNumber;
        const QString line = QString(raw).remove(u'\r');
        if (line.trimmed().isEmpty() || line.trimmed().startsWith(u'#'))
            continue;
        const QStringList f = line.split(u'|');
        const auto bad = [&](const QString &why) {
            *error = u"line %1: %2"_s.arg(lineNumber).arg(why);
            return std::nullopt;
        };
        if (f[0] == u"http"_s && f.size() == 2) {
            bool ok;
            c.httpPort = f[1].toUShort(&ok);
            if (!ok)
                return bad(u"bad port"_s);
        } else if (f[0] == u"master"_s && f.size() == 2) {
            bool ok;
            c.masterPort = f[1].toUShort(&ok);
            if (!ok)
                return bad(u"bad port"_s);
        } else if (f[0] == u"list"_s && f.size() == 2) {
            c.listLines << f[1];
        } else if (f[0] == u"server"_s && f.size() == 8) {
            Server s;
            const QStringList at = f[1].split(u':');
            bool portOk = at.size() == 2;
            s.address = QHostAddress(at[0]);
            s.port = portOk ? at[1].toUShort(&portOk) : 0;
            if (!portOk || s.address.protocol() != QAbstractSocket::IPv4Protocol || !s.address.isLoopback())
                return bad(u"the server needs a loopback address and a port"_s);
            s.protocol = f[2];
            s.delayMs = f[3].toInt();
            s.hostName = f[4];
            s.map = f[5];
            s.maxClients = f[6].toInt();
            for (const QString &p : f[7].split(u',', Qt::SkipEmptyParts)) {
                const QStringList parts = p.split(u':');
                if (parts.size() != 3)
                    return bad(u"players are name:score:ping"_s);
                s.players.append({parts[0], parts[1].toInt(), parts[2].toInt()});
            }
            c.servers << s;
        } else {
            return bad(u"unknown line"_s);
        }
    }
    return c;
}

QByteArray answerFor(const Server &server, const QByteArray &query)
{
    const QByteArray header("\xff\xff\xff\xff", 4);
    if (server.protocol == u"silent"_s || !query.startsWith(header))
        return {};
    const QByteArray text = query.mid(4).trimmed();
    if (text == "ping")  // every server family answers it, whatever it speaks
        return header + "ack";
    if (server.protocol == u"nolf"_s)  // a broken server: no line feed anywhere
        return header + "info " + latin1(server.hostName);
    if (text.startsWith("info")) {
        const QByteArray asked = text.mid(4).trimmed();
        const bool modern = server.protocol == u"q2pro"_s;
        if (modern && asked != "34" && asked != "35" && asked != "36")
            return {};  // newer servers stay silent for a protocol they do not speak
        if (modern)
            return header + "info\n"
                + QString::asprintf("%16s %8s %2i/%2i\n", latin1(server.hostName).constData(),
                                    latin1(server.map).constData(),
                                    static_cast<int>(server.players.size()), server.maxClients).toLatin1();
        if (asked != latin1(server.protocol))
            return header + "info\n" + latin1(server.hostName) + ": wrong version\n";
        return header + "info\n"
            + QString::asprintf("%16s %8s %2i/%2i\n", latin1(server.hostName).constData(),
                                   latin1(server.map).constData(),
                                   static_cast<int>(server.players.size()), server.maxClients).toLatin1();
    }
    if (text.startsWith("status")) {
        const QByteArray protocol = server.protocol == u"none"_s ? "35"
            : server.protocol == u"q2pro"_s                        ? "34"
                                                                   : latin1(server.protocol);
        QByteArray answer = header + "print\n" + "\\cheats\\0\\deathmatch\\1\\dmflags\\16\\fraglimit\\30"
            + "\\hostname\\" + latin1(server.hostName) + "\\mapname\\" + latin1(server.map)
            + "\\maxclients\\" + QByteArray::number(server.maxClients) + "\\protocol\\" + protocol
            + "\\timelimit\\20\\version\\3.20 x86 Demo Linux\n";
        for (const Player &p : server.players)
            answer += QByteArray::number(p.score) + ' ' + QByteArray::number(p.ping) + " \"" + latin1(p.name) + "\"\n";
        return answer;
    }
    return {};
}

QList<QByteArray> masterAnswer(const QList<Server> &servers, int perDatagram)
{
    QList<QByteArray> datagrams;
    for (qsizetype first = 0; first < servers.size() || datagrams.isEmpty(); first += perDatagram) {
        QByteArray d("\xff\xff\xff\xffservers ", 12);
        for (const Server &s : servers.mid(first, perDatagram)) {
            const quint32 a = s.address.toIPv4Address();
            const char record[6] = {char(a >> 24), char(a >> 16), char(a >> 8), char(a), char(s.port >> 8), char(s.port)};
            d.append(record, 6);
        }
        datagrams << d;
    }
    return datagrams;
}

MasterServer::MasterServer(const QList<Server> &servers, QObject *parent)
    : QObject(parent), servers_(servers), socket_(new QUdpSocket(this))
{
    connect(socket_, &QUdpSocket::readyRead, this, &MasterServer::readPending);
}

bool MasterServer::start(quint16 port, QString *error)
{
    if (socket_->bind(QHostAddress::LocalHost, port))
        return true;
    *error = u"cannot run the master on 127.0.0.1:%1: %2"_s.arg(port).arg(socket_->errorString());
    return false;
}

quint16 MasterServer::port() const { return socket_->localPort(); }

void MasterServer::readPending()
{
    while (socket_->hasPendingDatagrams()) {
        const QNetworkDatagram datagram = socket_->receiveDatagram();
        received << datagram.data();
        if (silent || !datagram.data().startsWith("query"))
            continue;
        const QHostAddress to = datagram.senderAddress();
        const quint16 port = static_cast<quint16>(datagram.senderPort());
        const QList<QByteArray> answers = masterAnswer(servers_, perDatagram);
        for (qsizetype i = 0; i < answers.size(); ++i) {
            if (gapMs == 0) {
                socket_->writeDatagram(answers[i], to, port);
                continue;
            }
            QPointer<QUdpSocket> socket = socket_;
            QTimer::singleShot(static_cast<int>(i) * gapMs, this, [socket, answer = answers[i], to, port] {
                if (socket)
                    socket->writeDatagram(answer, to, port);
            });
        }
    }
}

GameServer::GameServer(const Server &server, QObject *parent)
    : QObject(parent), server_(server), socket_(new QUdpSocket(this))
{
    connect(socket_, &QUdpSocket::readyRead, this, &GameServer::readPending);
}

bool GameServer::start(QString *error)
{
    if (socket_->bind(server_.address, server_.port))
        return true;
    *error = u"cannot listen on %1:%2: %3"_s.arg(server_.address.toString()).arg(server_.port)
                 .arg(socket_->errorString());
    return false;
}

void GameServer::readPending()
{
    while (socket_->hasPendingDatagrams()) {
        const QNetworkDatagram datagram = socket_->receiveDatagram();
        received << datagram.data();
        const QByteArray answer = answerFor(server_, datagram.data());
        if (answer.isEmpty())
            continue;
        const QHostAddress to = datagram.senderAddress();
        const quint16 port = static_cast<quint16>(datagram.senderPort());
        QPointer<QUdpSocket> socket = socket_;
        QTimer::singleShot(server_.delayMs, this, [socket, answer, to, port] {
            if (socket)
                socket->writeDatagram(answer, to, port);
        });
    }
}

Network::Network(QObject *parent) : QObject(parent), http_(new QTcpServer(this))
{
    connect(http_, &QTcpServer::newConnection, this, &Network::serve);
}

bool Network::start(const Config &config, QString *error, bool strictPort)
{
    config_ = config;
    bool listening = http_->listen(QHostAddress::LocalHost, config.httpPort);
    for (quint16 port = 8080; !listening && !strictPort && port < 8100; ++port)
        listening = http_->listen(QHostAddress::LocalHost, port);
    if (!listening) {
        *error = u"cannot serve the list over HTTP: "_s + http_->errorString();
        return false;
    }
    httpPort_ = http_->serverPort();
    for (const Server &s : config.servers) {
        auto *game = new GameServer(s, this);
        if (!game->start(error))
            return false;
        gameServers_ << game;
    }
    if (config.masterPort) {
        master_ = new MasterServer(config.servers, this);
        // A busy master port never stops the demo: the next free one will do.
        bool up = master_->start(*config.masterPort, error);
        for (quint16 port = 27901; !up && port < 27920; ++port)
            up = master_->start(port, error);
        if (!up && !master_->start(0, error))
            return false;
    }
    return true;
}

QString Network::masterUrl() const
{
    return master_ ? u"master://127.0.0.1:%1"_s.arg(master_->port()) : QString();
}

QString Network::listUrl() const
{
    const QString host = httpPort_ == 80 ? u"127.0.0.1"_s : u"127.0.0.1:%1"_s.arg(httpPort_);
    return u"http://"_s + host + u"/quake2/gamespy.txt"_s;
}

QString Network::standardListUrl(bool binary) const
{
    const QString host = httpPort_ == 80 ? u"127.0.0.1"_s : u"127.0.0.1:%1"_s.arg(httpPort_);
    return u"http://"_s + host + (binary ? u"/?raw=2"_s : u"/?raw=1"_s);
}

// The list as today's list servers publish it: "?raw=1" text, "?raw=2" binary
// 6-byte records of the list's dotted IPv4 entries (others cannot be written so).
QByteArray Network::standardBody(bool binary) const
{
    QByteArray body;
    for (const QString &line : config_.listLines) {
        if (!binary) {
            body += line.toLatin1() + "\n";
            continue;
        }
        const QStringList parts = line.split(u':');
        bool ok = parts.size() <= 2;
        const quint16 port = parts.size() == 2 ? parts[1].toUShort(&ok) : 27910;
        const QHostAddress address(parts[0]);
        if (!ok || address.protocol() != QAbstractSocket::IPv4Protocol || !parts[0].contains(u'.'))
            continue;
        const quint32 a = address.toIPv4Address();
        const char record[6] = {char(a >> 24), char(a >> 16), char(a >> 8), char(a), char(port >> 8), char(port)};
        body.append(record, 6);
    }
    return body;
}

// Answers a request once its blank line has come, then closes: the list request
// players know (read until the server closes) gets the list as it always did; a
// standard HTTP/1.x request gets an HTTP/1.1 answer with its length, the text or
// binary list by its query string, as today's list servers answer.
void Network::serve()
{
    while (QTcpSocket *client = http_->nextPendingConnection()) {
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
        connect(client, &QTcpSocket::readyRead, this, [this, client] {
            QByteArray request = client->property("request").toByteArray() + client->readAll();
            client->setProperty("request", request);
            if (!request.contains("\r\n\r\n"))
                return;
            QTimer::singleShot(20, client, [this, client] {  // let the request's trailing byte arrive
                lastRequest = client->property("request").toByteArray() + client->readAll();
                const QList<QByteArray> requestLine = lastRequest.left(lastRequest.indexOf("\r\n")).split(' ');
                const QByteArray path = requestLine.value(1);
                const bool standard = requestLine.value(2).startsWith("HTTP/1.");
                const bool listed = path == "/quake2/gamespy.txt" || path == "/";
                QByteArray response;
                if (rawResponse_) {
                    response = *rawResponse_;
                } else if (standard) {
                    const bool found = listed || path == "/?raw=1" || path == "/?raw=2";
                    const QByteArray body = found ? standardBody(path == "/?raw=2") : QByteArray("Not found\n");
                    response = (found ? "HTTP/1.1 200 OK\r\n" : "HTTP/1.1 404 Not Found\r\n")
                        + QByteArray(path == "/?raw=2" ? "Content-Type: application/octet-stream\r\n"
                                                       : "Content-Type: text/plain\r\n")
                        + "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n"
                        + body;
                } else if (listed) {
                    response = "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nServer: pulsebox-demonet\r\n\r\n";
                    for (const QString &line : config_.listLines)
                        response += line.toLatin1() + "\r\n";
                } else {
                    response = "HTTP/1.0 404 Not Found\r\nContent-Type: text/plain\r\n\r\n";
                }
                client->write(response);
                client->disconnectFromHost();
            });
        });
    }
}

}
