#include "launch/launcherbar.h"

#include "launch/launchbar.h"
#include "probes/address.h"
#include "probes/dssocket.h"
#include "probes/gamequery.h"
#include "probes/statuspopup.h"
#include "serverlist/refreshdecisions.h"
#include "shell/activity.h"
#include "shell/controls.h"
#include "shell/iconize.h"
#include "shell/prompts.h"
#include "shell/seams.h"
#include "shell/ticker.h"
#include "shell/twips.h"
#include "shell/waiting.h"

#include <QFrame>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace LaunchBar;

namespace {
constexpr int kQueryTickLimit = 5;

QFont buttonFont()
{
    QFont arial(u"Arial"_s);
    arial.setPointSizeF(6.75);
    return arial;
}
}

LauncherBar::LauncherBar(const QList<Favorite> &favorites, Activity &activity, LaunchGame launchGame, QWidget *owner)
    : QWidget(owner, Qt::Tool | Qt::FramelessWindowHint), activity_(activity), launchGame_(std::move(launchGame))
{
    setObjectName(u"LauncherBar"_s);
    setWindowTitle(AppTitle);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(Twips::size(kBarWidth, kBarHeight));

    frame_ = new QFrame(this);
    frame_->setObjectName(u"frame_"_s);
    frame_->setFrameStyle(QFrame::Panel | QFrame::Raised);
    frame_->setGeometry(Twips::rect(0, 0, kBarWidth, kFrameHeight));
    column_ = new QScrollArea(frame_);
    column_->setObjectName(u"column_"_s);
    column_->setFrameShape(QFrame::NoFrame);
    column_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column_->setGeometry(frame_->rect());
    buttons_ = new QWidget;
    buttons_->setObjectName(u"buttons_"_s);
    buttons_->resize(frame_->size());
    column_->setWidget(buttons_);
    column_->viewport()->setAutoFillBackground(false);
    buttons_->setAutoFillBackground(false);
    launchButtons_.append(newButton(0));

    closeButton_ = new QPushButton(u"x"_s, this);
    closeButton_->setObjectName(u"closeButton_"_s);
    closeButton_->setGeometry(Twips::rect(1680, 0, 255, 255));
    closeButton_->setFont(buttonFont());
    closeButton_->setToolTip(u"Close"_s);
    closeButton_->setAccessibleName(u"Close"_s);
    queryTicker_ = new Ticker(this);
    queryTicker_->setObjectName(u"queryTicker_"_s);
    querySocket_ = new DsSocket(DsSocket::Kind::Datagram, this);
    querySocket_->setObjectName(u"querySocket_"_s);

    serverMenu_ = new QMenu(u"popup"_s, this);
    serverMenu_->setObjectName(u"serverMenu_"_s);
    launchAction_ = serverMenu_->addAction(u"&Launch"_s);
    launchAction_->setObjectName(u"launchAction_"_s);
    chatAction_ = serverMenu_->addAction(u"&Chat"_s);
    chatAction_->setObjectName(u"chatAction_"_s);

    connect(closeButton_, &QPushButton::clicked, this, &LauncherBar::closeBar);
    connect(launchAction_, &QAction::triggered, this, &LauncherBar::launchChosen);
    connect(chatAction_, &QAction::triggered, this, &LauncherBar::showChat);
    connect(queryTicker_, &Ticker::timeout, this, [this] { ++launchTicks_; });
    connect(querySocket_, &DsSocket::SendReady, this,
            [this] { querySocket_->Send(GameQuery::datagram(GameQuery::StatusMode)); });
    connect(querySocket_, &DsSocket::DataArrival, this, [this](const QString &data) { reply_ = data; });

    const auto n = static_cast<int>(favorites.size());
    if (n >= 1)
        servers_.resize(static_cast<size_t>(n) + 1);
    for (int i = 0; i < n; ++i) {
        if (i > 0)
            launchButtons_.append(newButton(i));
        const Entry entry = entryOf(favorites[i].address, favorites[i].description);
        servers_[static_cast<size_t>(i)] = entry.server;
        launchButtons_[i]->setText(entry.caption);
        launchButtons_[i]->setToolTip(entry.caption);
        launchButtons_[i]->setVisible(true);
    }
    if (n == 0)
        launchButtons_[0]->hide();
    fitToWorkArea(n);
}

LauncherBar::~LauncherBar() = default;

QPushButton *LauncherBar::newButton(int index)
{
    // No fixed accessible name: a caption that the server's name replaces is read as it stands.
    auto *b = new QPushButton(buttons_);
    b->setObjectName(u"launchButtons_"_s);
    b->setProperty("Index", index);
    b->setGeometry(Twips::rect(kButtonLeft, buttonTop(index), kButtonWidth, kButtonHeight));
    b->setFont(buttonFont());
    b->installEventFilter(this);
    connect(b, &QPushButton::clicked, this, [this, index] { queryStatus(index); });
    return b;
}

// Up to the work area's height the bar grows by the buttons it holds; beyond it,
// the bar fills that height and its buttons scroll.
void LauncherBar::fitToWorkArea(int favorites)
{
    const int designed = Twips::px(barHeight(favorites));
    const int border = Twips::px(kBarHeight) - Twips::px(kFrameHeight);
    const ScreenRect work = GetWorkArea();
    const int room = work.Bottom - work.Top;
    const bool scrolls = room > 0 && designed > room;
    const int height = scrolls ? room : designed;
    const int extra = scrolls ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
    const int width = Twips::px(kBarWidth) + extra;
    setFixedSize(width, height);
    frame_->setGeometry(0, 0, width, height - border);
    buttons_->resize(Twips::px(kBarWidth), Twips::px(frameHeight(favorites)));
    column_->setGeometry(frame_->rect());
    column_->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    closeButton_->move(width - Twips::px(255), 0);
    closeButton_->raise();
}

void LauncherBar::queryStatus(int index)
{
    if (launchBusy_)
        return;
    launchBusy_ = true;
    launchIndex_ = index;
    startWhenFree();
}

// The owner's query waits inside its own handler, which this one may have
// interrupted: waiting for it here would never end. So the bar leaves its query
// pending and sends it from the event queue once the owner's has ended.
void LauncherBar::startWhenFree()
{
    if (!activity_.isRunning(Activity::Kind::ServerQuery)) {
        waitsForOwner_ = false;
        runQuery();
        return;
    }
    waitsForOwner_ = true;
    ownerWait_ = connect(&activity_, &Activity::changed, this, [this] {
        if (activity_.isRunning(Activity::Kind::ServerQuery))
            return;
        disconnect(ownerWait_);
        QTimer::singleShot(0, this, &LauncherBar::startWhenFree);
    });
}

void LauncherBar::runQuery()
{
    const int index = launchIndex_;
    const ServerRec server = servers_[static_cast<size_t>(index)];
    QPointer<LauncherBar> self(this);
    QPointer<Activity> activity(&activity_);
    activity->begin(Activity::Kind::LauncherQuery);

    if (querySocket_->State() != DsSocket::StateOpen)
        querySocket_->SetAction(DsSocket::OpenAction);
    querySocket_->RemoteHost.clear();
    querySocket_->RemoteDotted = AddressToDotted(server.Address);
    querySocket_->RemotePort = Probe::QueryPort(QString::number(server.Port));
    reply_.clear();
    launchTicks_ = 0;
    querySocket_->Connect();
    queryTicker_->setInterval(1000);
    waitUntil([self, this] { return !self || !reply_.isEmpty() || launchTicks_ >= kQueryTickLimit; });

    if (activity)
        activity->end(Activity::Kind::LauncherQuery);
    if (!self)
        return;
    queryTicker_->setInterval(0);
    launchBusy_ = false;
    if (closeAfterQuery_) {
        close();
        return;
    }
    if (!reply_.isEmpty())
        showStatus(index, reply_);
}

void LauncherBar::showStatus(int index, const QString &reply)
{
    const auto view = statusView(reply);
    if (!view)
        return;  // too short to be a status reply
    QPushButton *button = launchButtons_[index];
    for (const QString &name : view->hostNames) {
        if (captionIsAddress(button->text())) {
            servers_[static_cast<size_t>(index)].HostName = ServerRow::pad(name, 50);
            button->setText(name);
            button->setToolTip(name);
        }
    }
    if (!popup_) {
        popup_ = new StatusPopup(this);
        popup_->setAttribute(Qt::WA_QuitOnClose, false);
    }
    popup_->setStatus(button->text(), QString(view->text).replace(u"\r\n"_s, u"\n"_s));
    placePopup(index);
    popup_->show();
    placePopup(index);  // again with the frame the window manager gave it
}

void LauncherBar::placePopup(int index)
{
    const int buttonTop = launchButtons_[index]->mapTo(this, QPoint(0, 0)).y();
    const QPoint at = PopupTopLeft(taskbarEdge_, pos(), buttonTop, popup_->frameGeometry().size(),
                                   GetWorkArea().Bottom, popup_->pos());
    popup_->move(at);
}

void LauncherBar::showServerMenu(int index, QPoint globalPosition)
{
    menuIndex_ = index;
    serverMenu_->popup(globalPosition);
}

bool LauncherBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        const int index = launchButtons_.indexOf(qobject_cast<QPushButton *>(watched));
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (index >= 0 && mouse->button() == Qt::RightButton) {
            showServerMenu(index, mouse->globalPosition().toPoint());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void LauncherBar::launchChosen()
{
    const ServerRec &server = servers_[static_cast<size_t>(menuIndex_)];
    const QString target = AddressToDotted(server.Address) + u':' + QString::number(server.Port);
    if (launchGame_)
        launchGame_(target, u"Launch to Server?\n"_s + server.HostName);
}

void LauncherBar::showChat()
{
    Seams::prompts().message(u"Development not completed."_s, AppTitle);
}

// While a query waits the bar only hides: the wait still uses its socket and
// timer, and the bar closes when the wait ends. A query still waiting for the
// owner's has not started and simply goes with the bar.
void LauncherBar::closeBar()
{
    if (popup_)
        popup_->close();
    if (launchBusy_ && !waitsForOwner_) {
        closeAfterQuery_ = true;
        hide();
        return;
    }
    close();
}
