#include "matcher/pingmatcherdialog.h"

#include "engine/hopfinder.h"
#include "engine/probeengine.h"
#include "matcher/matchgrid.h"
#include "pinglists/pinglist.h"
#include "pinglists/pinglistfiles.h"
#include "probes/address.h"
#include "probes/echoservice.h"
#include "probes/hoptrace.h"
#include "probes/timeouts.h"
#include "serverlist/refreshdecisions.h"
#include "shell/controls.h"
#include "shell/prompts.h"
#include "shell/seams.h"
#include "shell/ticker.h"
#include "shell/twips.h"
#include "shell/waiting.h"
#include "shell/wiretext.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QRadioButton>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {
constexpr int kInsideWidth = 4260, kInsideHeight = 5415;
constexpr int kFrameTwips = 105;    // outer minus inside width as designed: 4365 - 4260
constexpr int kPlayerWidth = 795;   // a player's column, and the Match Factor's
constexpr int kNameWidth = 1815;    // column 0
constexpr int kWindowBase = 4365;   // window width without player columns
constexpr int kGridBase = 2895;     // grid width without player columns
constexpr int kPingTimeoutMs = 200;
constexpr int kPingTtl = 250;
constexpr int kHopBound = 250;

// Never-assigned texts are NULs; they show as blanks.
QString shown(QString text) { return text.replace(QChar(0), u' '); }

// The busy pictures: a pulse travelling along a line to a server, and two frames of
// a beating heart that alternate while the run goes on.
QPixmap busyPicture(int which)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor dark(0, 64, 128), pulse(200, 0, 0);
    switch (which) {
    case 1: {  // this machine: a small screen sending a pulse
        p.setPen(QPen(dark, 2));
        p.setBrush(QColor(170, 210, 240));
        p.drawRect(3, 5, 18, 13);
        p.drawLine(12, 18, 12, 23);
        p.drawLine(6, 24, 18, 24);
        p.setPen(QPen(pulse, 2));
        p.setBrush(Qt::NoBrush);
        p.drawArc(QRectF(18, 6, 8, 10), -60 * 16, 120 * 16);
        p.drawArc(QRectF(20, 3, 10, 16), -60 * 16, 120 * 16);
        break;
    }
    case 2: {  // the server: a rack of three units with lamps
        p.setPen(QPen(dark, 2));
        for (int i = 0; i < 3; ++i) {
            p.setBrush(QColor(200, 200, 200));
            p.drawRect(5, 4 + i * 9, 22, 7);
            p.setBrush(i == 1 ? QColor(0, 180, 0) : pulse);
            p.drawEllipse(QPointF(22, 7.5 + i * 9), 1.5, 1.5);
        }
        break;
    }
    default: {  // a heart beat on a trace: tall (3) and low (4)
        const double peak = which == 3 ? 4 : 12;
        QPainterPath trace;
        trace.moveTo(1, 18);
        trace.lineTo(9, 18);
        trace.lineTo(12, peak);
        trace.lineTo(16, 29 - (peak - 4) / 2);
        trace.lineTo(19, 18);
        trace.lineTo(31, 18);
        p.setPen(QPen(which == 3 ? pulse : pulse.darker(140), 2));
        p.drawPath(trace);
        break;
    }
    }
    return pixmap;
}

QLabel *picture(QWidget *parent, const char *name, int which, QRect geometry)
{
    auto *l = new QLabel(parent);
    l->setObjectName(QLatin1String(name));
    l->setGeometry(geometry);
    l->setPixmap(busyPicture(which));
    l->setAlignment(Qt::AlignCenter);
    l->setAccessibleName(u"Busy"_s);
    l->hide();
    return l;
}
}

PingMatcherDialog::PingMatcherDialog(MatcherData &data, QWidget *owner, bool fast)
    : QDialog(owner), data_(data), fast_(fast)
{
    setObjectName(u"PingMatcherDialog"_s);
    setWindowTitle(u"Ping Matcher"_s);
    setWindowModality(Qt::ApplicationModal);
    Controls::applyDesignLook(this);
    resize(Twips::size(kInsideWidth, kInsideHeight));
    widthTwips_ = kInsideWidth + kFrameTwips;
    buildControls();
    fillGrid(MatchMode::HopsFirst, Layout | ServerNames | PlayerCells | MatchFactors | HidePositions);
}

ServerRec PingMatcherDialog::recordOf(qint32 p, qint32 s) const
{
    const ServerRec *rec = data_.record(p, s);
    return rec ? *rec : ServerRec{};
}

void PingMatcherDialog::buildControls()
{
    using Twips::rect;
    pingButton_ = Controls::button(this, "pingButton_", u"Ping"_s, rect(60, 120, 1095, 375));
    sortButton_ = Controls::button(this, "sortButton_", u"Sort/Match"_s, rect(60, 540, 1095, 375));
    calcsFrame_ = new QGroupBox(u"Calcs"_s, this);
    calcsFrame_->setObjectName(u"calcsFrame_"_s);
    calcsFrame_->setGeometry(rect(60, 1020, 1155, 795));
    hopsFirstOption_ = new QRadioButton(u"Hops first"_s, calcsFrame_);
    hopsFirstOption_->setObjectName(u"hopsFirstOption_"_s);
    hopsFirstOption_->setGeometry(rect(60, 240, 1035, 195));
    hopsFirstOption_->setChecked(true);
    pingsOnlyOption_ = new QRadioButton(u"Pings only"_s, calcsFrame_);
    pingsOnlyOption_->setObjectName(u"pingsOnlyOption_"_s);
    pingsOnlyOption_->setGeometry(rect(60, 480, 1035, 195));
    hostPicture_ = picture(this, "hostPicture_", 1, rect(60, 1980, 480, 480));
    beatTallPicture_ = picture(this, "beatTallPicture_", 3, rect(660, 1980, 480, 480));
    beatLowPicture_ = picture(this, "beatLowPicture_", 4, rect(60, 2760, 480, 480));
    serverPicture_ = picture(this, "serverPicture_", 2, rect(660, 2760, 480, 480));
    statusLabel_ = Controls::label(this, "statusLabel_", QString(), rect(60, 2520, 1095, 195));
    statusLabel_->setAccessibleName(QString());  // it reads what it shows
    saveButton_ = Controls::button(this, "saveButton_", u"Save"_s, rect(60, 3600, 1095, 375));
    saveButton_->hide();
    cancelButton_ = Controls::button(this, "cancelButton_", u"Cancel"_s, rect(60, 4980, 1095, 375));
    matchGrid_ = new MatchGrid(this);
    matchGrid_->setObjectName(u"matchGrid_"_s);
    matchGrid_->setGeometry(rect(1260, 120, kGridBase, 5055));
    matchGrid_->setWidthTwips(kGridBase);
    matchGrid_->setAccessibleName(u"Match table"_s);
    matchGrid_->setGridCols(2);
    matchGrid_->setGridRows(2);
    busyTicker_ = new Ticker(this);
    busyTicker_->setObjectName(u"busyTicker_"_s);

    connect(pingButton_, &QPushButton::clicked, this, &PingMatcherDialog::pingServers);
    connect(sortButton_, &QPushButton::clicked, this, &PingMatcherDialog::sortByMatchFactor);
    connect(saveButton_, &QPushButton::clicked, this, &PingMatcherDialog::saveToFile);
    connect(cancelButton_, &QPushButton::clicked, this, &PingMatcherDialog::cancelOrClose);
    connect(hopsFirstOption_, &QRadioButton::clicked, this, [this] { showMode(MatchMode::HopsFirst); });
    connect(pingsOnlyOption_, &QRadioButton::clicked, this, [this] { showMode(MatchMode::PingsOnly); });
    connect(busyTicker_, &Ticker::timeout, this, &PingMatcherDialog::alternateBusyPictures);
}

void PingMatcherDialog::setWidthTwips(int twips)
{
    widthTwips_ = twips;
    resize(Twips::px(std::max(twips - kFrameTwips, 0)), height());
}

void PingMatcherDialog::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    // A width set in twips stays exact; one the user dragged is taken from the pixels.
    if (width() != Twips::px(std::max(widthTwips_ - kFrameTwips, 0)))
        widthTwips_ = static_cast<int>(std::lround(width() * 15.0 * 96.0 / logicalDpiX())) + kFrameTwips;
    fitGridToWidth();
}

void PingMatcherDialog::fitGridToWidth()
{
    const int gridWidth = widthTwips_ - kWindowBase + kGridBase;
    if (gridWidth > 0)
        matchGrid_->setWidthTwips(gridWidth);
}

void PingMatcherDialog::fillGrid(MatchMode mode, int steps)
{
    const qint32 P = std::max(data_.PlayerCount, 0);
    const qint32 N = std::max(data_.MatchServerCount, 0);
    MatchGrid &grid = *matchGrid_;
    const int cols = P + 3;

    if (steps & ListOrder) {  // the hidden positions
        grid.setSortColumn(grid.gridCols() - 1);
        grid.sortAscending();
    }
    if (steps & Layout) {
        setWidthTwips(P * kPlayerWidth + kWindowBase);
        grid.setColWidthTwips(0, kNameWidth);
        grid.setWidthTwips(P * kPlayerWidth + kGridBase);
        grid.setGridCols(cols);
        grid.setGridRows(N + 1);
        grid.setTextAt(0, u"Server Name"_s);
        grid.setTextAt(P + 1, u"Match Factor"_s);
        grid.setColWidthTwips(P + 1, kPlayerWidth);
    }
    if (steps & ServerNames) {
        for (qint32 s = 1; s <= N; ++s) {
            const ServerRec first = recordOf(1, s);
            grid.setTextAt(s * cols, shown(Match::serverCell(first.HostName, first.Version)));
            grid.setTextAt(s * cols + P + 2, QString::number(s));
        }
    }
    if (steps & PlayerCells) {
        for (qint32 p = 1; p <= P; ++p) {
            const size_t at = static_cast<size_t>(p);
            grid.setTextAt(p, shown(at < data_.PlayerNames.size() ? data_.PlayerNames[at] : QString()));
            grid.setColWidthTwips(p, kPlayerWidth);
            for (qint32 s = 1; s <= N; ++s) {
                const ServerRec rec = recordOf(p, s);
                grid.setTextAt(s * cols + p, Match::display(mode, rec.Hops, rec.PingMs));
            }
        }
    }
    if (steps & MatchFactors) {
        std::vector<MatchNumbers::Milli> values(static_cast<size_t>(P));
        for (qint32 s = 1; s <= N; ++s) {
            for (qint32 p = 1; p <= P; ++p) {
                const ServerRec rec = recordOf(p, s);
                values[static_cast<size_t>(p - 1)] = Match::comparison(mode, rec.Hops, rec.PingMs);
            }
            grid.setTextAt(s * cols + P + 1, Match::factor(values));
        }
    }
    if (steps & HidePositions)
        grid.setColWidthTwips(P + 2, 0);
}

void PingMatcherDialog::sortByMatchFactor()
{
    matchGrid_->setSortColumn(matchGrid_->gridCols() - 2);
    matchGrid_->sortAscending();
}

void PingMatcherDialog::showMode(MatchMode mode)
{
    matchMode_ = mode;
    fillGrid(matchMode_, ListOrder | PlayerCells | MatchFactors);
    sortByMatchFactor();
}

void PingMatcherDialog::saveToFile() { PingListFiles::saveMatcher(data_); }

void PingMatcherDialog::cancelOrClose()
{
    if (!matchBusy_)
        close();
    else
        cancelRequested_ = true;
}

void PingMatcherDialog::reject() { cancelOrClose(); }

// The close box acts as Cancel: during a run it asks the run to stop after the
// server in progress and keeps the window, with what was measured, open.
void PingMatcherDialog::closeEvent(QCloseEvent *event)
{
    if (!matchBusy_) {
        event->accept();
        return;
    }
    cancelRequested_ = true;
    event->ignore();
}

void PingMatcherDialog::alternateBusyPictures()
{
    if (busyTicker_->interval() == 0)
        return;
    const bool tall = beatTallPicture_->isVisible();
    beatTallPicture_->setVisible(!tall);
    beatLowPicture_->setVisible(tall);
}

void PingMatcherDialog::setIdleControls(bool idle)
{
    pingButton_->setEnabled(idle);
    sortButton_->setEnabled(idle);
    saveButton_->setEnabled(idle);
    calcsFrame_->setEnabled(idle);
}

void PingMatcherDialog::pingServers()
{
    if (matchBusy_)
        return;
    matchBusy_ = true;
    setCursor(Qt::WaitCursor);
    hostPicture_->show();
    serverPicture_->show();
    busyTicker_->setInterval(1000);
    setIdleControls(false);
    fillGrid(MatchMode::HopsFirst, ListOrder);

    data_.addPlayer();
    fillGrid(MatchMode::HopsFirst, Layout | ServerNames | PlayerCells | MatchFactors | HidePositions);

    cancelRequested_ = false;
    yieldOnce();
    if (fast_) {
        pingAllAtOnce();
    } else {
        for (qint32 s = 1; s <= data_.MatchServerCount && !cancelRequested_; ++s)
            pingServer(s);
    }

    statusLabel_->setText(QString());
    if (!cancelRequested_) {
        QString name = Seams::prompts().input(u"Give me your name:"_s, u"Name"_s, QString());
        if (name.isEmpty())
            name = u"Unknown"_s;
        data_.PlayerNames[static_cast<size_t>(data_.PlayerCount)] = PingList::fixedName(name);
    }
    fillGrid(MatchMode::HopsFirst, ServerNames | PlayerCells | MatchFactors);
    if (!cancelRequested_) {
        fillGrid(MatchMode::HopsFirst, HidePositions);
        saveButton_->show();
    }

    unsetCursor();
    setIdleControls(true);
    busyTicker_->setInterval(0);
    for (QLabel *picture : {hostPicture_, serverPicture_, beatTallPicture_, beatLowPicture_})
        picture->hide();
    matchBusy_ = false;
    cancelRequested_ = false;
}

void PingMatcherDialog::pingServer(qint32 s)
{
    EchoService &echo = Seams::echo();
    const QByteArray payload = WireText::toBytes(EchoRequestText);
    const qint32 destination = recordOf(1, s).Address;
    yieldOnce();

    EchoReply reply;
    int answers = 0;
    quint64 sum = 0;
    bool lastAnswered = false;
    for (int k = 1; k <= 3; ++k) {
        statusLabel_->setText(u"Pinging"_s);
        yieldOnce();
        lastAnswered = echo.sendEcho(destination, payload, kPingTtl, kPingTimeoutMs, reply) != 0;
        if (!lastAnswered)
            break;
        ++answers;
        sum += reply.RoundTripTime;
    }
    const double average = answers > 0 ? static_cast<double>(sum) / answers : 0.0;

    qint32 hops = 0;
    if (average > 0) {
        HopTrace::Hooks hooks;
        hooks.beforeProbe = [this] { statusLabel_->setText(u"Counting Hops"_s); };
        hooks.bound = [] { return static_cast<qint64>(kHopBound); };
        hooks.stop = [this] { return cancelRequested_; };
        const HopSearch search = HopTrace::run(echo, destination, Timeouts::kPingRunHopTicks, hooks);
        hops = search.hops();
        lastAnswered = search.lastAnswered();
    }

    if (lastAnswered)
        storeMeasurement(s, hops, average);
    yieldOnce();
}

void PingMatcherDialog::storeMeasurement(qint32 s, qint32 hops, double average)
{
    const qint32 P = data_.PlayerCount;
    const qint32 whole = static_cast<qint32>(std::min(std::floor(average), 2147483647.0));
    matchGrid_->setCellText(s, P, Match::display(MatchMode::HopsFirst, hops, whole));
    if (ServerRec *rec = data_.record(P, s)) {
        rec->Hops = hops;
        rec->PingMs = ServerRow::roundHalfEven(average);
    }
}

// Every server at once: up to three echoes each (the engine's pings), then the hop
// finder for the servers whose mean round trip is above 0. A server gets what the
// one-at-a-time run stores when every router answers: its hop count is the
// smallest time-to-live it answered itself, and a server the hop probes never
// reach gets nothing, as a trace whose last probe went unanswered. After a Cancel,
// the servers measured to the end keep their values.
void PingMatcherDialog::pingAllAtOnce()
{
    const std::unique_ptr<EchoBatch> echoes = Seams::echoBatch();
    const auto stopped = [this] { return cancelRequested_ || waitsAbandoned(); };
    QList<ProbeEntry> entries;
    for (qint32 s = 1; s <= data_.MatchServerCount; ++s)
        entries.append({AddressToDotted(recordOf(1, s).Address), false});
    statusLabel_->setText(u"Pinging"_s);
    ProbeEngine engine;
    engine.setEchoBatch(echoes.get());
    ProbeSettings settings;
    settings.echoes = 3;
    settings.ttl = kPingTtl;
    settings.echoTimeoutMs = kPingTimeoutMs;
    settings.pingOnly = true;
    engine.setSettings(settings);
    runUntilFinished(engine, entries, stopped);
    const QList<ProbeResult> pings = engine.results();

    QList<qint32> destinations;
    for (const ProbeResult &r : pings)
        if (r.done && r.ping > 0)
            destinations.append(DottedToAddress(r.address));
    HopFinder finder;
    finder.setEchoBatch(echoes.get());
    if (!destinations.isEmpty() && !stopped()) {
        statusLabel_->setText(u"Counting Hops"_s);
        runUntilFinished(finder, destinations, stopped);
    }
    qsizetype traced = 0;
    for (qint32 s = 1; s <= pings.size(); ++s) {
        const ProbeResult &r = pings[s - 1];
        if (!r.done)
            continue;
        if (r.ping > 0) {
            const HopResult hop = finder.results().value(traced++);
            if (hop.done && hop.hops > 0)
                storeMeasurement(s, hop.hops, r.ping);
        } else if (r.echoReplies == settings.echoes) {
            storeMeasurement(s, 0, r.ping);
        }
    }
}
