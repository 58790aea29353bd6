#pragma once
// A UDP socket on a loopback address that hands each datagram to `onDatagram`.
// Header only: the network and the window tests both use it.
#include <QNetworkDatagram>
#include <QUdpSocket>

#include <functional>

struct UdpPeer {
    explicit UdpPeer(const char *address, quint16 port = 0)
    {
        bound = socket.bind(QHostAddress(QString::fromLatin1(address)), port);
        QObject::connect(&socket, &QUdpSocket::readyRead, [this] {
            while (socket.hasPendingDatagrams()) {
                const QNetworkDatagram d = socket.receiveDatagram();
                ++received;
                if (onDatagram)
                    onDatagram(d);
            }
        });
    }
    void sendTo(const QByteArray &data, const QNetworkDatagram &query)
    {
        socket.writeDatagram(data, query.senderAddress(), quint16(query.senderPort()));
    }
    QUdpSocket socket;
    bool bound = false;
    int received = 0;
    std::function<void(const QNetworkDatagram &)> onDatagram;
};
