#include "shell/activity.h"

#include <algorithm>

namespace {
size_t slot(Activity::Kind kind) { return static_cast<size_t>(kind); }
}

void Activity::begin(Kind kind)
{
    ++running_[slot(kind)];
    emit changed();
}

void Activity::end(Kind kind)
{
    int &count = running_[slot(kind)];
    if (count == 0)
        return;  // an end without its begin changes nothing
    --count;
    emit changed();
}

bool Activity::isRunning(Kind kind) const { return running_[slot(kind)] > 0; }

bool Activity::isIdle() const
{
    return std::all_of(running_.begin(), running_.end(), [](int count) { return count == 0; });
}
