// A packet from the raw ICMP socket: anything any host sends to this machine.
#include "fuzzinput.h"
#include "probes/icmppacket.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    const quint16 id = in.word(), sequence = in.word();
    const quint32 destination = in.dword();
    const QByteArray packet = in.rest();
    if (const auto answer = IcmpPacket::parseRaw(packet, id, sequence, destination))
        FUZZ_CHECK(answer->data.size() <= packet.size() && answer->ttl <= 255);
    return 0;
}
