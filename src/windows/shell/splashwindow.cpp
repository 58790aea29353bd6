#include "shell/splashwindow.h"

#include "shell/controls.h"
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

SplashWindow::SplashWindow(QWidget *parent) : QDialog(parent, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint)
{
    setObjectName(u"SplashWindow"_s);
    setFont(QFont(u"Arial"_s));
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(Twips::size(7380, 3015));
    auto *frame = new QGroupBox(this);
    frame->setObjectName(u"frame"_s);
    frame->setGeometry(Twips::rect(150, 60, 7080, 2745));

    logo_ = new QLabel(frame);
    logo_->setObjectName(u"logo_"_s);
    logo_->setGeometry(Twips::rect(240, 240, 3000, 2280));
    logo_->setPixmap(PulseboxLogo(logo_->width(), logo_->height()));
    logo_->setAccessibleName(u"Pulsebox logo"_s);

    const QString version = u"Version "_s + QStringLiteral(PULSEBOX_VERSION);
    // Placed by their left edge like every control, right-aligned within the room up to
    // the frame's edge; a wider caption grows to the right.
    versionLabel_ = Controls::label(frame, "versionLabel_", version, Twips::rect(6030, 1080, 990, 300), Qt::AlignLeft, true);
    platformLabel_ = Controls::label(frame, "platformLabel_", u"Win95"_s, Twips::rect(6000, 720, 1020, 300), Qt::AlignLeft, true);
    for (QLabel *l : {versionLabel_, platformLabel_})
        l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    riskLabel_ = Controls::label(frame, "riskLabel_", u"Use at your own risk."_s, Twips::rect(4560, 1620, 2400, 300));

    // A click on the frame, the picture or a label closes the window.
    for (QWidget *w : std::initializer_list<QWidget *>{frame, logo_, versionLabel_, platformLabel_, riskLabel_})
        w->installEventFilter(this);
}

void SplashWindow::keyPressEvent(QKeyEvent *) { close(); }
void SplashWindow::mousePressEvent(QMouseEvent *) { close(); }

bool SplashWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        close();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void SplashWindow::closeEvent(QCloseEvent *event)
{
    emit closed();
    QDialog::closeEvent(event);
}
