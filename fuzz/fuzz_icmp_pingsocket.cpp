// A packet from the ping socket: the ICMP message the kernel hands over.
#include "fuzzinput.h"
#include "probes/icmppacket.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    const quint16 sequence = in.word();
    const QByteArray packet = in.rest();
    if (const auto answer = IcmpPacket::parsePingSocket(packet, sequence))
        FUZZ_CHECK(answer->data.size() <= packet.size());
    return 0;
}
