// Count Hops: a trace route to every server of the main list, one after the other.
#include "probes/address.h"
#include "probes/echoservice.h"
#include "probes/hopsearch.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/ticker.h"
#include "shell/vblist.h"
#include "shell/waiting.h"
#include "shell/wiretext.h"

#include <QAction>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {
constexpr int kHopTimeoutMs = 2700;
constexpr int kHopTickLimit = 5;  // ticks of a trace after which every probe counts a silent hop
}

void frmPulsebox::Command7_Click()
{
    PulseboxMod &mod = Mod();
    if (!Seams::prompts().question(u"This may take a long time.  Are you sure?"_s, u"Are you sure?"_s)) {
        setStatus(u"Done..."_s);
        return;
    }
    Command1->setEnabled(true);
    for (QWidget *w : std::initializer_list<QWidget *>{Command2, txTTL, Text4, Command6, Command7})
        w->setEnabled(false);
    mnuPing->menuAction()->setEnabled(false);
    lbHops->show();
    lbReturn->Clear();
    setStatus(u"Counting Hops...."_s);
    Shape1->show();
    Shape2->resize(0, Shape2->height());
    Shape2->show();
    mod.CancelRequested = 0;

    EchoService &echo = Seams::echo();
    const QByteArray payload = WireText::toBytes(EchoRequestText);
    // The list and the table are read afresh at every step: the yields let other
    // handlers run, and none of them may leave an index pointing past the end.
    for (int i = 0; i < List1->ListCount() && mod.CancelRequested == 0 && !waitsAbandoned();) {
        const int k = List1->ItemData(i);
        const bool held = k >= 1 && static_cast<size_t>(k) < mod.Servers.size();
        txIPAddress->setText(AddressToDotted(held ? mod.Servers[static_cast<size_t>(k)].Address : 0));
        const qint32 destination = DottedToAddress(txIPAddress->text());
        yieldOnce();

        HopSearch search(destination, kHopTickLimit);
        Timer1->setInterval(1000);
        mod.TimerTicks = 0;  // once per server: the tick rule spans the whole trace
        do {
            EchoReply reply;
            const int got = echo.sendEcho(destination, payload, search.ttl(), kHopTimeoutMs, reply);
            // The ticks are read before yielding: a tick that fell due while the call
            // blocked is delivered by the yield and counts for the next probe.
            for (const QString &line : search.record(got != 0, reply.Address, reply.RoundTripTime, mod.TimerTicks))
                returnLine(line);
            yieldOnce();
        } while (search.goOn(LeadingNumber(txTTL->text()), mod.CancelRequested != 0 || waitsAbandoned()));
        Timer1->setInterval(0);

        const qint32 hops = search.hops();
        if (i < List1->ListCount()) {
            const QString row = List1->List(i);
            const qint16 origin = row.size() >= 6 && row[5] == u'*' ? 1 : 0;
            for (qint32 j = 1; j <= mod.ServerCount && static_cast<size_t>(j) < mod.Servers.size(); ++j) {
                ServerRec &rec = mod.Servers[static_cast<size_t>(j)];
                if (rec.Address == destination && rec.IsFavorite == origin)
                    rec.Hops = hops;
            }
            List1->SetList(i, ServerRow::withHops(row, hops));
        }
        ++i;
        const int rows = List1->ListCount();
        Shape2->resize(rows > 0 ? static_cast<int>(qint64(Shape1->width()) * qMin(i, rows) / rows) : 0,
                       Shape2->height());
    }

    mod.CancelRequested = 0;
    Text4->setEnabled(true);
    txTTL->setEnabled(true);
    Shape1->hide();
    Shape2->hide();
    Command2->setEnabled(true);
    Command1->setEnabled(false);
    Command7->setEnabled(true);
    mnuPing->menuAction()->setEnabled(true);
    setStatus(u"Done..."_s);
}
