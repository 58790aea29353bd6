#pragma once
#include "shell/taskbar.h"

#include <QIcon>
#include <QPixmap>

class QWidget;

// Shell helpers of the tray and the launcher bar, in screen pixels of the
// primary screen.

// The desktop's panel: the strip of the screen that the work area leaves out,
// or a thin strip along the bottom edge where the desktop reports no panel;
// measured from the screen's top-left corner.
ScreenRect GetTaskbarRect();
// The screen less its panels.
ScreenRect GetWorkArea();
// Keeps the window above all others (or not) without moving it; true when the
// window now has that state.
bool SetTopMost(QWidget *window, bool topMost);
// The program's icon, drawn: a pulse across a server box.
QIcon PulseboxIcon();
// One size of it, square (the desktop icons of the package are drawn from it).
QPixmap PulseboxIconPixmap(int size);
