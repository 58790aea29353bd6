#include "finder/findwindow.h"

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
template <typename T>
T *named(T *widget, const char *name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

QLabel *caption(const QString &text, QWidget *buddy, const char *name)
{
    auto *label = named(new QLabel(text), name);
    label->setBuddy(buddy);  // the control's accessible name and its Alt key
    return label;
}
}

FindWindow::FindWindow(QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName(u"FindWindow"_s);
    setWindowTitle(u"Find and Filter"_s);

    playerSearchEdit_ = named(new QLineEdit, "playerSearchEdit_");
    playerSearchEdit_->setClearButtonEnabled(true);
    playerSearchEdit_->setToolTip(u"Show only the servers where a player's name contains this text. Capitals "
                                  "and the game's coloured letters do not count; symbols like * or [ are plain "
                                  "text"_s);
    playerSearchLabel_ = caption(u"&Player name:"_s, playerSearchEdit_, "playerSearchLabel_");

    hideEmptyCheck_ = named(new QCheckBox(u"Hide &empty servers"_s), "hideEmptyCheck_");
    hideFullCheck_ = named(new QCheckBox(u"Hide f&ull servers"_s), "hideFullCheck_");
    hideBotsCheck_ = named(new QCheckBox(u"Hide servers with only &bots"_s), "hideBotsCheck_");
    hideBotsCheck_->setToolTip(u"A server has only bots when every player on it shows ping 0"_s);

    versionBox_ = named(new QComboBox, "versionBox_");
    versionBox_->addItem(u"any"_s, QString());
    for (const QString &v : ServerFilter::kVersions)
        versionBox_->addItem(v, v);
    versionBox_->setToolTip(u"Show only servers of this game version"_s);
    versionLabel_ = caption(u"&Version:"_s, versionBox_, "versionLabel_");

    mapEdit_ = named(new QLineEdit, "mapEdit_");
    mapEdit_->setClearButtonEnabled(true);
    mapEdit_->setToolTip(u"Show only servers whose map name contains this text"_s);
    mapLabel_ = caption(u"&Map contains:"_s, mapEdit_, "mapLabel_");

    maxPingBox_ = named(new QSpinBox, "maxPingBox_");
    maxPingBox_->setRange(-1, ServerFilter::kMaxPing);
    maxPingBox_->setSpecialValueText(u"any"_s);
    maxPingBox_->setSuffix(u" ms"_s);
    maxPingBox_->setToolTip(u"Show only servers pinging at most this many milliseconds"_s);
    maxPingLabel_ = caption(u"Ping at m&ost:"_s, maxPingBox_, "maxPingLabel_");

    shownLabel_ = named(new QLabel, "shownLabel_");
    playersHintLabel_ = named(new QLabel(u"The last refresh did not ask the servers for their players:\npress "
                                         "Refresh List or Fav Refresh to search them."_s),
                              "playersHintLabel_");
    // Its room is kept while it is hidden, so that the fields never move or shrink
    // when it comes and goes.
    QSizePolicy keepRoom = playersHintLabel_->sizePolicy();
    keepRoom.setRetainSizeWhenHidden(true);
    playersHintLabel_->setSizePolicy(keepRoom);
    playersHintLabel_->hide();

    friendsButton_ = named(new QPushButton(u"&Friends..."_s), "friendsButton_");
    friendsButton_->setToolTip(u"Edit the names of your friends: rows where one plays are marked"_s);
    watchCheck_ = named(new QCheckBox(u"&While iconized, Fav Refresh every"_s), "watchCheck_");
    watchCheck_->setToolTip(u"Refresh the favorites now and then while the window is hidden, and tell when a "
                            "friend joins one of them"_s);
    watchSecondsBox_ = named(new QSpinBox, "watchSecondsBox_");
    watchSecondsBox_->setRange(FinderSettings::kMinWatchSeconds, FinderSettings::kMaxWatchSeconds);
    watchSecondsBox_->setSuffix(u" s"_s);
    watchSecondsBox_->setAccessibleName(u"Seconds between two Fav Refreshes while iconized"_s);
    closeButton_ = named(new QPushButton(u"&Close"_s), "closeButton_");

    auto *form = new QFormLayout;
    form->addRow(playerSearchLabel_, playerSearchEdit_);
    form->addRow(versionLabel_, versionBox_);
    form->addRow(mapLabel_, mapEdit_);
    form->addRow(maxPingLabel_, maxPingBox_);
    auto *watch = new QHBoxLayout;
    watch->addWidget(watchCheck_);
    watch->addWidget(watchSecondsBox_);
    watch->addStretch();
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(friendsButton_);
    buttons->addStretch();
    buttons->addWidget(closeButton_);
    auto *column = new QVBoxLayout(this);
    column->setSizeConstraint(QLayout::SetMinimumSize);  // never smaller than its fields
    column->addLayout(form);
    for (QWidget *w : std::initializer_list<QWidget *>{hideEmptyCheck_, hideFullCheck_, hideBotsCheck_, shownLabel_,
                                                       playersHintLabel_})
        column->addWidget(w);
    column->addLayout(watch);
    column->addLayout(buttons);

    const auto report = [this] {
        if (!loading_)
            emit changed();
    };
    connect(playerSearchEdit_, &QLineEdit::textChanged, this, report);
    connect(mapEdit_, &QLineEdit::textChanged, this, report);
    for (QCheckBox *check : {hideEmptyCheck_, hideFullCheck_, hideBotsCheck_, watchCheck_})
        connect(check, &QCheckBox::toggled, this, report);
    connect(versionBox_, &QComboBox::currentIndexChanged, this, report);
    connect(maxPingBox_, &QSpinBox::valueChanged, this, report);
    connect(watchSecondsBox_, &QSpinBox::valueChanged, this, report);
    connect(friendsButton_, &QPushButton::clicked, this, &FindWindow::friendsClicked);
    connect(closeButton_, &QPushButton::clicked, this, &QWidget::close);
}

void FindWindow::setSettings(const FinderSettings &settings)
{
    loading_ = true;
    playerSearchEdit_->setText(settings.filter.playerText);
    hideEmptyCheck_->setChecked(settings.filter.hideEmpty);
    hideFullCheck_->setChecked(settings.filter.hideFull);
    hideBotsCheck_->setChecked(settings.filter.hideOnlyBots);
    const int version = versionBox_->findData(settings.filter.version.trimmed());
    versionBox_->setCurrentIndex(std::max(version, 0));
    mapEdit_->setText(settings.filter.mapText);
    maxPingBox_->setValue(settings.filter.maxPing);
    watchCheck_->setChecked(settings.watchFriends);
    watchSecondsBox_->setValue(settings.watchSeconds);
    loading_ = false;
}

FinderSettings FindWindow::settings() const
{
    FinderSettings s;
    s.filter.playerText = playerSearchEdit_->text();
    s.filter.hideEmpty = hideEmptyCheck_->isChecked();
    s.filter.hideFull = hideFullCheck_->isChecked();
    s.filter.hideOnlyBots = hideBotsCheck_->isChecked();
    s.filter.version = versionBox_->currentData().toString();
    s.filter.mapText = mapEdit_->text();
    s.filter.maxPing = maxPingBox_->value();
    s.watchFriends = watchCheck_->isChecked();
    s.watchSeconds = watchSecondsBox_->value();
    return s;
}

void FindWindow::showCounts(int shown, int total, bool playersAsked)
{
    // Rows, as the main window's list count counts them: a favorite the list
    // names too is two rows. QLabel::setText sends the accessibility event
    // (NameChanged) that lets a screen reader hear the new count; the hint's text
    // never changes, so its coming is sent as a change of its name.
    shownLabel_->setText(u"Showing %1 of %2 rows"_s.arg(shown).arg(total));
    const bool hint = !playersAsked && settings().filter.needsPlayers() && total > 0;
    if (hint == playersHintLabel_->isHidden()) {
        playersHintLabel_->setVisible(hint);
        if (hint) {
            QAccessibleEvent said(playersHintLabel_, QAccessible::NameChanged);
            QAccessible::updateAccessibility(&said);
        }
    }
}

void FindWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier)
        close();  // as a dialog's Escape
    else
        QWidget::keyPressEvent(event);
}
