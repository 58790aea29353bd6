#include "shell/trayicon.h"

#include "shell/iconize.h"
#include "shell/twips.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QLabel>
#include <QTimer>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QSystemTrayIcon>

using namespace Qt::StringLiterals;

TrayIcon *TrayIcon::forDesktop(QWidget *owner)
{
    if (QSystemTrayIcon::isSystemTrayAvailable())
        return new SystemTray(owner);
    return new StandInTray(owner);
}

SystemTray::SystemTray(QObject *parent) : TrayIcon(parent), icon_(new QSystemTrayIcon(this))
{
    // The tray reports each click, and an XEmbed tray the second one of a pair
    // also as a double click; a StatusNotifier host reports clicks only. The
    // press handler waits for the double click inside its own wait, so it runs
    // from the event queue rather than inside the tray's call. A second click
    // during that wait is the double click either way; a double click reported
    // after it finds the window already back and changes nothing.
    connect(icon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        const bool waiting = firstClickPending();
        if (reason == QSystemTrayIcon::Trigger)
            emit mouseEvent(waiting ? kLeftDoubleClick : kLeftPress);
        else if (reason == QSystemTrayIcon::DoubleClick)
            emit mouseEvent(kLeftDoubleClick);
    }, Qt::QueuedConnection);
}

void SystemTray::add(const QIcon &icon, const QString &tip)
{
    icon_->setIcon(icon);
    icon_->setToolTip(tip);
    icon_->show();
}

void SystemTray::remove() { icon_->hide(); }
bool SystemTray::isShown() const { return icon_->isVisible(); }

void SystemTray::notify(const QString &title, const QString &text)
{
    icon_->showMessage(title, text, QSystemTrayIcon::Information);
}

namespace {
class StandInWindow : public QWidget {
public:
    explicit StandInWindow(StandInTray *tray)
        : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), tray_(tray)
    {
        setObjectName(u"trayStandIn"_s);
        setAttribute(Qt::WA_QuitOnClose, false);
        setFixedSize(Twips::size(600, 600));
        setCursor(Qt::PointingHandCursor);
    }
    QIcon icon;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter p(this);
        p.fillRect(rect(), palette().window());
        p.setPen(palette().dark().color());
        p.drawRect(rect().adjusted(0, 0, -1, -1));
        const int margin = 4;
        icon.paint(&p, rect().adjusted(margin, margin, -margin, -margin));
    }
    // A widget sees the second press of a double click too; the wait that the
    // first press started turns the double click into the restore, so the
    // second press is not another first click. The events are reported from
    // the event queue, as the tray's are, so that the press's wait does not
    // run inside this window's own mouse handling.
    void mousePressEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton && !tray_->firstClickPending())
            report(TrayIcon::kLeftPress);
    }
    void mouseDoubleClickEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton)
            report(TrayIcon::kLeftDoubleClick);
    }

private:
    void report(int number)
    {
        QMetaObject::invokeMethod(tray_, [tray = QPointer<StandInTray>(tray_), number] {
            if (tray)
                emit tray->mouseEvent(number);
        }, Qt::QueuedConnection);
    }


    StandInTray *tray_;
};
}

StandInTray::StandInTray(QObject *parent) : TrayIcon(parent) {}

StandInTray::~StandInTray()
{
    delete note_;
    delete window_;
}

void StandInTray::add(const QIcon &icon, const QString &tip)
{
    if (!window_)
        window_ = new StandInWindow(this);
    auto *window = static_cast<StandInWindow *>(window_.data());
    window->icon = icon;
    window->setWindowIcon(icon);
    window->setToolTip(tip);
    window->setAccessibleName(tip);
    window->setWindowTitle(tip);
    // Away from the corner where the launcher bar opens, so that both stay in reach.
    const ScreenRect work = GetWorkArea();
    const int top = TaskbarEdgeOf(GetTaskbarRect()) == u"TOP"_s
                        ? work.Bottom - window->height()
                        : work.Top;
    window->move(work.Right - window->width(), top);
    window->show();
    window->raise();
}

void StandInTray::remove()
{
    if (window_)
        window_->hide();
}

bool StandInTray::isShown() const { return window_ && window_->isVisible(); }

void StandInTray::notify(const QString &title, const QString &text)
{
    if (!note_) {
        auto *note = new QLabel(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        note->setObjectName(u"trayNote"_s);
        note->setAttribute(Qt::WA_QuitOnClose, false);
        note->setAttribute(Qt::WA_ShowWithoutActivating);
        note->setFrameShape(QFrame::Box);
        note->setMargin(8);
        note->setWordWrap(true);
        note->setMaximumWidth(Twips::size(4800, 0).width());
        note_ = note;
    }
    auto *note = static_cast<QLabel *>(note_.data());
    note->setText(text);
    note->setWindowTitle(title);
    note->setAccessibleName(text);
    note->adjustSize();
    const ScreenRect work = GetWorkArea();
    const QRect icon = window_ ? window_->frameGeometry() : QRect(work.Right, work.Top, 0, 0);
    const int top = icon.top() > work.Top ? icon.top() - note->height() : icon.bottom() + 1;
    note->move(std::max(work.Left, work.Right - note->width()), top);
    note->show();
    note->raise();
    // Screen readers hear the note as it comes, as they do a desktop notification.
    QAccessibleEvent alert(note, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
    QTimer::singleShot(8000, note, &QWidget::hide);
}
