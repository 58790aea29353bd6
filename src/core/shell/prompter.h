#pragma once
#include <QString>

// Every message box, question and file dialog of the program goes through here,
// so that tests answer them by script and nothing modal ever blocks a test.
class Prompter {
public:
    enum class Icon { None, Information, Question, Warning, Critical };
    virtual ~Prompter() = default;
    // A message with one OK button.
    virtual void message(const QString &text, const QString &title, Icon icon = Icon::None) = 0;
    // A question with Yes and No; true only for Yes.
    virtual bool question(const QString &text, const QString &title) = 0;
    // File names; empty when the user cancels.
    virtual QString openFileName(const QString &title, const QString &filter) = 0;
    virtual QString saveFileName(const QString &title, const QString &filter) = 0;
    // A line of text typed by the user; empty when the box is cancelled.
    virtual QString input(const QString &prompt, const QString &title, const QString &defaultText) = 0;
};
