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

void frmsrvpop::resizeEvent(QResizeEvent *)
{
    Text1->setGeometry(0, 0, std::max(0, width() - Twips::px(120)), std::max(0, height() - Twips::px(360)));
}
