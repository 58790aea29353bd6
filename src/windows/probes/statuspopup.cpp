#include "probes/statuspopup.h"

#include "shell/controls.h"
#include "shell/twips.h"

#include <QPlainTextEdit>

using namespace Qt::StringLiterals;

StatusPopup::StatusPopup(QWidget *parent) : QWidget(parent, Qt::Tool)
{
    setObjectName(u"StatusPopup"_s);
    Controls::applyDesignLook(this);
    playersText_ = new QPlainTextEdit(this);
    playersText_->setObjectName(u"playersText_"_s);
    playersText_->setReadOnly(true);
    playersText_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    QFont arial(u"Arial"_s);
    arial.setPointSizeF(8.25);
    playersText_->setFont(arial);
    resize(Twips::size(2295, 1455));
}

void StatusPopup::setStatus(const QString &title, const QString &text)
{
    setWindowTitle(title);
    playersText_->setPlainText(text);
}

QString StatusPopup::text() const { return playersText_->toPlainText(); }

// The designed rule keeps the box 120 twips narrower and 360 twips lower than the
// window's outer size: exactly the tool window's borders and caption. The window
// manager draws those here, so the box takes the whole client area.
void StatusPopup::resizeEvent(QResizeEvent *)
{
    playersText_->setGeometry(rect());
}
