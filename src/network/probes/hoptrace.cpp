#include "probes/hoptrace.h"

#include "probes/echoservice.h"
#include "probes/timeouts.h"
#include "serverlist/refreshdecisions.h"
#include "shell/ticker.h"
#include "shell/waiting.h"
#include "shell/wiretext.h"

namespace HopTrace {

HopSearch run(EchoService &echo, qint32 destination, int tickLimit, const Hooks &hooks)
{
    const QByteArray payload = WireText::toBytes(EchoRequestText);
    HopSearch search(destination, tickLimit);
    qint64 ticks = 0;  // once per trace: the tick rule spans the whole trace
    Ticker ticker;
    QObject::connect(&ticker, &Ticker::timeout, &ticker, [&ticks] { ++ticks; });
    ticker.setInterval(Timeouts::kTickMs);
    do {
        if (hooks.beforeProbe)
            hooks.beforeProbe();
        EchoReply reply;
        const int got = echo.sendEcho(destination, payload, search.ttl(), Timeouts::kHopEchoMs, reply);
        // The ticks are read before yielding: a tick that fell due while the call
        // blocked is delivered by the yield and counts for the next probe.
        const QStringList lines = search.record(got != 0, reply.Address, reply.RoundTripTime, ticks);
        if (hooks.lines)
            hooks.lines(lines);
        yieldOnce();
    } while (search.goOn(hooks.bound(), hooks.stop()));
    return search;
}

}
