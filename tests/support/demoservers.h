#pragma once
// Game servers of the demo network for the tests, and the network started with them
// on loopback. Header only: the network and the window tests both use it.
#include "demonet/demonetwork.h"

#include <QDebug>

inline Demo::Server demoServer(const QString &address, const QString &protocol = QStringLiteral("34"),
                               const QString &name = {}, const QList<Demo::Player> &players = {}, quint16 port = 27910)
{
    Demo::Server s;
    s.address = QHostAddress(address);
    s.port = port;
    s.protocol = protocol;
    s.hostName = name;
    s.map = QStringLiteral("q2dm1");
    s.players = players;
    return s;
}

// The web list on a free port (and the master too where asked); the reason is logged
// where it cannot start.
inline bool startDemo(Demo::Network &network, const QList<Demo::Server> &servers, const QStringList &listLines = {},
                      bool master = false)
{
    Demo::Config config;
    config.httpPort = 0;
    if (master)
        config.masterPort = 0;
    config.servers = servers;
    config.listLines = listLines;
    QString error;
    const bool started = network.start(config, &error, true);
    if (!started)
        qWarning() << error;
    return started;
}
