// Fast Refresh: the probing passes of a refresh run by the probe engine, which
// probes every server at once; the results are then replayed in entry order so
// that the table, the rows and the log come out as the serial passes give them.
#include "engine/echobatch.h"
#include "engine/probeengine.h"
#include "serverlist/probedecisions.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/vblist.h"
#include "shell/waiting.h"

#include <QAction>
#include <QFrame>
#include <QLineEdit>

#include <cmath>
#include <memory>

void frmPulsebox::probeFast(bool withWebList)
{
    PulseboxMod &mod = Mod();
    QList<ProbeEntry> entries;
    for (int i = 0; i < lbFav->ListCount(); ++i)
        entries.append({lbFav->List(i), true});
    for (int i = 0; withWebList && i < lbHost->ListCount(); ++i)
        entries.append({lbHost->List(i), false});
    if (entries.isEmpty() || mod.CancelRequested != 0)
        return;

    ProbeSettings settings;
    settings.echoes = mnuqp[0]->isChecked() ? 1 : 3;
    settings.ttl = Probe::TtlValue(txTTL->text());
    settings.ttlText = txTTL->text();
    settings.pingLimit = Probe::NumberValue(Text4->text());
    // The serial query listens for two ticks; listening as long hears every server it hears.
    settings.queryTimeoutMs = static_cast<int>(std::lround(2000 * Ticker::timeScale()));
    settings.echoTimeoutMs = 200;

    ProbeEngine engine;
    std::unique_ptr<ServiceEchoBatch> replaced;
    if (Seams::echoReplaced()) {
        replaced = std::make_unique<ServiceEchoBatch>(Seams::echo());
        engine.setEchoBatch(replaced.get());
    }
    engine.setSettings(settings);
    bool finished = false;
    connect(&engine, &ProbeEngine::progress, this, [this](int done, int total) {
        Shape2->resize(static_cast<int>(qint64(Shape1->width()) * done / total), Shape2->height());
    });
    connect(&engine, &ProbeEngine::finished, this, [&finished] { finished = true; });
    engine.start(entries);
    waitUntil([&] { return finished || mod.CancelRequested != 0; });
    engine.cancel();

    if (!engine.rttNotice().isEmpty())
        returnLine(engine.rttNotice());
    int selected = -1;
    // Entry order, up to the first server a Cancel left unfinished: the same as a
    // serial refresh cancelled there.
    for (const ProbeResult &r : engine.results()) {
        if (!r.done)
            break;
        txIPAddress->setText(r.address);
        // Every line but a ping over the limit selects itself as it comes; selecting
        // (and scrolling) once at the end leaves the log as the serial passes leave it
        // without laying the list out again for every line.
        const bool overLimit = !r.accepted && r.rttSource != RttSource::None && !r.log.isEmpty();
        for (qsizetype i = 0; i < r.log.size(); ++i) {
            const int row = lbReturn->AddItem(r.log[i]);
            if (!(overLimit && i == r.log.size() - 1))
                selected = row;
        }
        if (r.accepted)
            List1->SetItemData(List1->AddItem(r.row), mod.appendServer(r.record));
    }
    if (selected >= 0) {
        lbReturn->SetListIndex(selected);
        lbReturn->scrollToItem(lbReturn->item(selected));
    }
}
