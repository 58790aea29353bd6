#pragma once
#include <QRect>

// The windows were laid out in twips: 15 to the pixel at 96 dpi, scaled by the
// screen's logical dpi.
namespace Twips {
int px(int twips);
QRect rect(int left, int top, int width, int height);
QSize size(int width, int height);
}
