// Count Hops: a trace route to every server of the main list, one after the other;
// with Fast Refresh on, to all of them at once.
#include "engine/hopfinder.h"
#include "probes/address.h"
#include "probes/hoptrace.h"
#include "probes/timeouts.h"
#include "serverlist/refreshsession.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/prompts.h"
#include "shell/seams.h"
#include "shell/waiting.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

void MainWindow::countHops()
{
    if (!Seams::prompts().question(u"This may take a long time.  Are you sure?"_s, u"Are you sure?"_s)) {
        setStatus(u"Done..."_s);
        return;
    }
    facts_.serverInfoArmed = false;
    facts_.hopsCounted = true;
    hopsCancelRequested_ = false;
    Activity::Scope running(activity_, Activity::Kind::CountHops);
    logList_->clear();
    setStatus(u"Counting Hops...."_s);
    showProgress(0, 1);

    const auto stop = [this] { return hopsCancelRequested_ || waitsAbandoned(); };
    if (fastRefreshAction_->isChecked()) {
        countHopsAtOnce(stop);
        hopsCancelRequested_ = false;
        setStatus(u"Done..."_s);
        return;
    }
    HopTrace::Hooks hooks;
    hooks.lines = [this](const QStringList &lines) {
        for (const QString &line : lines) {
            logList_->addRow(line);
            logList_->selectLast();
        }
    };
    hooks.bound = [this] { return LeadingNumber(ttlEdit_->text()); };
    hooks.stop = stop;
    // The list and the table are read afresh at every step: the yields let other
    // handlers run (a Fav Refresh among them), and none of them may leave an index
    // pointing past the end.
    for (int i = 0; i < serverList_->count() && !stop();) {
        serverAddressEdit_->setText(AddressToDotted(rowDestination(i)));
        const qint32 destination = DottedToAddress(serverAddressEdit_->text());
        yieldOnce();

        const qint32 hops = HopTrace::run(Seams::echo(), destination, Timeouts::kCountHopsTicks, hooks).hops();
        if (i < serverList_->count())
            storeHops(i, destination, hops);
        ++i;
        const int rows = serverList_->count();
        showProgress(rows > 0 ? qMin(i, rows) : 0, rows);
    }
    hopsCancelRequested_ = false;
    setStatus(u"Done..."_s);
}

qint32 MainWindow::rowDestination(int row)
{
    const ServerTable &table = session_->table();
    const int k = serverList_->rowData(row);
    const bool held = k >= 1 && static_cast<size_t>(k) < table.Servers.size();
    return held ? table.Servers[static_cast<size_t>(k)].Address : 0;
}

void MainWindow::storeHops(int row, qint32 destination, qint32 hops)
{
    ServerTable &table = session_->table();
    const QString text = serverList_->rowText(row);
    const qint16 origin = text.size() >= 6 && text[5] == u'*' ? 1 : 0;
    for (qint32 j = 1; j <= table.ServerCount && static_cast<size_t>(j) < table.Servers.size(); ++j) {
        ServerRec &rec = table.Servers[static_cast<size_t>(j)];
        if (rec.Address == destination && rec.IsFavorite == origin)
            rec.Hops = hops;
    }
    serverList_->setRowText(row, ServerRow::withHops(text, hops));
}

// The hop count is the smallest time-to-live the server itself answered, so a
// router that stays silent is not counted as a hop. A server that answers none
// of the probes (time-to-live 1 to the TTL box's number, at most 30) gets the
// TTL box's number, as a trace that never reaches its server does. The lines
// are one per answered probe, in hop order, server after server.
void MainWindow::countHopsAtOnce(const std::function<bool()> &stop)
{
    QList<qint32> destinations;
    for (int i = 0; i < serverList_->count(); ++i)
        destinations.append(rowDestination(i));
    const qint64 bound = LeadingNumber(ttlEdit_->text());
    HopPacing pacing;
    pacing.maxTtl = static_cast<int>(std::clamp<qint64>(bound, 1, HopPacing::MaxTtl));
    const qint32 unreached = static_cast<qint32>(std::clamp<qint64>(bound, 0, std::numeric_limits<qint32>::max()));

    const std::unique_ptr<EchoBatch> echoes = Seams::echoBatch();
    HopFinder finder;
    finder.setEchoBatch(echoes.get());
    finder.setPacing(pacing);
    connect(&finder, &HopFinder::progress, this, &MainWindow::showProgress);
    runUntilFinished(finder, destinations, stop);

    // Rows a handler changed meanwhile (another list) keep what they show.
    const QList<HopResult> &results = finder.results();
    for (int i = 0; i < results.size() && i < serverList_->count(); ++i) {
        const HopResult &r = results[i];
        if (!r.done || rowDestination(i) != r.destination)
            continue;
        for (const HopAnswer &a : r.route)
            logList_->addRow(HopSearch::line(a.hop, a.address, a.roundTripMs));
        storeHops(i, r.destination, r.hops > 0 ? r.hops : unreached);
    }
    if (logList_->count() > 0)
        logList_->selectLast();
    showProgress(serverList_->count(), serverList_->count());
}
