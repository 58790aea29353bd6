#include "matcher/frmmatch.h"

#include "matcher/flexgrid.h"
#include "pinglists/pinglist.h"
#include "pinglists/pinglistfiles.h"
#include "probes/echoservice.h"
#include "probes/hoptrace.h"
#include "probes/timeouts.h"
#include "shell/controls.h"
#include "shell/prompts.h"
#include "shell/pulseboxmod.h"
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

ServerRec recordOf(qint32 p, qint32 s)
{
    const ServerRec *rec = Mod().record(p, s);
    return rec ? *rec : ServerRec{};
}

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

frmMatch::frmMatch(QWidget *owner) : QDialog(owner)
{
    setObjectName(u"frmMatch"_s);
    setWindowTitle(u"Ping Matcher"_s);
    setWindowModality(Qt::ApplicationModal);
    Controls::applyDesignLook(this);
    resize(Twips::size(kInsideWidth, kInsideHeight));
    widthTwips_ = kInsideWidth + kFrameTwips;
    buildControls();
    Form_Load();
}

void frmMatch::buildControls()
{
    using Twips::rect;
    cmdPing = Controls::button(this, "cmdPing", u"Ping"_s, rect(60, 120, 1095, 375));
    cmdSort = Controls::button(this, "cmdSort", u"Sort/Match"_s, rect(60, 540, 1095, 375));
    fraCalcs = new QGroupBox(u"Calcs"_s, this);
    fraCalcs->setObjectName(u"fraCalcs"_s);
    fraCalcs->setGeometry(rect(60, 1020, 1155, 795));
    const QString modes[2] = {u"Hops first"_s, u"Pings only"_s};
    for (int i = 0; i < 2; ++i) {
        QRadioButton *option = new QRadioButton(modes[i], fraCalcs);
        option->setObjectName(u"Option1"_s);
        option->setProperty("Index", i);
        option->setGeometry(rect(60, 240 + 240 * i, 1035, 195));
        Option1[static_cast<size_t>(i)] = option;
    }
    Option1[0]->setChecked(true);
    Image1 = picture(this, "Image1", 1, rect(60, 1980, 480, 480));
    Image3 = picture(this, "Image3", 3, rect(660, 1980, 480, 480));
    Image4 = picture(this, "Image4", 4, rect(60, 2760, 480, 480));
    Image2 = picture(this, "Image2", 2, rect(660, 2760, 480, 480));
    lblStatus = Controls::label(this, "lblStatus", QString(), rect(60, 2520, 1095, 195));
    lblStatus->setAccessibleName(QString());  // it reads what it shows
    cmdSave = Controls::button(this, "cmdSave", u"Save"_s, rect(60, 3600, 1095, 375));
    cmdSave->hide();
    cmbCancel = Controls::button(this, "cmbCancel", u"Cancel"_s, rect(60, 4980, 1095, 375));
    MSFlexGrid1 = new FlexGrid(this);
    MSFlexGrid1->setObjectName(u"MSFlexGrid1"_s);
    MSFlexGrid1->setGeometry(rect(1260, 120, kGridBase, 5055));
    MSFlexGrid1->setWidthTwips(kGridBase);
    MSFlexGrid1->setAccessibleName(u"Match table"_s);
    MSFlexGrid1->setCols(2);
    MSFlexGrid1->setRows(2);
    Timer1 = new Ticker(this);
    Timer1->setObjectName(u"Timer1"_s);
    Timer2 = new Ticker(this);
    Timer2->setObjectName(u"Timer2"_s);

    connect(cmdPing, &QPushButton::clicked, this, &frmMatch::cmdPing_Click);
    connect(cmdSort, &QPushButton::clicked, this, &frmMatch::cmdSort_Click);
    connect(cmdSave, &QPushButton::clicked, this, &frmMatch::cmdSave_Click);
    connect(cmbCancel, &QPushButton::clicked, this, &frmMatch::cmbCancel_Click);
    for (int i = 0; i < 2; ++i)
        connect(Option1[static_cast<size_t>(i)], &QRadioButton::clicked, this, [this, i] { Option1_Click(i); });
    connect(Timer1, &Ticker::timeout, this, [] { ++Mod().TimerTicks; });
    connect(Timer2, &Ticker::timeout, this, &frmMatch::Timer2_Timer);
}

void frmMatch::setWidth(int twips)
{
    widthTwips_ = twips;
    resize(Twips::px(std::max(twips - kFrameTwips, 0)), height());
}

void frmMatch::Form_Load() { FillMatchGrid(MatchMode::HopsFirst, F2 | F3 | F4 | F5 | F6); }

void frmMatch::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    // A width set in twips stays exact; one the user dragged is taken from the pixels.
    if (width() != Twips::px(std::max(widthTwips_ - kFrameTwips, 0)))
        widthTwips_ = static_cast<int>(std::lround(width() * 15.0 * 96.0 / logicalDpiX())) + kFrameTwips;
    Form_Resize();
}

void frmMatch::Form_Resize()
{
    const int gridWidth = Width() - kWindowBase + kGridBase;
    if (gridWidth > 0)
        MSFlexGrid1->setWidthTwips(gridWidth);
}

void frmMatch::FillMatchGrid(MatchMode mode, int steps)
{
    const PulseboxMod &mod = Mod();
    const qint32 P = std::max(mod.PlayerCount, 0);
    const qint32 N = std::max(mod.MatchServerCount, 0);
    FlexGrid &grid = *MSFlexGrid1;
    const int cols = P + 3;

    if (steps & F1) {  // back to list order: the hidden positions
        grid.setCol(grid.Cols() - 1);
        grid.sortAscending();
    }
    if (steps & F2) {
        setWidth(P * kPlayerWidth + kWindowBase);
        grid.setColWidth(0, kNameWidth);
        grid.setWidthTwips(P * kPlayerWidth + kGridBase);
        grid.setCols(cols);
        grid.setRows(N + 1);
        grid.setTextArray(0, u"Server Name"_s);
        grid.setTextArray(P + 1, u"Match Factor"_s);
        grid.setColWidth(P + 1, kPlayerWidth);
    }
    if (steps & F3) {
        for (qint32 s = 1; s <= N; ++s) {
            const ServerRec first = recordOf(1, s);
            grid.setTextArray(s * cols, shown(Match::serverCell(first.HostName, first.Version)));
            grid.setTextArray(s * cols + P + 2, QString::number(s));
        }
    }
    if (steps & F4) {
        for (qint32 p = 1; p <= P; ++p) {
            const size_t at = static_cast<size_t>(p);
            grid.setTextArray(p, shown(at < mod.PlayerNames.size() ? mod.PlayerNames[at] : QString()));
            grid.setColWidth(p, kPlayerWidth);
            for (qint32 s = 1; s <= N; ++s) {
                const ServerRec rec = recordOf(p, s);
                grid.setTextArray(s * cols + p, Match::display(mode, rec.Hops, rec.PingMs));
            }
        }
    }
    if (steps & F5) {
        std::vector<MatchNumbers::Milli> values(static_cast<size_t>(P));
        for (qint32 s = 1; s <= N; ++s) {
            for (qint32 p = 1; p <= P; ++p) {
                const ServerRec rec = recordOf(p, s);
                values[static_cast<size_t>(p - 1)] = Match::comparison(mode, rec.Hops, rec.PingMs);
            }
            grid.setTextArray(s * cols + P + 1, Match::factor(values));
        }
    }
    if (steps & F6)
        grid.setColWidth(P + 2, 0);
}

void frmMatch::cmdSort_Click()
{
    MSFlexGrid1->setCol(MSFlexGrid1->Cols() - 2);
    MSFlexGrid1->sortAscending();
}

void frmMatch::Option1_Click(int index)
{
    matchMode = index == 1 ? MatchMode::PingsOnly : MatchMode::HopsFirst;
    FillMatchGrid(matchMode, F1 | F4 | F5);
    cmdSort_Click();
}

void frmMatch::cmdSave_Click() { PingListFiles::cmdSave(); }

void frmMatch::cmbCancel_Click()
{
    if (MatchBusy == 0)
        close();
    else
        MatchCancelRequested = 1;
}

void frmMatch::reject() { cmbCancel_Click(); }

// The close box acts as Cancel: during a run it asks the run to stop after the
// server in progress and keeps the window, with what was measured, open.
void frmMatch::closeEvent(QCloseEvent *event)
{
    if (MatchBusy == 0) {
        event->accept();
        return;
    }
    MatchCancelRequested = 1;
    event->ignore();
}

void frmMatch::Timer2_Timer()
{
    if (Timer2->interval() == 0)
        return;
    const bool tall = Image3->isVisible();
    Image3->setVisible(!tall);
    Image4->setVisible(tall);
}

void frmMatch::setIdleControls(bool idle)
{
    cmdPing->setEnabled(idle);
    cmdSort->setEnabled(idle);
    cmdSave->setEnabled(idle);
    fraCalcs->setEnabled(idle);
}

void frmMatch::cmdPing_Click()
{
    if (MatchBusy != 0)
        return;
    MatchBusy = 1;
    setCursor(Qt::WaitCursor);
    Image1->show();
    Image2->show();
    Timer2->setInterval(1000);
    setIdleControls(false);
    FillMatchGrid(MatchMode::HopsFirst, F1);

    Mod().addPlayer();
    FillMatchGrid(MatchMode::HopsFirst, F2 | F3 | F4 | F5 | F6);

    MatchCancelRequested = 0;
    yieldOnce();
    for (qint32 s = 1; s <= Mod().MatchServerCount && MatchCancelRequested == 0; ++s)
        pingServer(s);

    lblStatus->setText(QString());
    if (MatchCancelRequested == 0) {
        QString name = Seams::prompts().input(u"Give me your name:"_s, u"Name"_s, QString());
        if (name.isEmpty())
            name = u"Unknown"_s;
        Mod().PlayerNames[static_cast<size_t>(Mod().PlayerCount)] = PingList::fixedName(name);
    }
    FillMatchGrid(MatchMode::HopsFirst, F3 | F4 | F5);
    if (MatchCancelRequested == 0) {
        FillMatchGrid(MatchMode::HopsFirst, F6);
        cmdSave->show();
    }

    unsetCursor();
    setIdleControls(true);
    Timer2->setInterval(0);
    for (QLabel *image : {Image1, Image2, Image3, Image4})
        image->hide();
    MatchBusy = 0;
    MatchCancelRequested = 0;
}

void frmMatch::pingServer(qint32 s)
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
        lblStatus->setText(u"Pinging"_s);
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
        hooks.beforeProbe = [this] { lblStatus->setText(u"Counting Hops"_s); };
        hooks.bound = [] { return static_cast<qint64>(kHopBound); };
        hooks.stop = [this] { return MatchCancelRequested != 0; };
        const HopSearch search = HopTrace::run(echo, destination, Timeouts::kPingRunHopTicks, hooks);
        hops = search.hops();
        lastAnswered = search.lastAnswered();
    }

    if (lastAnswered) {
        const qint32 P = Mod().PlayerCount;
        const qint32 whole = static_cast<qint32>(std::min(std::floor(average), 2147483647.0));
        MSFlexGrid1->setTextMatrix(s, P, Match::display(MatchMode::HopsFirst, hops, whole));
        if (ServerRec *rec = Mod().record(P, s)) {
            rec->Hops = hops;
            rec->PingMs = ServerRow::roundHalfEven(average);
        }
    }
    yieldOnce();
}
