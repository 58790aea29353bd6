#include "probes/frmservinfo.h"

#include "shell/controls.h"
#include "shell/twips.h"

#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QScreen>
#include <QPushButton>

using namespace Qt::StringLiterals;

frmServinfo::frmServinfo(const QString &text, QWidget *parent)
    : QDialog(parent, Qt::Tool | Qt::CustomizeWindowHint)
{
    setObjectName(u"frmServinfo"_s);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setFixedSize(Twips::size(6120, 4755));
    Text1 = new QPlainTextEdit(this);
    Text1->setObjectName(u"Text1"_s);
    Text1->setGeometry(Twips::rect(120, 60, 5895, 4035));
    Text1->setLineWrapMode(QPlainTextEdit::NoWrap);
    Text1->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    Text1->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    Text1->setFont(Controls::fixedFont());
    Text1->setPlainText(QString(text).replace(u"\r\n"_s, u"\n"_s));
    Text1->setAccessibleName(u"Server information"_s);
    Command1 = Controls::button(this, "Command1", u"OK"_s, Twips::rect(2580, 4260, 1035, 375));
    Command1->setDefault(true);
    connect(Command1, &QPushButton::clicked, this, &QDialog::close);
    const QScreen *screen = parent ? parent->screen() : QGuiApplication::primaryScreen();
    if (screen)
        move(screen->geometry().center() - rect().center());
}
