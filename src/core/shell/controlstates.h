#pragma once

class Activity;

// What the main window's controls depend on besides the runs the Activity counts.
struct ControlFacts {
    bool refreshProbing = false;   // the refresh has its list and probes the servers
    bool listRefreshed = false;    // a refresh has begun since start-up: the list's commands are offered
    bool serverInfoArmed = false;  // a row was picked since the last run began (see rowPickArmsServerInfo)
    bool hopsCounted = false;      // Count Hops began since the last refresh began: the hop column shows
};

// Enabled (or, for the hop header and the progress bar, shown) per control.
struct ControlStates {
    bool refresh = false;
    bool favoritesRefresh = false;
    bool cancel = false;
    bool addFavorite = false;
    bool countHops = false;
    bool serverInfo = false;
    bool pingLimit = false;
    bool ttl = false;
    bool pingMenu = false;
    bool fastRefresh = false;
    bool hopsHeader = false;
    bool progress = false;

    bool operator==(const ControlStates &) const = default;
};

// The one rule for the main window's controls. A refresh leaves only Cancel; Count
// Hops also leaves Fav Refresh, Add to Favorites and Fast Refresh usable, so a Fav
// Refresh can run inside it, and when that ends the controls are Count Hops' again.
ControlStates controlStates(const Activity &activity, const ControlFacts &facts);

// A row pick enables Server Info while no refresh or Count Hops runs, or once the
// user has asked the run to stop.
bool rowPickArmsServerInfo(const Activity &activity, bool cancelRequested);

// A refresh or Count Hops holds the program open until Cancel was pressed.
bool runHoldsClose(const Activity &activity);
bool closeRefused(const Activity &activity, bool cancelRequested);
