// Sends one echo and prints what came back: "RESULT STATUS ANSWERED-BY SOCKET-KIND".
// Run inside the network namespaces that netns_icmp.sh builds.
#include "probes/address.h"
#include "probes/icmpecho.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: icmp_probe DESTINATION TTL TIMEOUT_MS\n");
        return 2;
    }
    LinuxIcmpEcho echo;
    EchoReply reply;
    const int result = echo.sendEcho(DottedToAddress(QString::fromLatin1(argv[1])),
                                     QByteArrayLiteral("Server please echo this back."), std::atoi(argv[2]),
                                     std::atoi(argv[3]), reply);
    std::printf("%d %u %s %s\n", result, reply.Status, qPrintable(AddressToDotted(reply.Address)),
                qPrintable(echo.socketKind()));
    return 0;
}
