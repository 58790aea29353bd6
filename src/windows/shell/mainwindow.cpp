#include "shell/mainwindow.h"

#include "probes/gamequerychannel.h"
#include "serverlist/refreshsession.h"
#include "shell/controls.h"
#include "shell/helpwindow.h"
#include "shell/splashwindow.h"
#include "shell/itemlist.h"
#include "shell/prompts.h"
#include "shell/seams.h"
#include "shell/ticker.h"
#include "shell/twips.h"
#include "shell/waiting.h"
#include "probes/timeouts.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace {
constexpr int kLabelHeight = 255;

QFrame *rule(QWidget *client, const char *name, QRect geometry)
{
    auto *f = new QFrame(client);
    f->setObjectName(QLatin1String(name));
    f->setGeometry(geometry);
    f->setFrameShape(QFrame::HLine);
    return f;
}

QAction *item(QMenu *menu, const char *name, const QString &caption)
{
    QAction *a = menu->addAction(caption);
    a->setObjectName(QLatin1String(name));
    return a;
}

QMenu *menu(QMenu *parent, QMenuBar *bar, const char *name, const QString &caption)
{
    QMenu *m = parent ? parent->addMenu(caption) : bar->addMenu(caption);
    m->setObjectName(QLatin1String(name));
    m->menuAction()->setObjectName(QLatin1String(name));
    return m;
}

QPushButton *button(QWidget *client, const char *name, const QString &caption, const QString &tip, QRect geometry)
{
    QPushButton *b = Controls::button(client, name, caption, geometry);
    b->setToolTip(tip);
    return b;
}

QLineEdit *textBox(QWidget *client, const char *name, const QString &text, const QString &tip, QRect geometry,
                   QLabel *caption)
{
    QLineEdit *t = Controls::textBox(client, name, geometry, caption);
    t->setText(text);
    t->setToolTip(tip);
    return t;
}
}

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), queries_(new GameQueryChannel(Seams::prompts(), Activity::Kind::ServerQuery, this)),
      session_(new RefreshSession(Seams::prompts(), *queries_, this)), splashTicker_(new Ticker(this)),
      trayClickTicker_(new Ticker(this))
{
    setObjectName(u"MainWindow"_s);
    setWindowTitle(u"Pulsebox Server Kit"_s);
    Controls::applyDesignLook(this);
    auto *client = new QWidget(this);
    client->setObjectName(u"client"_s);
    client->setFixedSize(Twips::size(10110, 6765));
    setCentralWidget(client);
    buildControls(client);
    buildMenus();
    buildFinder(client);
    layout()->setSizeConstraint(QLayout::SetFixedSize);  // a fixed single border: no resizing
    queries_->setActivity(&activity_);
    connectHandlers();
    connectSession();
    applyControlStates();
}

MainWindow::~MainWindow() = default;

ServerTable &MainWindow::servers() { return session_->table(); }


void MainWindow::buildControls(QWidget *client)
{
    using Twips::rect;
    serverAddressLabel_ = Controls::label(client, "serverAddressLabel_", u"Server IP:"_s, rect(120, 180, 795, kLabelHeight));
    serverAddressEdit_ = textBox(client, "serverAddressEdit_", u"200.200.200.100"_s, {}, rect(960, 120, 3015, 285),
                                 serverAddressLabel_);
    serverAddressEdit_->setEnabled(false);
    listLocationLabel_ = Controls::label(client, "listLocationLabel_", u"Location of List"_s, rect(4080, 180, 1155, kLabelHeight));
    listLocationBox_ = new QComboBox(client);
    listLocationBox_->setObjectName(u"listLocationBox_"_s);
    listLocationBox_->setEditable(true);
    listLocationBox_->setInsertPolicy(QComboBox::NoInsert);
    listLocationBox_->setGeometry(rect(5280, 120, 3915, 315));
    listLocationBox_->setToolTip(u"Location of server list"_s);
    listLocationLabel_->setBuddy(listLocationBox_);
    listLocationBox_->setEditText(u"http://127.0.0.1/quake2/gamespy.txt"_s);

    pingLimitLabel_ = Controls::label(client, "pingLimitLabel_", u"Ping Limit:"_s, rect(180, 540, 735, kLabelHeight), Qt::AlignRight);
    pingLimitEdit_ = textBox(client, "pingLimitEdit_", u"230"_s, u"Maximum ping to accept in list"_s,
                             rect(960, 480, 735, 285), pingLimitLabel_);
    ttlLabel_ = Controls::label(client, "ttlLabel_", u"Time To Live ((TTL) :"_s, rect(1740, 480, 1695, kLabelHeight));
    ttlEdit_ = textBox(client, "ttlEdit_", u"90"_s, u"Maximum Number of Hops before giving up."_s,
                       rect(3540, 480, 735, 285), ttlLabel_);

    topRule_ = rule(client, "topRule_", rect(0, 1080, 10110, 15));
    bottomRule_ = rule(client, "bottomRule_", rect(0, 6240, 10110, 15));
    serverInfoCaption_ = Controls::label(client, "serverInfoCaption_", u"Server Information:"_s,
                                         rect(180, 1140, 1935, kLabelHeight), Qt::AlignLeft, true);
    // The progress of a pass: a red fill growing inside a box.
    progressBar_ = new QProgressBar(client);
    progressBar_->setObjectName(u"progressBar_"_s);
    progressBar_->setGeometry(rect(3300, 1140, 3795, 255));
    progressBar_->setTextVisible(false);
    progressBar_->setStyleSheet(u"QProgressBar { border: 1px solid palette(window-text); background: transparent; }"
                                u" QProgressBar::chunk { background-color: red; }"_s);
    listCountCaption_ = Controls::label(client, "listCountCaption_", u"List Count:"_s, rect(7440, 1140, 1155, kLabelHeight),
                                        Qt::AlignRight);
    listCountLabel_ = Controls::label(client, "listCountLabel_", QString(), rect(8640, 1140, 975, kLabelHeight),
                                      Qt::AlignLeft, true);
    listCountLabel_->setAccessibleDescription(listCountCaption_->text());  // heard as its count, then what it counts

    pingHeader_ = Controls::label(client, "pingHeader_", u"Ping"_s, rect(180, 1440, 700, kLabelHeight));
    addressHeader_ = Controls::label(client, "addressHeader_", u"Address"_s, rect(900, 1440, 1200, kLabelHeight));
    nameHeader_ = Controls::label(client, "nameHeader_", u"Name"_s, rect(3480, 1440, 1200, kLabelHeight));
    hopsHeader_ = Controls::label(client, "hopsHeader_", u"Hops"_s, rect(6600, 1440, 600, kLabelHeight));
    versionHeader_ = Controls::label(client, "versionHeader_", u"Version"_s, rect(7200, 1440, 800, kLabelHeight));
    mapHeader_ = Controls::label(client, "mapHeader_", u"Map"_s, rect(8040, 1440, 1000, kLabelHeight));
    playersHeader_ = Controls::label(client, "playersHeader_", u"Use/Cap"_s, rect(9180, 1440, 800, kLabelHeight));

    serverList_ = new ItemList(true, client);
    serverList_->setObjectName(u"serverList_"_s);
    serverList_->setGeometry(rect(180, 1680, 9735, 1950));
    serverList_->setFont(Controls::fixedFont());
    serverList_->setAccessibleName(u"Server Information"_s);

    refreshButton_ = button(client, "refreshButton_", u"Refresh List"_s, u"Refresh Server List"_s, rect(180, 3660, 1035, 495));
    favRefreshButton_ = button(client, "favRefreshButton_", u"Fav Refresh"_s, u"Refresh Favs List Only"_s,
                               rect(1320, 3660, 1035, 495));
    cancelButton_ = button(client, "cancelButton_", u"Cancel"_s, u"Cancel Refresh"_s, rect(2460, 3660, 975, 495));
    addFavoriteButton_ = button(client, "addFavoriteButton_", u"Add to Favorites"_s, u"Add Server to Favorites"_s,
                                rect(6660, 3660, 1095, 495));
    countHopsButton_ = button(client, "countHopsButton_", u"Count Hops"_s, u"Do traceroute on server."_s,
                              rect(7800, 3660, 1095, 495));
    serverInfoButton_ = button(client, "serverInfoButton_", u"Server Info"_s, u"Show Server Info"_s, rect(8940, 3660, 975, 495));

    logCaption_ = Controls::label(client, "logCaption_", u"Return Information :"_s, rect(180, 4260, 1935, kLabelHeight));
    logList_ = new ItemList(false, client);
    logList_->setObjectName(u"logList_"_s);
    logList_->setGeometry(rect(180, 4500, 9735, 1620));
    logList_->setAccessibleName(u"Return Information"_s);
    statusLabel_ = Controls::label(client, "statusLabel_", u" "_s, rect(180, 6360, 9735, 315));
    statusLabel_->setFrameShape(QFrame::Box);
    statusLabel_->setAccessibleDescription(u"Status"_s);  // heard as its text ("Done...")

    splashTicker_->setObjectName(u"splashTicker_"_s);
    trayClickTicker_->setObjectName(u"trayClickTicker_"_s);
}

void MainWindow::buildMenus()
{
    QMenuBar *bar = menuBar();
    fileMenu_ = menu(nullptr, bar, "fileMenu_", u"&File"_s);
    loadAction_ = item(fileMenu_, "loadAction_", u"&Load"_s);
    saveAction_ = item(fileMenu_, "saveAction_", u"&Save"_s);
    fileMenu_->addSeparator();
    exitAction_ = item(fileMenu_, "exitAction_", u"&Exit"_s);

    optionsMenu_ = menu(nullptr, bar, "optionsMenu_", u"&Options"_s);
    favoritesAction_ = item(optionsMenu_, "favoritesAction_", u"&Favorites"_s);
    optionsMenu_->addSeparator();
    updateMasterAction_ = item(optionsMenu_, "updateMasterAction_", u"Update Master List"_s);
    optionsMenu_->addSeparator();
    pingMenu_ = menu(optionsMenu_, nullptr, "pingMenu_", u"&Ping"_s);
    // Quick and Regular Ping are one choice: clicking the checked one keeps it.
    pingModeGroup_ = new QActionGroup(this);
    pingModeGroup_->setObjectName(u"pingModeGroup_"_s);
    quickPingAction_ = item(pingMenu_, "quickPingAction_", u"&Quick Ping"_s);
    fullPingAction_ = item(pingMenu_, "fullPingAction_", u"&Regular Ping"_s);
    for (QAction *mode : {quickPingAction_, fullPingAction_}) {
        mode->setCheckable(true);
        pingModeGroup_->addAction(mode);
    }
    quickPingAction_->setChecked(true);
    fastRefreshAction_ = item(optionsMenu_, "fastRefreshAction_", u"Fast Refresh"_s);
    fastRefreshAction_->setCheckable(true);
    findAction_ = item(optionsMenu_, "findAction_", u"Find and F&ilter..."_s);
    optionsMenu_->addSeparator();
    settingsAction_ = item(optionsMenu_, "settingsAction_", u"Settings"_s);

    iconizeAction_ = bar->addAction(u"&Iconize"_s);
    iconizeAction_->setObjectName(u"iconizeAction_"_s);

    helpMenu_ = menu(nullptr, bar, "helpMenu_", u"Help"_s);
    contentsAction_ = item(helpMenu_, "contentsAction_", u"Contents"_s);
    aboutAction_ = item(helpMenu_, "aboutAction_", u"About"_s);
}

void MainWindow::connectHandlers()
{
    connect(refreshButton_, &QPushButton::clicked, this, &MainWindow::startRefresh);
    connect(favRefreshButton_, &QPushButton::clicked, this, &MainWindow::startFavoritesRefresh);
    connect(cancelButton_, &QPushButton::clicked, this, &MainWindow::cancelRun);
    connect(addFavoriteButton_, &QPushButton::clicked, this, &MainWindow::addSelectedToFavorites);
    connect(countHopsButton_, &QPushButton::clicked, this, &MainWindow::countHops);
    connect(serverInfoButton_, &QPushButton::clicked, this, &MainWindow::showServerInfo);
    connect(serverList_, &ItemList::picked, this, &MainWindow::selectServer);
    connect(serverList_, &QListWidget::itemDoubleClicked, this, &MainWindow::launchSelected);
    connect(exitAction_, &QAction::triggered, this, &QWidget::close);
    connect(loadAction_, &QAction::triggered, this, &MainWindow::loadList);
    connect(saveAction_, &QAction::triggered, this, &MainWindow::saveList);
    connect(favoritesAction_, &QAction::triggered, this, &MainWindow::editFavorites);
    connect(updateMasterAction_, &QAction::triggered, this, &MainWindow::updateMasterList);
    connect(settingsAction_, &QAction::triggered, this, &MainWindow::editSettings);
    connect(iconizeAction_, &QAction::triggered, this, &MainWindow::iconize);
    connect(contentsAction_, &QAction::triggered, this, &MainWindow::showHelp);
    connect(aboutAction_, &QAction::triggered, this, &MainWindow::showAbout);

    connect(&activity_, &Activity::changed, this, &MainWindow::applyControlStates);
    connect(splashTicker_, &Ticker::timeout, this, [this] { ++splashTicks_; });
    connect(trayClickTicker_, &Ticker::timeout, this, [this] {
        trayClickState_ = 3;
        trayClickTicker_->setInterval(0);
    });
}

void MainWindow::applyControlStates()
{
    const ControlStates s = controlStates(activity_, facts_);
    refreshButton_->setEnabled(s.refresh);
    favRefreshButton_->setEnabled(s.favoritesRefresh);
    cancelButton_->setEnabled(s.cancel);
    addFavoriteButton_->setEnabled(s.addFavorite);
    countHopsButton_->setEnabled(s.countHops);
    serverInfoButton_->setEnabled(s.serverInfo);
    pingLimitEdit_->setEnabled(s.pingLimit);
    ttlEdit_->setEnabled(s.ttl);
    pingMenu_->menuAction()->setEnabled(s.pingMenu);
    fastRefreshAction_->setEnabled(s.fastRefresh);
    hopsHeader_->setVisible(s.hopsHeader);
    progressBar_->setVisible(s.progress);
}

void MainWindow::setStatus(const QString &text)
{
    statusLabel_->setText(text);
    emit statusChanged(text);
}

void MainWindow::showProgress(int done, int total)
{
    progressBar_->setMaximum(std::max(total, 1));
    progressBar_->setValue(total > 0 ? std::clamp(done, 0, total) : 0);
}

const ServerRec *MainWindow::selectedServer()
{
    const ServerTable &table = session_->table();
    const int row = serverList_->selectedRow();
    const int k = row < 0 ? 0 : serverList_->rowData(row);
    if (k < 1 || k > table.ServerCount) {
        Seams::prompts().message(u"Pick a server from the list first."_s, AppTitle);
        return nullptr;
    }
    return &table.Servers[static_cast<size_t>(k)];
}

void MainWindow::updateMasterList() { Seams::prompts().message(u"not available yet"_s, AppTitle); }

// A refresh or Count Hops refuses the close until Cancel was pressed; then
// everything ends at once.
void MainWindow::closeEvent(QCloseEvent *event)
{
    const bool cancelRequested = session_->cancelRequested() || hopsCancelRequested_;
    if (closeRefused(activity_, cancelRequested)) {
        event->ignore();
        setWindowTitle(u"Pulsebox Server Kit - CAN'T CLOSE BEFORE CANCEL!"_s);
        return;
    }
    event->accept();
    if (runHoldsClose(activity_))
        abandonWaits();
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window != this && window->isVisible())
            window->close();
}

void MainWindow::start()
{
    splash_ = new SplashWindow;
    connect(splash_, &SplashWindow::closed, this, [this] {
        splashTicks_ = 5;
        splashTicker_->setInterval(0);
    });
    splash_->show();
    splashTicker_->setInterval(Timeouts::kTickMs);
    listLocationBox_->addItem(listLocationBox_->currentText());
    listLocationBox_->addItem(u"http://127.0.0.1/"_s);
    // The demo network's master and its list as a standard web server serves it,
    // then the lists players use today: q2servers.com's (plain text) and public
    // masters, so that a first refresh on the internet finds servers without typing.
    for (const QString &location : {u"master://127.0.0.1:27900"_s, u"http://127.0.0.1/?raw=1"_s,
                                    u"http://q2servers.com/?raw=1"_s, u"master://master.rlogin.dk:27900"_s,
                                    u"master://master.quakeservers.net:27900"_s})
        listLocationBox_->addItem(location);
    listLocationBox_->setEditText(listLocationBox_->itemText(0));

    waitUntil([this] { return splashTicks_ >= 2; });
    if (splash_)
        splash_->close();

    loadFavorites();
    readConfiguration();
    loadFinder();

    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        adjustSize();
        move(screen->availableGeometry().center() - rect().center());
    }
}

void MainWindow::showAbout()
{
    if (!splash_) {
        splash_ = new SplashWindow;
        splash_->show();
    }
    splash_->raise();
    splash_->activateWindow();
}

void MainWindow::showHelp() { HelpWindow::showHelp(); }
