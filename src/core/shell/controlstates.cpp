#include "shell/controlstates.h"

#include "shell/activity.h"

ControlStates controlStates(const Activity &activity, const ControlFacts &facts)
{
    const bool refreshing = activity.isRunning(Activity::Kind::Refresh);
    const bool countingHops = activity.isRunning(Activity::Kind::CountHops);
    const bool idle = !refreshing && !countingHops;

    ControlStates s;
    s.cancel = !idle;
    s.refresh = idle;
    s.pingLimit = idle;
    s.ttl = idle;
    s.pingMenu = idle;
    s.favoritesRefresh = !refreshing;
    s.fastRefresh = !refreshing;
    s.addFavorite = !refreshing && facts.listRefreshed;
    s.countHops = idle && facts.listRefreshed;
    s.serverInfo = facts.serverInfoArmed;
    s.hopsHeader = facts.hopsCounted;
    s.progress = (refreshing && facts.refreshProbing) || countingHops;
    return s;
}

bool runHoldsClose(const Activity &activity)
{
    return activity.isRunning(Activity::Kind::Refresh) || activity.isRunning(Activity::Kind::CountHops);
}

bool rowPickArmsServerInfo(const Activity &activity, bool cancelRequested)
{
    return cancelRequested || !runHoldsClose(activity);
}

bool closeRefused(const Activity &activity, bool cancelRequested)
{
    return runHoldsClose(activity) && !cancelRequested;
}
