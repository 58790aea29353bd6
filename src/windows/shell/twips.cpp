#include "shell/twips.h"

#include <QGuiApplication>
#include <QScreen>

namespace Twips {

int px(int twips)
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    const double dpi = screen ? screen->logicalDotsPerInch() : 96.0;
    return qRound(twips / 15.0 * dpi / 96.0);
}

QRect rect(int left, int top, int width, int height)
{
    return {px(left), px(top), px(width), px(height)};
}

QSize size(int width, int height) { return {px(width), px(height)}; }

}
