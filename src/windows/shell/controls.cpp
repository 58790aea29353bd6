#include "shell/controls.h"

#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace Controls {

void applyDesignLook(QWidget *form)
{
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(8.25);
    form->setFont(font);
}

QFont fixedFont()
{
    QFont fixed(QStringLiteral("Courier New"));
    fixed.setStyleHint(QFont::TypeWriter);
    fixed.setFixedPitch(true);
    fixed.setPointSizeF(8.25);
    return fixed;
}

QPushButton *button(QWidget *parent, const char *name, const QString &caption, QRect geometry)
{
    constexpr int kMargins = 8;
    auto *b = new QPushButton(caption, parent);
    b->setObjectName(QLatin1String(name));
    b->setGeometry(geometry);
    QFont font = b->font();
    while (font.pointSizeF() > 6.0 && QFontMetrics(font).horizontalAdvance(caption) + kMargins > geometry.width())
        font.setPointSizeF(font.pointSizeF() - 0.25);
    b->setFont(font);
    return b;
}

QLabel *label(QWidget *parent, const char *name, const QString &caption, QRect geometry,
              Qt::Alignment align, bool bold)
{
    auto *l = new QLabel(caption, parent);
    l->setObjectName(QLatin1String(name));
    l->setAlignment(align | Qt::AlignVCenter);
    if (bold) {
        QFont font = l->font();
        font.setBold(true);
        l->setFont(font);
    }
    const int missing = l->sizeHint().width() - geometry.width();
    if (missing > 0 && !caption.isEmpty()) {
        geometry.setWidth(geometry.width() + missing);
        if (align & Qt::AlignRight)
            geometry.translate(-std::min(missing, geometry.left()), 0);
    }
    l->setGeometry(geometry);
    return l;
}

QLineEdit *textBox(QWidget *parent, const char *name, QRect geometry, QLabel *caption)
{
    auto *t = new QLineEdit(parent);
    t->setObjectName(QLatin1String(name));
    t->setGeometry(geometry);
    if (caption)
        caption->setBuddy(t);
    return t;
}

}
