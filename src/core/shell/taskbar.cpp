#include "shell/taskbar.h"

#include <array>

using namespace Qt::StringLiterals;

ScreenRect ScreenRectOf(const QRect &rect)
{
    return {rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()};
}

QString TaskbarEdgeOf(const ScreenRect &r)
{
    QString edge;
    if (r.Right > r.Bottom && !(r.Left <= 0 && r.Top > 0))
        edge = u"TOP"_s;
    if (r.Left <= 0 && r.Top > 0 && r.Right > 0 && r.Bottom > 0)
        edge = u"BOTTOM"_s;
    if (r.Left <= 0 && r.Top <= 0 && r.Right < r.Bottom)
        edge = u"LEFT"_s;
    if (r.Left > 0 && r.Top <= 0 && r.Right > 0 && r.Bottom > 0)
        edge = u"RIGHT"_s;
    return edge;
}

ScreenRect TaskbarFromScreen(const QRect &screen, const QRect &workArea)
{
    const ScreenRect s = ScreenRectOf(screen);
    const ScreenRect w = ScreenRectOf(workArea.intersected(screen));
    if (workArea.intersected(screen).isEmpty())
        return {s.Left, s.Bottom - 1, s.Right, s.Bottom};
    const std::array<ScreenRect, 4> strips{{
        {s.Left, w.Bottom, s.Right, s.Bottom},  // below the work area
        {s.Left, s.Top, s.Right, w.Top},        // above it
        {s.Left, s.Top, w.Left, s.Bottom},      // left of it
        {w.Right, s.Top, s.Right, s.Bottom},    // right of it
    }};
    const ScreenRect *widest = nullptr;
    qint64 widestArea = 0;
    for (const ScreenRect &strip : strips) {
        const qint64 area = qint64(strip.Right - strip.Left) * (strip.Bottom - strip.Top);
        if (area > widestArea) {
            widest = &strip;
            widestArea = area;
        }
    }
    return widest ? *widest : ScreenRect{s.Left, s.Bottom - 1, s.Right, s.Bottom};
}

QPoint LaunchBarTopLeft(const QString &edge, const ScreenRect &workArea, QSize bar, QPoint current)
{
    const int right = workArea.Right - bar.width();
    const int bottom = workArea.Bottom - bar.height();
    if (edge == u"BOTTOM"_s || edge == u"RIGHT"_s)
        return {right, bottom};
    if (edge == u"TOP"_s)
        return {right, workArea.Top};
    if (edge == u"LEFT"_s)
        return {workArea.Left, bottom};
    return current;
}

QPoint PopupTopLeft(const QString &edge, QPoint barTopLeft, int buttonTop, QSize popup,
                    int workAreaBottom, QPoint current)
{
    const int level = barTopLeft.y() + buttonTop;
    const int top = level + popup.height() > workAreaBottom ? workAreaBottom - popup.height() : level;
    int left = current.x();
    if (edge == u"LEFT"_s)
        left = barTopLeft.x() + popup.width();
    else if (edge == u"RIGHT"_s || edge == u"TOP"_s || edge == u"BOTTOM"_s)
        left = barTopLeft.x() - popup.width();
    return {left, top};
}
