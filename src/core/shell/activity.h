#pragma once
#include <QObject>

#include <array>

// What the program is running right now: the one place the main window's
// controls, the close rule and the launcher bar ask. Runs may nest where the
// controls allow it (a Fav Refresh pressed while Count Hops waits), so each
// kind is counted rather than switched.
class Activity : public QObject {
    Q_OBJECT
public:
    enum class Kind {
        Refresh,        // Refresh List or Fav Refresh
        CountHops,      // Count Hops over the listed servers
        ServerQuery,    // a game query of the main window waits for its answer
        LauncherQuery,  // the launcher bar's status query waits for its answer
        MatcherRun,     // the ping matcher's Ping run
    };

    using QObject::QObject;

    void begin(Kind kind);
    void end(Kind kind);
    bool isRunning(Kind kind) const;
    bool isIdle() const;

    // Marks a run for the lifetime of the object, however the run ends.
    class Scope {
    public:
        Scope(Activity &activity, Kind kind) : activity_(activity), kind_(kind) { activity_.begin(kind_); }
        ~Scope() { activity_.end(kind_); }
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;

    private:
        Activity &activity_;
        Kind kind_;
    };

signals:
    void changed();

private:
    std::array<int, 5> running_{};
};
