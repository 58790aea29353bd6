#include "probes/serverinfowindow.h"

#include "shell/controls.h"
#include "shell/twips.h"

#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QScreen>
#include <QPushButton>

using namespace Qt::StringLiterals;

ServerInfoWindow::ServerInfoWindow(const QString &text, QWidget *parent)
    : QDialog(parent, Qt::Tool | Qt::CustomizeWindowHint)
{
    setObjectName(u"ServerInfoWindow"_s);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setFixedSize(Twips::size(6120, 4755));
    infoText_ = new QPlainTextEdit(this);
    infoText_->setObjectName(u"infoText_"_s);
    infoText_->setGeometry(Twips::rect(120, 60, 5895, 4035));
    infoText_->setLineWrapMode(QPlainTextEdit::NoWrap);
    infoText_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    infoText_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    infoText_->setFont(Controls::fixedFont());
    infoText_->setPlainText(QString(text).replace(u"\r\n"_s, u"\n"_s));
    infoText_->setAccessibleName(u"Server information"_s);
    okButton_ = Controls::button(this, "okButton_", u"OK"_s, Twips::rect(2580, 4260, 1035, 375));
    okButton_->setDefault(true);
    connect(okButton_, &QPushButton::clicked, this, &QDialog::close);
    const QScreen *screen = parent ? parent->screen() : QGuiApplication::primaryScreen();
    if (screen)
        move(screen->geometry().center() - rect().center());
}

QString ServerInfoWindow::text() const { return infoText_->toPlainText(); }
