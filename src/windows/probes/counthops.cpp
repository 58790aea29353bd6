// Count Hops: a trace route to every server of the main list, one after the other.
#include "probes/address.h"
#include "probes/hoptrace.h"
#include "probes/timeouts.h"
#include "serverlist/refreshsession.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/prompts.h"
#include "shell/seams.h"
#include "shell/waiting.h"

#include <QLabel>
#include <QLineEdit>

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
        ServerTable &table = session_->table();
        const int k = serverList_->rowData(i);
        const bool held = k >= 1 && static_cast<size_t>(k) < table.Servers.size();
        serverAddressEdit_->setText(AddressToDotted(held ? table.Servers[static_cast<size_t>(k)].Address : 0));
        const qint32 destination = DottedToAddress(serverAddressEdit_->text());
        yieldOnce();

        const qint32 hops = HopTrace::run(Seams::echo(), destination, Timeouts::kCountHopsTicks, hooks).hops();
        if (i < serverList_->count()) {
            ServerTable &now = session_->table();
            const QString row = serverList_->rowText(i);
            const qint16 origin = row.size() >= 6 && row[5] == u'*' ? 1 : 0;
            for (qint32 j = 1; j <= now.ServerCount && static_cast<size_t>(j) < now.Servers.size(); ++j) {
                ServerRec &rec = now.Servers[static_cast<size_t>(j)];
                if (rec.Address == destination && rec.IsFavorite == origin)
                    rec.Hops = hops;
            }
            serverList_->setRowText(i, ServerRow::withHops(row, hops));
        }
        ++i;
        const int rows = serverList_->count();
        showProgress(rows > 0 ? qMin(i, rows) : 0, rows);
    }
    hopsCancelRequested_ = false;
    setStatus(u"Done..."_s);
}
