// The main window's side of Refresh List and Fav Refresh: it hands the request to
// the refresh session and shows what the session reports.
#include "serverlist/refreshsession.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

using namespace Qt::StringLiterals;

void MainWindow::connectSession()
{
    connect(session_, &RefreshSession::started, this, [this] {
        serverList_->clear();
        logList_->clear();
        listCountText_ = u"0"_s;
        showListCount();
        if (!friends_.isEmpty())
            showFriendsOnline(0);  // the rows are gone, and with them the friends seen
    });
    connect(session_, &RefreshSession::statusChanged, this, &MainWindow::setStatus);
    connect(session_, &RefreshSession::listCountChanged, this,
            [this](int entries) {
                listCountText_ = QString::number(entries);
                showListCount();
            });
    connect(session_, &RefreshSession::addressProbed, serverAddressEdit_, &QLineEdit::setText);
    connect(session_, &RefreshSession::logLines, this, &MainWindow::addLogLines);
    connect(session_, &RefreshSession::rowAccepted, this,
            [this](const QString &row, qint32 index) {
                const int added = serverList_->addRow(row);
                serverList_->setRowData(added, index);
                presentRow(added);
            });
    connect(session_, &RefreshSession::probingStarted, this, [this] {
        facts_.refreshProbing = true;
        showProgress(0, 1);
        applyControlStates();
    });
    connect(session_, &RefreshSession::progressChanged, this, &MainWindow::showProgress);
}

void MainWindow::addLogLines(const QStringList &lines, qsizetype selected)
{
    const int first = logList_->count();
    for (const QString &line : lines)
        logList_->addRow(line);
    if (selected < 0)
        return;
    const int row = first + static_cast<int>(selected);
    logList_->selectRow(row);
    logList_->scrollToItem(logList_->item(row));
}

void MainWindow::startRefresh() { runRefresh(false); }

void MainWindow::startFavoritesRefresh() { runRefresh(true); }

void MainWindow::runRefresh(bool favoritesOnly)
{
    RefreshRequest request;
    request.location = listLocationBox_->currentText();
    for (const Favorite &favorite : favorites_)
        request.favorites << favorite.address;
    request.favoritesOnly = favoritesOnly;
    request.pingLimitText = pingLimitEdit_->text();
    request.ttlText = ttlEdit_->text();
    request.quickPing = quickPingAction_->isChecked();
    request.fast = fastRefreshAction_->isChecked();
    request.players = playersAsked_ = playersWanted();

    session_->setEchoService(&Seams::echo(), Seams::echoReplaced());
    matcherData_.PlayerCount = 1;  // a refresh starts the matcher's players afresh
    facts_.listRefreshed = true;
    facts_.serverInfoArmed = false;
    facts_.hopsCounted = false;
    facts_.refreshProbing = false;
    Activity::Scope running(activity_, Activity::Kind::Refresh);
    session_->run(request);
    facts_.refreshProbing = false;
    markFriends();
    showListCount();
}

void MainWindow::cancelRun()
{
    if (session_->isRunning())
        session_->cancel();
    else
        hopsCancelRequested_ = true;
}

void MainWindow::selectServer()
{
    const bool cancelRequested = session_->cancelRequested() || hopsCancelRequested_;
    if (rowPickArmsServerInfo(activity_, cancelRequested)) {
        facts_.serverInfoArmed = true;
        applyControlStates();
    }
}
