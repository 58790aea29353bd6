#include "shell/prompts.h"

#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>

namespace {
QMessageBox::Icon toQt(Prompter::Icon icon)
{
    switch (icon) {
    case Prompter::Icon::Information: return QMessageBox::Information;
    case Prompter::Icon::Question: return QMessageBox::Question;
    case Prompter::Icon::Warning: return QMessageBox::Warning;
    case Prompter::Icon::Critical: return QMessageBox::Critical;
    case Prompter::Icon::None: break;
    }
    return QMessageBox::NoIcon;
}
}

void DialogPrompter::message(const QString &text, const QString &title, Icon icon)
{
    QMessageBox box(toQt(icon), title, text, QMessageBox::Ok, QApplication::activeWindow());
    box.exec();
}

bool DialogPrompter::question(const QString &text, const QString &title)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No,
                    QApplication::activeWindow());
    return box.exec() == QMessageBox::Yes;
}

QString DialogPrompter::openFileName(const QString &title, const QString &filter)
{
    // Qt's own dialog matches the filter's patterns regardless of case, so a
    // friend's "list.pbx" is offered under "*.Pbx" on a case-sensitive file system.
    return QFileDialog::getOpenFileName(QApplication::activeWindow(), title, QString(), filter, nullptr,
                                        QFileDialog::DontUseNativeDialog);
}

QString DialogPrompter::saveFileName(const QString &title, const QString &filter)
{
    // The program asks its own "File Exists, Replace?" after the dialog.
    return QFileDialog::getSaveFileName(QApplication::activeWindow(), title, QString(), filter, nullptr,
                                        QFileDialog::DontUseNativeDialog | QFileDialog::DontConfirmOverwrite);
}

QString DialogPrompter::input(const QString &prompt, const QString &title, const QString &defaultText)
{
    return QInputDialog::getText(QApplication::activeWindow(), title, prompt, QLineEdit::Normal, defaultText);
}
