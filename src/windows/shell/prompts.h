#pragma once
#include "shell/prompter.h"

class QWidget;

// The real dialogs, parented to the active window.
class DialogPrompter : public Prompter {
public:
    void message(const QString &text, const QString &title, Icon icon) override;
    bool question(const QString &text, const QString &title) override;
    QString openFileName(const QString &title, const QString &filter) override;
    QString saveFileName(const QString &title, const QString &filter) override;
    QString input(const QString &prompt, const QString &title, const QString &defaultText) override;
};
