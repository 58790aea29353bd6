#include "launch/frmlaunch.h"

#include "launch/gamelauncher.h"
#include "launch/launchbar.h"
#include "probes/address.h"
#include "probes/dssocket.h"
#include "probes/frmsrvpop.h"
#include "probes/gamequery.h"
#include "probes/queryrun.h"
#include "shell/controls.h"
#include "shell/mainwindow.h"
#include "shell/controlstates.h"
#include "shell/iconize.h"
#include "shell/prompts.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/twips.h"
#include "shell/vblist.h"

#include <QFrame>
#include <QMenuBar>
#include <QMenu>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>

using namespace Qt::StringLiterals;
using namespace LaunchBar;

namespace {
QFont buttonFont()
{
    QFont arial(u"Arial"_s);
    arial.setPointSizeF(6.75);
    return arial;
}
}

frmLaunch::frmLaunch(MainWindow *owner)
    : QWidget(owner, Qt::Tool | Qt::FramelessWindowHint), owner_(owner)
{
    setObjectName(u"frmLaunch"_s);
    setWindowTitle(AppTitle);
    Controls::applyDesignLook(this);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(Twips::size(kBarWidth, kBarHeight));

    Frame1 = new QFrame(this);
    Frame1->setObjectName(u"Frame1"_s);
    Frame1->setFrameStyle(QFrame::Panel | QFrame::Raised);
    Frame1->setGeometry(Twips::rect(0, 0, kBarWidth, kFrameHeight));
    column_ = new QScrollArea(Frame1);
    column_->setFrameShape(QFrame::NoFrame);
    column_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column_->setGeometry(Frame1->rect());
    buttons_ = new QWidget;
    buttons_->setObjectName(u"buttons"_s);
    buttons_->resize(Frame1->size());
    column_->setWidget(buttons_);
    column_->viewport()->setAutoFillBackground(false);
    buttons_->setAutoFillBackground(false);
    cmdLaunch.append(newButton(0));

    Command1 = new QPushButton(u"x"_s, this);
    Command1->setObjectName(u"Command1"_s);
    Command1->setGeometry(Twips::rect(1680, 0, 255, 255));
    Command1->setFont(buttonFont());
    Command1->setToolTip(u"Close"_s);
    Command1->setAccessibleName(u"Close"_s);
    Text2 = new HiddenText(this);
    Text2->setObjectName(u"Text2"_s);
    Text2->Text = u"Text1"_s;
    Text2->hide();
    Timer1 = new Ticker(this);
    Timer1->setObjectName(u"Timer1"_s);
    dsSocket1 = new DsSocket(DsSocket::Kind::Datagram, this);
    dsSocket1->setObjectName(u"dsSocket1"_s);

    mnupopup = new QMenu(u"popup"_s, this);
    mnupopup->setObjectName(u"mnupopup"_s);
    mnuLaunch = mnupopup->addAction(u"&Launch"_s);
    mnuLaunch->setObjectName(u"mnuLaunch"_s);
    mnuChat = mnupopup->addAction(u"&Chat"_s);
    mnuChat->setObjectName(u"mnuChat"_s);

    connect(Command1, &QPushButton::clicked, this, &frmLaunch::Command1_Click);
    connect(mnuLaunch, &QAction::triggered, this, &frmLaunch::mnuLaunch_Click);
    connect(mnuChat, &QAction::triggered, this, &frmLaunch::mnuChat_Click);
    connect(Timer1, &Ticker::timeout, this, [this] { ++launchTicks; });
    connect(dsSocket1, &DsSocket::SendReady, this, &frmLaunch::dsSocket1_SendReady);
    connect(dsSocket1, &DsSocket::DataArrival, this, &frmLaunch::dsSocket1_DataArrival);
    Form_Load();
}

frmLaunch::~frmLaunch() = default;

QPushButton *frmLaunch::newButton(int index)
{
    // No fixed accessible name: a caption that the server's name replaces is read as it stands.
    auto *b = new QPushButton(buttons_);
    b->setObjectName(u"cmdLaunch"_s);
    b->setProperty("Index", index);
    b->setGeometry(Twips::rect(kButtonLeft, buttonTop(index), kButtonWidth, kButtonHeight));
    b->setFont(buttonFont());
    b->installEventFilter(this);
    connect(b, &QPushButton::clicked, this, [this, index] { cmdLaunch_Click(index); });
    return b;
}

void frmLaunch::Form_Load()
{
    const int n = static_cast<int>(owner_->favorites().size());
    std::vector<ServerRec> &servers = Mod().LaunchServers;
    if (n >= 1)
        servers.resize(static_cast<size_t>(n) + 1);
    for (int i = 0; i < n; ++i) {
        if (i > 0)
            cmdLaunch.append(newButton(i));
        const Entry entry = entryOf(owner_->favorites()[i].address, owner_->favorites()[i].description);
        servers[static_cast<size_t>(i)] = entry.server;
        cmdLaunch[i]->setText(entry.caption);
        cmdLaunch[i]->setToolTip(entry.caption);
        cmdLaunch[i]->setVisible(true);
    }
    if (n == 0)
        cmdLaunch[0]->hide();
    fitToWorkArea(n);
}

// Up to the work area's height the bar grows by the buttons it holds; beyond it,
// the bar fills that height and its buttons scroll.
void frmLaunch::fitToWorkArea(int favorites)
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
    Frame1->setGeometry(0, 0, width, height - border);
    buttons_->resize(Twips::px(kBarWidth), Twips::px(frameHeight(favorites)));
    column_->setGeometry(Frame1->rect());
    column_->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    Command1->move(width - Twips::px(255), 0);
    Command1->raise();
}

bool frmLaunch::mainWindowBusy() const
{
    return Mod().QueryBusy || runHoldsClose(owner_->activity());
}

void frmLaunch::cmdLaunch_Click(int index)
{
    if (launchBusy || mainWindowBusy())
        return;
    launchBusy = true;
    launchIndex = index;
    const ServerRec server = Mod().LaunchServers[static_cast<size_t>(index)];
    QPointer<frmLaunch> self(this);
    // The main window shares QueryMode and LastReply: nothing there may start a
    // query or a run until this one ends. Its controls and menus are switched
    // off rather than the window itself, which would switch off this bar too.
    QPointer<QWidget> controls = owner_->centralWidget();
    QPointer<QWidget> menus = owner_->menuBar();
    for (QWidget *w : {controls.data(), menus.data()})
        if (w)
            w->setEnabled(false);
    const QString reply = RunGameQuery(*dsSocket1, *Timer1, launchTicks, 5, AddressToDotted(server.Address),
                                       QString::number(server.Port), GameQuery::StatusMode);
    for (QWidget *w : {controls.data(), menus.data()})
        if (w)
            w->setEnabled(true);
    if (!self)
        return;
    launchBusy = false;
    if (closeAfterQuery_) {
        close();
        return;
    }
    if (reply.isEmpty())
        return;
    const auto view = statusView(Text2->Text);
    if (!view)
        return;  // too short to be a status reply
    QPushButton *button = cmdLaunch[index];
    for (const QString &name : view->hostNames) {
        if (captionIsAddress(button->text())) {
            Mod().LaunchServers[static_cast<size_t>(index)].HostName = ServerRow::pad(name, 50);
            button->setText(name);
            button->setToolTip(name);
        }
    }
    if (!popup) {
        popup = new frmsrvpop(this);
        popup->setAttribute(Qt::WA_QuitOnClose, false);
    }
    popup->setWindowTitle(button->text());
    popup->Text1->setPlainText(QString(view->text).replace(u"\r\n"_s, u"\n"_s));
    placePopup(index);
    popup->show();
    placePopup(index);  // again with the frame the window manager gave it
}

void frmLaunch::placePopup(int index)
{
    const int buttonTop = cmdLaunch[index]->mapTo(this, QPoint(0, 0)).y();
    const QPoint at = PopupTopLeft(Mod().TaskbarEdge, pos(), buttonTop, popup->frameGeometry().size(),
                                   GetWorkArea().Bottom, popup->pos());
    popup->move(at);
}

void frmLaunch::cmdLaunch_MouseDown(int index, Qt::MouseButton button, QPoint globalPosition)
{
    if (button != Qt::RightButton)
        return;
    popupIndex = index;
    mnupopup->popup(globalPosition);
}

bool frmLaunch::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        const int index = cmdLaunch.indexOf(qobject_cast<QPushButton *>(watched));
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (index >= 0 && mouse->button() == Qt::RightButton) {
            cmdLaunch_MouseDown(index, mouse->button(), mouse->globalPosition().toPoint());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void frmLaunch::mnuLaunch_Click()
{
    const ServerRec &server = Mod().LaunchServers[static_cast<size_t>(popupIndex)];
    const QString target = AddressToDotted(server.Address) + u':' + QString::number(server.Port);
    GameLauncher().launch(target, u"Launch to Server?\n"_s + server.HostName);
}

void frmLaunch::mnuChat_Click()
{
    Seams::prompts().message(u"Development not completed."_s, AppTitle);
}

// During a query the bar only hides: the query's wait still uses its socket
// and timer, and the bar closes when the wait ends.
void frmLaunch::Command1_Click()
{
    if (popup)
        popup->close();
    if (launchBusy) {
        closeAfterQuery_ = true;
        hide();
        return;
    }
    close();
}

void frmLaunch::dsSocket1_SendReady() { SendSelectedQuery(*dsSocket1); }

void frmLaunch::dsSocket1_DataArrival(const QString &data)
{
    Mod().LastReply = data;
    Text2->Text = data;
}
