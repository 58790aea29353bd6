#pragma once
// A refresh session against the demo network and the scripted seams, without a
// window: what each run reports is kept as a window would show it.
#include "support/demoservers.h"
#include "support/testsupport.h"

#include "probes/gamequerychannel.h"
#include "serverlist/refreshsession.h"

#include <QHostAddress>

inline Demo::Server fakeServer(const char *address, quint16 port, const char *protocol, const char *name,
                               int players = 0)
{
    Demo::Server s = demoServer(QLatin1String(address), QLatin1String(protocol), QLatin1String(name), {}, port);
    for (int i = 0; i < players; ++i)
        s.players.append({QStringLiteral("p%1").arg(i), i, 50});
    return s;
}

inline ScriptedEcho::Outcome echoMs(quint32 rtt) { return {1, 0, rtt}; }

// What one refresh left behind, as the main window shows it.
struct RefreshOutcome {
    QStringList rows, log;
    std::vector<ServerRec> servers;
    QString address, count, status;
    int logSelection = -1;
    bool operator==(const RefreshOutcome &) const = default;
};

struct RefreshHarness {
    explicit RefreshHarness(const Demo::Config &config, double timeScale = 0.05) : env(timeScale)
    {
        Demo::Config c = config;
        c.httpPort = 0;
        QString error;
        started = network.start(c, &error, true);
        request.location = network.listUrl();
        session.setEchoService(&env.echo, true);
        QObject::connect(&session, &RefreshSession::started, [this] {
            shown = {};
            shown.count = QStringLiteral("0");
            progress.clear();
        });
        QObject::connect(&session, &RefreshSession::statusChanged, [this](const QString &s) { shown.status = s; });
        QObject::connect(&session, &RefreshSession::listCountChanged,
                         [this](int n) { shown.count = QString::number(n); });
        QObject::connect(&session, &RefreshSession::addressProbed, [this](const QString &a) { shown.address = a; });
        QObject::connect(&session, &RefreshSession::logLines, [this](const QStringList &lines, qsizetype selected) {
            if (selected >= 0)
                shown.logSelection = static_cast<int>(shown.log.size() + selected);
            shown.log << lines;
        });
        QObject::connect(&session, &RefreshSession::rowAccepted,
                         [this](const QString &row, qint32 index) { rows.append({row, index}); });
        QObject::connect(&session, &RefreshSession::probingStarted, [this] { progress << qMakePair(0, 0); });
        QObject::connect(&session, &RefreshSession::progressChanged,
                         [this](int done, int total) { progress << qMakePair(done, total); });
    }
    RefreshHarness(const QList<Demo::Server> &servers, const QStringList &listLines)
        : RefreshHarness(configOf(servers, listLines)) {}

    static Demo::Config configOf(const QList<Demo::Server> &servers, const QStringList &listLines)
    {
        Demo::Config c;
        c.servers = servers;
        c.listLines = listLines;
        return c;
    }

    RefreshOutcome run(bool favoritesOnly = false, bool fast = false)
    {
        rows.clear();
        request.favoritesOnly = favoritesOnly;
        request.fast = fast;
        session.run(request);
        // The server list is sorted by its text, as the window's list is.
        std::stable_sort(rows.begin(), rows.end(), [](const auto &a, const auto &b) {
            return QString::compare(a.first, b.first, Qt::CaseInsensitive) < 0;
        });
        shown.rows.clear();
        for (const auto &row : rows)
            shown.rows << row.first;
        shown.servers = session.table().Servers;
        return shown;
    }

    TestEnvironment env;
    Demo::Network network;
    bool started = false;
    GameQueryChannel channel{env.prompts};
    RefreshSession session{env.prompts, channel};
    RefreshRequest request;
    RefreshOutcome shown;
    QList<QPair<QString, qint32>> rows;  // row text and record index, sorted after the run
    QList<QPair<int, int>> progress;     // (0, 0) when the probing began, then done/total
};
