#pragma once
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QtGlobal>

// Where the desktop's panel lies and where the launcher bar and its pop-up go.
// Rectangles are left, top, right, bottom with right and bottom just outside,
// as desktop shells report them; the numbers may be pixels or twips.
struct ScreenRect {
    qint32 Left = 0;
    qint32 Top = 0;
    qint32 Right = 0;
    qint32 Bottom = 0;
    bool operator==(const ScreenRect &) const = default;
};

ScreenRect ScreenRectOf(const QRect &rect);

// "TOP", "BOTTOM", "LEFT", "RIGHT" or empty: four rules tried in order, a later
// one that holds replacing the earlier result. A panel may start a few pixels
// outside the screen, which the tests against 0 allow for.
QString TaskbarEdgeOf(const ScreenRect &taskbar);

// The panel as the strip of the screen that the work area leaves out: the widest
// of the four strips. A desktop that reports no panel gets a one-pixel strip along
// the bottom edge, so that the bar opens in the bottom-right corner.
ScreenRect TaskbarFromScreen(const QRect &screen, const QRect &workArea);

// The bar's top-left corner against the work area on the panel's side; an edge
// that is none of the four leaves `current` as it is.
QPoint LaunchBarTopLeft(const QString &edge, const ScreenRect &workArea, QSize bar, QPoint current);

// The player pop-up beside the bar, level with the clicked button (`buttonTop`
// inside the bar), moved up when it would reach below the work area's bottom.
// Left of the bar, except with the panel on the left, where it moves right by
// its own width; an edge that is none of the four keeps `current.x()`.
QPoint PopupTopLeft(const QString &edge, QPoint barTopLeft, int buttonTop, QSize popup,
                    int workAreaBottom, QPoint current);
