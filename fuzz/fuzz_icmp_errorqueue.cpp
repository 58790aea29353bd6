// A router's answer from the ping socket's error queue: the quoted request and
// the extended error's fields, all of them the far end's choice.
#include "fuzzinput.h"
#include "probes/icmppacket.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    IcmpPacket::QueuedError error;
    error.fromIcmp = in.byte() & 1;
    error.type = in.byte();
    error.code = in.byte();
    error.error = in.byte();
    error.offender = in.dword();
    const quint16 sequence = in.word();
    if (const auto answer = IcmpPacket::parseErrorQueue(in.rest(), error, sequence))
        FUZZ_CHECK(answer->status != 0);
    return 0;
}
