// The main window's side of Find and Filter, the friends list and the friends
// watch. None of it shows until the player asks for it: without friends and with
// every filter off, rows, counts and controls are exactly as designed.
#include "favorites/favfile.h"
#include "finder/findwindow.h"
#include "finder/friendsdialog.h"
#include "finder/playernames.h"
#include "serverlist/refreshsession.h"
#include "shell/boundedfile.h"
#include "shell/controls.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/prompter.h"
#include "shell/seams.h"
#include "shell/ticker.h"
#include "shell/trayicon.h"
#include "shell/twips.h"

#include <QAction>
#include <QFileInfo>
#include <QLabel>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {
// Set on a row where a friend plays.
constexpr int kFriendHereRole = Qt::UserRole + 1;

// Marks the rows where a friend plays with a tint and a bar at the left edge,
// inside the row's margin: the text stays where the column captions expect it and
// the rows keep their height. Other rows are painted as before.
class FriendMarkDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        if (!index.data(kFriendHereRole).toBool())
            return QStyledItemDelegate::paint(painter, option, index);
        const QColor mark(0x20, 0xA0, 0x40);
        QColor tint = mark;
        tint.setAlpha(48);
        painter->fillRect(option.rect, tint);
        QStyledItemDelegate::paint(painter, option, index);
        painter->fillRect(QRect(option.rect.topLeft(), QSize(2, option.rect.height())), mark);
    }
};

// Reads a file of the finder's; a missing file is no problem, any other failure is
// said once at start-up and leaves the file as it is.
std::optional<QByteArray> readFinderFile(const QString &name, qint64 maxBytes)
{
    if (!QFileInfo::exists(name))
        return QByteArray();
    const BoundedFile file = BoundedFile::read(name, maxBytes);
    if (file.status == BoundedFile::Status::Read)
        return file.bytes;
    Seams::prompts().message(u"Could not read %1: %2.\n\nIt was left as it is."_s.arg(name, file.problem), AppTitle,
                             Prompter::Icon::Warning);
    return std::nullopt;
}
}

void MainWindow::buildFinder(QWidget *client)
{
    // Beside the time-to-live box, where the design leaves the row empty.
    friendsOnlineLabel_ = Controls::label(client, "friendsOnlineLabel_", QString(),
                                          Twips::rect(4440, 540, 3000, 255));
    friendsOnlineLabel_->hide();
    serverList_->setItemDelegate(new FriendMarkDelegate(serverList_));
    listCountLater_ = new QTimer(this);
    listCountLater_->setSingleShot(true);
    connect(listCountLater_, &QTimer::timeout, this, &MainWindow::showListCount);
    friendsWatchTicker_ = new Ticker(this);
    friendsWatchTicker_->setObjectName(u"friendsWatchTicker_"_s);
    findAction_->setShortcut(QKeySequence::Find);
    connect(findAction_, &QAction::triggered, this, &MainWindow::showFinder);
    connect(friendsWatchTicker_, &Ticker::timeout, this, &MainWindow::watchTick);
}

void MainWindow::loadFinder()
{
    if (const auto bytes = readFinderFile(FinderSettings::kFileName, FinderSettings::kMaxBytes))
        finder_ = FinderSettings::parse(*bytes);
    const auto friends = readFinderFile(Friends::kFileName, Friends::kMaxBytes);
    friendsUnread_ = !friends;
    setFriends(friends ? Friends::parse(*friends) : QStringList());
}

void MainWindow::showFinder()
{
    if (!findWindow_) {
        findWindow_ = new FindWindow(this);
        findWindow_->setSettings(finder_);
        connect(findWindow_, &FindWindow::changed, this, &MainWindow::finderChanged);
        connect(findWindow_, &FindWindow::friendsClicked, this, &MainWindow::editFriends);
    }
    findWindow_->show();
    findWindow_->raise();
    findWindow_->activateWindow();
    showListCount();
}

void MainWindow::hideFinderWindows()
{
    finderWindowsHidden_.clear();
    if (!findWindow_)
        return;
    QList<QWidget *> windows{findWindow_};
    for (FriendsDialog *editor : findWindow_->findChildren<FriendsDialog *>())
        windows << editor;
    for (QWidget *window : std::as_const(windows)) {
        if (window->isVisible()) {
            finderWindowsHidden_ << window;
            window->hide();
        }
    }
}

void MainWindow::showFinderWindows()
{
    for (const QPointer<QWidget> &window : std::as_const(finderWindowsHidden_)) {
        if (window)
            window->show();
    }
    finderWindowsHidden_.clear();
}

void MainWindow::finderChanged()
{
    const FinderSettings shown = findWindow_->settings();
    const bool save = shown.serialize() != finder_.serialize();  // the search text is not kept
    finder_ = shown;
    hideRows();
    updateWatch();
    if (!save)
        return;
    QString error;
    if (!WriteFileAtomically(FinderSettings::kFileName, finder_.serialize(), &error) && !finderSaveFailed_) {
        finderSaveFailed_ = true;  // said once, not at every key press
        Seams::prompts().message(u"Could not save the filters to %1:\n%2"_s.arg(FinderSettings::kFileName, error),
                                 AppTitle, Prompter::Icon::Warning);
    }
}

void MainWindow::editFriends()
{
    auto *editor = new FriendsDialog(friends_, friendsUnread_, findWindow_);  // opened from the Find window
    connect(editor, &FriendsDialog::friendsSaved, this, [this](const QStringList &friends) {
        friendsUnread_ = false;
        setFriends(friends);
    });
    editor->show();
}

void MainWindow::setFriends(const QStringList &friends)
{
    friends_ = friends;
    markFriends();
    updateWatch();
}

bool MainWindow::playersWanted() const
{
    return !friends_.isEmpty() || finder_.filter.needsPlayers() || (findWindow_ && findWindow_->isVisible());
}

void MainWindow::hideRows()
{
    const bool on = finder_.filter.isOn();
    foldedSearch_ = PlayerNames::folded(finder_.filter.playerText);
    for (int row = 0; row < serverList_->count(); ++row) {
        QListWidgetItem *item = serverList_->item(row);
        const bool hidden = on && !finder_.filter.accepts(session_->facts(serverList_->rowData(row)), foldedSearch_);
        if (item->isHidden() != hidden)
            item->setHidden(hidden);
    }
    showListCount();
}

void MainWindow::presentRow(int row)
{
    QListWidgetItem *item = serverList_->item(row);
    const ServerFacts &facts = session_->facts(serverList_->rowData(row));
    if (!friends_.isEmpty())
        markFriendsOf(item, facts);
    if (finder_.filter.isOn()) {
        item->setHidden(!finder_.filter.accepts(facts, foldedSearch_));
        // "Shown of total" grows with the rows, as the plain count does: counted once
        // the rows that came together are in, not once a row (a count reads every row).
        listCountLater_->start();
    }
}

void MainWindow::markFriendsOf(QListWidgetItem *item, const ServerFacts &facts)
{
    const QStringList here = PlayerNames::friendsAmong(facts.playerNames, friends_);
    const QString note = here.isEmpty() ? QString() : u"Friends here: "_s + here.join(u", "_s);
    item->setData(kFriendHereRole, here.isEmpty() ? QVariant() : QVariant(true));
    item->setToolTip(note);
    item->setData(Qt::AccessibleDescriptionRole, note);
}

void MainWindow::markFriends()
{
    QList<Friends::Sighting> seen;
    for (int row = 0; row < serverList_->count(); ++row) {
        QListWidgetItem *item = serverList_->item(row);
        if (friends_.isEmpty()) {
            if (item->toolTip().isEmpty())
                continue;  // never marked: the row stays as designed
            item->setData(kFriendHereRole, QVariant());
            item->setToolTip(QString());
            item->setData(Qt::AccessibleDescriptionRole, QVariant());
        } else {
            markFriendsOf(item, session_->facts(serverList_->rowData(row)));
        }
    }
    const ServerTable &table = session_->table();
    for (qint32 index = 1; index <= table.ServerCount; ++index) {
        const ServerFacts &facts = session_->facts(index);
        for (const QString &player : PlayerNames::friendsAmong(facts.playerNames, friends_))
            seen.append({player, facts.target, facts.name});
    }
    seen = Friends::distinct(seen);
    showFriendsOnline(static_cast<int>(seen.size()));
    if (watchRun_ && tray_ && !isVisible()) {
        QStringList lines;
        for (const Friends::Sighting &s : Friends::joined(sightings_, seen))
            lines << Friends::joinedText(s);
        if (!lines.isEmpty())
            tray_->notify(AppTitle, lines.join(u'\n'));
    }
    sightings_ = seen;
}

void MainWindow::showFriendsOnline(int count)
{
    friendsOnlineLabel_->setVisible(!friends_.isEmpty());
    // QLabel::setText tells screen readers of the new name itself (NameChanged).
    friendsOnlineLabel_->setText(count == 1 ? u"1 friend online"_s : u"%1 friends online"_s.arg(count));
}

// The list count shows the web list's size as designed; while a filter or the
// search hides rows it shows the rows shown of the rows listed ("12 of 340").
void MainWindow::showListCount()
{
    int shown = 0;
    for (int row = 0; row < serverList_->count(); ++row)
        shown += serverList_->item(row)->isHidden() ? 0 : 1;
    listCountLabel_->setText(finder_.filter.isOn() ? u"%1 of %2"_s.arg(shown).arg(serverList_->count())
                                                   : listCountText_);
    if (findWindow_)
        findWindow_->showCounts(shown, serverList_->count(), playersAsked_);
}

// The watch runs while the window is iconized, the player asked for it and there
// are friends to watch for.
void MainWindow::updateWatch()
{
    const bool on = finder_.watchFriends && !friends_.isEmpty() && tray_ && tray_->isShown() && !isVisible();
    const int interval = on ? std::max(finder_.watchSeconds, FinderSettings::kMinWatchSeconds) * 1000 : 0;
    if (friendsWatchTicker_->interval() != interval)
        friendsWatchTicker_->setInterval(interval);
}

void MainWindow::watchTick()
{
    if (!activity_.isIdle() || isVisible())
        return;
    watchRun_ = true;
    runRefresh(true);
    watchRun_ = false;
}
