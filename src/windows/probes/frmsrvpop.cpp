#include "probes/frmsrvpop.h"

#include "shell/controls.h"
#include "shell/twips.h"

#include <QPlainTextEdit>

using namespace Qt::StringLiterals;

frmsrvpop::frmsrvpop(QWidget *parent) : QWidget(parent, Qt::Tool)
{
    setObjectName(u"frmsrvpop"_s);
    Controls::applyDesignLook(this);
    Text1 = new QPlainTextEdit(this);
    Text1->setObjectName(u"Text1"_s);
    Text1->setReadOnly(true);
    Text1->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    QFont arial(u"Arial"_s);
    arial.setPointSizeF(8.25);
    Text1->setFont(arial);
    resize(Twips::size(2295, 1455));
}

// The designed rule keeps the box 120 twips narrower and 360 twips lower than the
// window's outer size: exactly the tool window's borders and caption. The window
// manager draws those here, so the box takes the whole client area.
void frmsrvpop::resizeEvent(QResizeEvent *)
{
    Text1->setGeometry(rect());
}
