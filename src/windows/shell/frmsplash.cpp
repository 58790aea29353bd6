#include "shell/frmsplash.h"

#include "shell/controls.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/twips.h"

#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>

using namespace Qt::StringLiterals;

QPixmap PulseboxLogo(int width, int height)
{
    QPixmap pixmap(width, height);
    pixmap.fill(QColor(0x10, 0x18, 0x20));
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    // A pulse trace crossing a server box: reachability at a glance.
    p.setPen(QPen(QColor(0x40, 0x50, 0x60), 2));
    p.drawRoundedRect(QRectF(width * 0.08, height * 0.2, width * 0.84, height * 0.6), 6, 6);
    QPainterPath trace;
    const double mid = height * 0.5;
    trace.moveTo(0, mid);
    trace.lineTo(width * 0.30, mid);
    trace.lineTo(width * 0.38, height * 0.18);
    trace.lineTo(width * 0.48, height * 0.86);
    trace.lineTo(width * 0.56, height * 0.32);
    trace.lineTo(width * 0.62, mid);
    trace.lineTo(width, mid);
    p.setPen(QPen(QColor(0xE0, 0x30, 0x20), 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPath(trace);
    QFont font(u"Arial"_s);
    font.setBold(true);
    font.setPixelSize(std::max(10, height / 6));
    p.setFont(font);
    p.setPen(QColor(0xF0, 0xF0, 0xF0));
    p.drawText(QRectF(0, height * 0.80, width, height * 0.2), Qt::AlignCenter, u"PULSEBOX"_s);
    return pixmap;
}

frmSplash::frmSplash(Ticker *startupClock, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint), startupClock_(startupClock)
{
    setObjectName(u"frmSplash"_s);
    setFont(QFont(u"Arial"_s));
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(Twips::size(7380, 3015));
    auto *frame = new QGroupBox(this);
    frame->setObjectName(u"Frame1"_s);
    frame->setGeometry(Twips::rect(150, 60, 7080, 2745));

    imgLogo = new QLabel(frame);
    imgLogo->setObjectName(u"imgLogo"_s);
    imgLogo->setGeometry(Twips::rect(240, 240, 3000, 2280));
    imgLogo->setPixmap(PulseboxLogo(imgLogo->width(), imgLogo->height()));
    imgLogo->setAccessibleName(u"Pulsebox logo"_s);

    const QString version = u"Version "_s + QStringLiteral(PULSEBOX_VERSION);
    // Placed by their left edge like every control, right-aligned within the room up to
    // the frame's edge; a wider caption grows to the right.
    lblVersion = Controls::label(frame, "lblVersion", version, Twips::rect(6030, 1080, 990, 300), Qt::AlignLeft, true);
    lblPlatform = Controls::label(frame, "lblPlatform", u"Win95"_s, Twips::rect(6000, 720, 1020, 300), Qt::AlignLeft, true);
    for (QLabel *l : {lblVersion, lblPlatform})
        l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    Label1 = Controls::label(frame, "Label1", u"Use at your own risk."_s, Twips::rect(4560, 1620, 2400, 300));

    // A click on the frame, the picture or a label closes the window.
    for (QWidget *w : std::initializer_list<QWidget *>{frame, imgLogo, lblVersion, lblPlatform, Label1})
        w->installEventFilter(this);
}

void frmSplash::keyPressEvent(QKeyEvent *) { close(); }
void frmSplash::mousePressEvent(QMouseEvent *) { close(); }

bool frmSplash::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        close();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void frmSplash::closeEvent(QCloseEvent *event)
{
    Mod().SplashTicks = 5;
    if (startupClock_)
        startupClock_->setInterval(0);
    QDialog::closeEvent(event);
}
