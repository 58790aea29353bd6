#pragma once
#include "probes/echoservice.h"

// Linux: an unprivileged ping socket when the group is allowed one, else a raw socket.
class LinuxIcmpEcho : public EchoService {
public:
    LinuxIcmpEcho() = default;
    ~LinuxIcmpEcho() override;
    LinuxIcmpEcho(const LinuxIcmpEcho &) = delete;
    LinuxIcmpEcho &operator=(const LinuxIcmpEcho &) = delete;

    int sendEcho(qint32 destination, const QByteArray &payload, int ttl, int timeoutMs,
                 EchoReply &reply) override;
    QString unavailableReason() override;

    // Which socket kind is in use: "ping", "raw" or "" when none could be opened.
    QString socketKind();

protected:
    // socket(AF_INET, type, IPPROTO_ICMP), `type` with its flags; a seam for the
    // tests of the retry.
    virtual int openSocket(int type);

private:
    bool open();
    int receiveError(quint16 sequence, EchoReply &reply);
    int receive(quint16 sequence, quint32 destination, EchoReply &reply);

    int fd_ = -1;
    bool raw_ = false;
    quint16 id_ = 0;
    quint16 sequence_ = 0;
    QString reason_;
};
