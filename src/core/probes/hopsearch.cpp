#include "probes/hopsearch.h"

#include "probes/address.h"

#include <limits>

HopSearch::HopSearch(qint32 destination, int tickLimit) : destination_(destination), tickLimit_(tickLimit) {}

QStringList HopSearch::record(bool answered, qint32 from, quint32 roundTripMs, qint64 ticks)
{
    QStringList lines;
    lastAnswered_ = answered;
    reached_ = answered && from == destination_;
    if (answered) {
        lines << line(counter_, from, roundTripMs);
        ++counter_;
    }
    if (ticks > tickLimit_) {
        lines << QStringLiteral("Trace Route: Hop %1 *.*.*.* time=*** ms.").arg(counter_);
        ++counter_;
    }
    if (counter_ <= 255)
        ttl_ = static_cast<int>(counter_);
    return lines;
}

QString HopSearch::line(qint64 hop, qint32 from, quint32 roundTripMs)
{
    return QStringLiteral("Trace Route: Hop %1 %2 time=%3 ms.").arg(hop).arg(AddressToDotted(from)).arg(roundTripMs);
}

bool HopSearch::goOn(qint64 bound, bool cancelRequested) const
{
    return counter_ <= bound && !reached_ && !cancelRequested;
}

qint32 HopSearch::hops() const
{
    const qint64 h = counter_ - 1;
    return h > std::numeric_limits<qint32>::max() ? std::numeric_limits<qint32>::max() : static_cast<qint32>(h);
}
