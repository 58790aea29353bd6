#include "finder/friendsdialog.h"

#include "favorites/favfile.h"
#include "finder/friends.h"
#include "shell/prompter.h"
#include "shell/seams.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

FriendsDialog::FriendsDialog(const QStringList &friends, bool replaceAsked, QWidget *parent)
    : QWidget(parent, Qt::Window), replaceAsked_(replaceAsked)
{
    setObjectName(u"FriendsDialog"_s);
    setWindowTitle(u"Friends"_s);
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    namesEdit_ = new QPlainTextEdit(this);
    namesEdit_->setObjectName(u"namesEdit_"_s);
    namesEdit_->setPlainText(friends.join(u'\n'));
    namesEdit_->setTabChangesFocus(true);
    namesEdit_->setToolTip(u"A row is marked when a player's name contains one of these names"_s);
    namesLabel_ = new QLabel(u"&Names of your friends, one a line:"_s, this);
    namesLabel_->setObjectName(u"namesLabel_"_s);
    namesLabel_->setBuddy(namesEdit_);
    namesEdit_->setAccessibleName(u"Names of your friends, one a line"_s);
    saveButton_ = new QPushButton(u"&Save"_s, this);
    saveButton_->setObjectName(u"saveButton_"_s);
    saveButton_->setDefault(true);
    cancelButton_ = new QPushButton(u"&Cancel"_s, this);
    cancelButton_->setObjectName(u"cancelButton_"_s);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(saveButton_);
    buttons->addWidget(cancelButton_);
    auto *column = new QVBoxLayout(this);
    column->addWidget(namesLabel_);
    column->addWidget(namesEdit_);
    column->addLayout(buttons);
    connect(saveButton_, &QPushButton::clicked, this, &FriendsDialog::save);
    connect(cancelButton_, &QPushButton::clicked, this, &QWidget::close);
}

void FriendsDialog::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier)
        close();  // Cancel
    else
        QWidget::keyPressEvent(event);
}

void FriendsDialog::save()
{
    Prompter &prompts = Seams::prompts();
    if (replaceAsked_
        && !prompts.question(u"The friends file %1 could not be read when Pulsebox started. Replace it with "
                             "these names?"_s.arg(Friends::kFileName),
                             AppTitle))
        return;
    const QByteArray bytes = Friends::serialize(namesEdit_->toPlainText().split(u'\n'));
    if (bytes.size() > Friends::kMaxBytes) {
        prompts.message(u"These names take more than %1 bytes; the friends file was left as it was."_s
                            .arg(Friends::kMaxBytes),
                        AppTitle, Prompter::Icon::Warning);
        return;
    }
    QString error;
    if (!WriteFileAtomically(Friends::kFileName, bytes, &error)) {
        prompts.message(u"Could not save the friends to %1:\n%2\n\nThe friends file was left as it was."_s
                            .arg(Friends::kFileName, error),
                        AppTitle, Prompter::Icon::Warning);
        return;
    }
    emit friendsSaved(Friends::parse(bytes));
    close();
}
