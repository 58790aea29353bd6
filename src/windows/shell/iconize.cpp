#include "shell/iconize.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QWidget>

namespace {
const QScreen *primary() { return QGuiApplication::primaryScreen(); }
}

ScreenRect GetTaskbarRect()
{
    const QScreen *screen = primary();
    if (!screen)
        return {};
    // Measured from the screen's own corner, so that the edge rules hold for a
    // screen that does not start at the desktop's origin.
    const QPoint origin = screen->geometry().topLeft();
    return TaskbarFromScreen(screen->geometry().translated(-origin),
                             screen->availableGeometry().translated(-origin));
}

ScreenRect GetWorkArea()
{
    const QScreen *screen = primary();
    return screen ? ScreenRectOf(screen->availableGeometry()) : ScreenRect{};
}

bool SetTopMost(QWidget *window, bool topMost)
{
    if (!window)
        return false;
    if (window->windowFlags().testFlag(Qt::WindowStaysOnTopHint) != topMost) {
        // Changing a window's flags re-creates it hidden: put it back where it was.
        const QPoint position = window->pos();
        const bool visible = window->isVisible();
        window->setWindowFlag(Qt::WindowStaysOnTopHint, topMost);
        window->move(position);
        if (visible)
            window->show();
    }
    return topMost && window->windowFlags().testFlag(Qt::WindowStaysOnTopHint);
}

QPixmap PulseboxIconPixmap(int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const double s = size;
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x10, 0x18, 0x20));
    p.drawRoundedRect(QRectF(0.5, 0.5, s - 1, s - 1), s / 6, s / 6);
    p.setPen(QPen(QColor(0xE0, 0x30, 0x20), std::max(1.5, s / 12), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF trace[] = {{s * 0.08, s * 0.55}, {s * 0.32, s * 0.55}, {s * 0.42, s * 0.2},
                             {s * 0.55, s * 0.85}, {s * 0.65, s * 0.4}, {s * 0.72, s * 0.55},
                             {s * 0.92, s * 0.55}};
    p.drawPolyline(trace, 7);
    p.end();
    return pixmap;
}

QIcon PulseboxIcon()
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64})
        icon.addPixmap(PulseboxIconPixmap(size));
    return icon;
}
