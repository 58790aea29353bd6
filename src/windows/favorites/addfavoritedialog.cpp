#include "favorites/addfavoritedialog.h"

#include "favorites/favoritesdialog.h"
#include "shell/controls.h"
#include "shell/twips.h"

#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
constexpr int kTypedDescription = 50;
}

AddFavoriteDialog::AddFavoriteDialog(FavoritesDialog *owner) : QWidget(owner, Qt::Dialog), owner_(owner)
{
    setObjectName(u"AddFavoriteDialog"_s);
    setWindowTitle(u"Add Favorite"_s);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setFixedSize(Twips::size(3345, 1845));
    serverLabel_ = Controls::label(this, "serverLabel_", u"Server (IP:Port)"_s, Twips::rect(120, 0, 1215, 255));
    descriptionLabel_ = Controls::label(this, "descriptionLabel_", u"Server Description"_s, Twips::rect(120, 600, 1455, 255));
    serverEdit_ = Controls::textBox(this, "serverEdit_", Twips::rect(120, 240, 3135, 375), serverLabel_);
    descriptionEdit_ = Controls::textBox(this, "descriptionEdit_", Twips::rect(120, 840, 3135, 375), descriptionLabel_);
    descriptionEdit_->setMaxLength(kTypedDescription);
    // The limit is for typing: a longer description from the file stays whole, and
    // typing cannot make it longer (every deletion lowers the limit towards 50).
    connect(descriptionEdit_, &QLineEdit::textEdited, this, [this](const QString &text) {
        descriptionEdit_->setMaxLength(std::max<int>(kTypedDescription, text.size()));
    });
    addButton_ = Controls::button(this, "addButton_", u"Add"_s, Twips::rect(120, 1320, 975, 495));
    cancelButton_ = Controls::button(this, "cancelButton_", u"Cancel"_s, Twips::rect(2280, 1320, 975, 495));
    setTabOrder(serverEdit_, descriptionEdit_);
    setTabOrder(descriptionEdit_, addButton_);
    setTabOrder(addButton_, cancelButton_);
    connect(addButton_, &QPushButton::clicked, this, &AddFavoriteDialog::addAndClose);
    connect(cancelButton_, &QPushButton::clicked, this, &QWidget::close);
    move(owner->geometry().center() - rect().center());
}

AddFavoriteDialog::AddFavoriteDialog(FavoritesDialog *owner, const Favorite &original)
    : AddFavoriteDialog(owner)
{
    original_ = original;
    addButton_->setText(u"Save"_s);
    serverEdit_->setText(original.address);
    setDescription(original.description);
    setWindowTitle(u"Modify Favorite"_s);
}

void AddFavoriteDialog::setDescription(const QString &text)
{
    descriptionEdit_->setMaxLength(std::max<int>(kTypedDescription, text.size()));
    descriptionEdit_->setText(text);
}

void AddFavoriteDialog::addAndClose()
{
    answered_ = true;
    owner_->addEntry({serverEdit_->text(), descriptionEdit_->text()});
    close();
}

void AddFavoriteDialog::closeEvent(QCloseEvent *event)
{
    if (!answered_) {
        answered_ = true;
        if (original_)
            owner_->addEntry(*original_);
    }
    QWidget::closeEvent(event);
}
