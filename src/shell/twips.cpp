#include "shell/twips.h"

#include <QGuiApplication>
#include <QScreen>
#include <QFontMetrics>
#include <QWidget>

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

void applyDesignLook(QWidget *form)
{
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(8.25);
    form->setFont(font);
}

void fitCaption(QWidget *button, const QString &caption)
{
    constexpr int kMargins = 8;
    QFont font = button->font();
    while (font.pointSizeF() > 6.0
           && QFontMetrics(font).horizontalAdvance(caption) + kMargins > button->width())
        font.setPointSizeF(font.pointSizeF() - 0.25);
    button->setFont(font);
}

}
