#pragma once
#include <QRect>

class QWidget;

// The windows were laid out in twips: 15 to the pixel at 96 dpi, scaled by the
// screen's logical dpi.
namespace Twips {
int px(int twips);
QRect rect(int left, int top, int width, int height);
QSize size(int width, int height);
// The face the layout was drawn for: a small sans-serif font.
void applyDesignLook(QWidget *form);
// Shrinks a button's font until its caption fits the designed width: the system's
// fonts run wider than the design's.
void fitCaption(QWidget *button, const QString &caption);
}
