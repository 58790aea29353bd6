#include "shell/frmpulsebox.h"

#include "probes/dssocket.h"
#include "shell/controls.h"
#include "shell/prompts.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/twips.h"
#include "shell/vblist.h"
#include "shell/waiting.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {
constexpr int kLabelHeight = 255;

QFrame *shape(QWidget *client, const char *name, QRect geometry, QFrame::Shape kind)
{
    auto *f = new QFrame(client);
    f->setObjectName(QLatin1String(name));
    f->setGeometry(geometry);
    f->setFrameShape(kind);
    return f;
}

QAction *separator(QMenu *menu, const char *name)
{
    QAction *a = menu->addSeparator();
    a->setObjectName(QLatin1String(name));
    return a;
}

QAction *item(QMenu *menu, const char *name, const QString &caption)
{
    QAction *a = menu->addAction(caption);
    a->setObjectName(QLatin1String(name));
    return a;
}

QMenu *menu(QMenuBar *bar, const char *name, const QString &caption)
{
    QMenu *m = bar->addMenu(caption);
    m->setObjectName(QLatin1String(name));
    m->menuAction()->setObjectName(QLatin1String(name));
    return m;
}
}

frmPulsebox::frmPulsebox(QWidget *parent) : QMainWindow(parent)
{
    setObjectName(u"frmPulsebox"_s);
    setWindowTitle(u"Pulsebox Server Kit"_s);
    Controls::applyDesignLook(this);
    auto *client = new QWidget(this);
    client->setObjectName(u"client"_s);
    client->setFixedSize(Twips::size(10110, 6765));
    setCentralWidget(client);
    buildControls(client);
    buildMenus();
    layout()->setSizeConstraint(QLayout::SetFixedSize);  // a fixed single border: no resizing
    connectHandlers();
    Timer1->setInterval(1000);
}

frmPulsebox::~frmPulsebox() = default;

QPushButton *frmPulsebox::button(QWidget *client, const char *name, const QString &caption,
                                 const QString &tip, QRect geometry, bool enabled)
{
    QPushButton *b = Controls::button(client, name, caption, geometry);
    b->setToolTip(tip);
    b->setEnabled(enabled);
    return b;
}

QLineEdit *frmPulsebox::textBox(QWidget *client, const char *name, const QString &text,
                                const QString &tip, QRect geometry, const QLabel *caption)
{
    QString accessible = caption->text();
    while (accessible.endsWith(u':') || accessible.endsWith(u' '))
        accessible.chop(1);
    QLineEdit *t = Controls::textBox(client, name, geometry, accessible);
    t->setText(text);
    t->setToolTip(tip);
    return t;
}

void frmPulsebox::buildControls(QWidget *client)
{
    using Twips::rect;
    Label1 = Controls::label(client, "Label1", u"Server IP:"_s, rect(120, 180, 795, kLabelHeight));
    txIPAddress = textBox(client, "txIPAddress", u"200.200.200.100"_s, {}, rect(960, 120, 3015, 285), Label1);
    txIPAddress->setEnabled(false);
    Label4 = Controls::label(client, "Label4", u"Location of List"_s, rect(4080, 180, 1155, kLabelHeight));
    Text1 = new QComboBox(client);
    Text1->setObjectName(u"Text1"_s);
    Text1->setEditable(true);
    Text1->setInsertPolicy(QComboBox::NoInsert);
    Text1->setGeometry(rect(5280, 120, 3915, 315));
    Text1->setToolTip(u"Location of server list"_s);
    Text1->setAccessibleName(Label4->text());
    Text1->setEditText(u"http://127.0.0.1/quake2/gamespy.txt"_s);

    Label5 = Controls::label(client, "Label5", u"Ping Limit:"_s, rect(180, 540, 735, kLabelHeight), Qt::AlignRight);
    Text4 = textBox(client, "Text4", u"230"_s, u"Maximum ping to accept in list"_s, rect(960, 480, 735, 285), Label5);
    Label3 = Controls::label(client, "Label3", u"Time To Live ((TTL) :"_s, rect(1740, 480, 1695, kLabelHeight));
    txTTL = textBox(client, "txTTL", u"90"_s, u"Maximum Number of Hops before giving up."_s,
                    rect(3540, 480, 735, 285), Label3);

    Line1 = shape(client, "Line1", rect(0, 1080, 10110, 15), QFrame::HLine);
    Line2 = shape(client, "Line2", rect(0, 6240, 10110, 15), QFrame::HLine);
    Label6 = Controls::label(client, "Label6", u"Server Information:"_s, rect(180, 1140, 1935, kLabelHeight), Qt::AlignLeft, true);
    Shape1 = shape(client, "Shape1", rect(3300, 1140, 3795, 255), QFrame::Box);
    Shape1->hide();
    Shape2 = shape(client, "Shape2", rect(3300, 1140, 3795, 255), QFrame::NoFrame);
    Shape2->setAutoFillBackground(true);
    QPalette red = Shape2->palette();
    red.setColor(QPalette::Window, Qt::red);
    Shape2->setPalette(red);
    Shape2->hide();
    Label7 = Controls::label(client, "Label7", u"List Count:"_s, rect(7440, 1140, 1155, kLabelHeight), Qt::AlignRight);
    Label14 = Controls::label(client, "Label14", QString(), rect(8640, 1140, 975, kLabelHeight), Qt::AlignLeft, true);
    Label14->setAccessibleName(u"List Count"_s);

    Label10 = Controls::label(client, "Label10", u"Ping"_s, rect(180, 1440, 700, kLabelHeight));
    Label12 = Controls::label(client, "Label12", u"Address"_s, rect(900, 1440, 1200, kLabelHeight));
    Label11 = Controls::label(client, "Label11", u"Name"_s, rect(3480, 1440, 1200, kLabelHeight));
    lbHops = Controls::label(client, "lbHops", u"Hops"_s, rect(6600, 1440, 600, kLabelHeight));
    lbHops->hide();
    Label8 = Controls::label(client, "Label8", u"Version"_s, rect(7200, 1440, 800, kLabelHeight));
    Label13 = Controls::label(client, "Label13", u"Map"_s, rect(8040, 1440, 1000, kLabelHeight));
    Label9 = Controls::label(client, "Label9", u"Use/Cap"_s, rect(9180, 1440, 800, kLabelHeight));

    List1 = new VbList(true, client);
    List1->setObjectName(u"List1"_s);
    List1->setGeometry(rect(180, 1680, 9735, 1950));
    List1->setFont(Controls::fixedFont());
    List1->setAccessibleName(u"Server Information"_s);

    Command2 = button(client, "Command2", u"Refresh List"_s, u"Refresh Server List"_s, rect(180, 3660, 1035, 495), true);
    Command8 = button(client, "Command8", u"Fav Refresh"_s, u"Refresh Favs List Only"_s, rect(1320, 3660, 1035, 495), true);
    Command1 = button(client, "Command1", u"Cancel"_s, u"Cancel Refresh"_s, rect(2460, 3660, 975, 495), false);
    cmAddFav = button(client, "cmAddFav", u"Add to Favorites"_s, u"Add Server to Favorites"_s, rect(6660, 3660, 1095, 495), false);
    Command7 = button(client, "Command7", u"Count Hops"_s, u"Do traceroute on server."_s, rect(7800, 3660, 1095, 495), false);
    Command6 = button(client, "Command6", u"Server Info"_s, u"Show Server Info"_s, rect(8940, 3660, 975, 495), false);

    Label2 = Controls::label(client, "Label2", u"Return Information :"_s, rect(180, 4260, 1935, kLabelHeight));
    lbReturn = new VbList(false, client);
    lbReturn->setObjectName(u"lbReturn"_s);
    lbReturn->setGeometry(rect(180, 4500, 9735, 1620));
    lbReturn->setAccessibleName(u"Return Information"_s);
    Statusbar = Controls::label(client, "Statusbar", u" "_s, rect(180, 6360, 9735, 315));
    Statusbar->setFrameShape(QFrame::Box);
    Statusbar->setAccessibleName(u"Status"_s);

    for (VbList **hidden : {&lbHost, &lbFav, &lbFavDesc}) {
        *hidden = new VbList(false, client);
        (*hidden)->hide();
    }
    lbHost->setObjectName(u"lbHost"_s);
    lbFav->setObjectName(u"lbFav"_s);
    lbFavDesc->setObjectName(u"lbFavDesc"_s);
    Text2 = new HiddenText(client);
    Text2->setObjectName(u"Text2"_s);
    Text2->hide();

    dsSocket1 = new DsSocket(DsSocket::Kind::Stream, this);
    dsSocket1->setObjectName(u"dsSocket1"_s);
    dsSocket2 = new DsSocket(DsSocket::Kind::Datagram, this);
    dsSocket2->setObjectName(u"dsSocket2"_s);
    Timer1 = new Ticker(this);
    Timer1->setObjectName(u"Timer1"_s);
    Timer2 = new Ticker(this);
    Timer2->setObjectName(u"Timer2"_s);
    Timer3 = new Ticker(this);
    Timer3->setObjectName(u"Timer3"_s);
}

void frmPulsebox::buildMenus()
{
    QMenuBar *bar = menuBar();
    mnufile = menu(bar, "mnufile", u"&File"_s);
    mnufileload = item(mnufile, "mnufileload", u"&Load"_s);
    mnufilesave = item(mnufile, "mnufilesave", u"&Save"_s);
    sep3 = separator(mnufile, "sep3");
    mnuExit = item(mnufile, "mnuExit", u"&Exit"_s);

    mnuOptions = menu(bar, "mnuOptions", u"&Options"_s);
    mnuFavorites = item(mnuOptions, "mnuFavorites", u"&Favorites"_s);
    sep5 = separator(mnuOptions, "sep5");
    mnuupdmaster = item(mnuOptions, "mnuupdmaster", u"Update Master List"_s);
    sep1 = separator(mnuOptions, "sep1");
    mnuPing = mnuOptions->addMenu(u"&Ping"_s);
    mnuPing->setObjectName(u"mnuPing"_s);
    mnuPing->menuAction()->setObjectName(u"mnuPing"_s);
    mnuqp[0] = item(mnuPing, "mnuqp", u"&Quick Ping"_s);
    mnuqp[1] = item(mnuPing, "mnuqp", u"&Regular Ping"_s);
    for (int i = 0; i < 2; ++i) {
        mnuqp[static_cast<size_t>(i)]->setCheckable(true);
        mnuqp[static_cast<size_t>(i)]->setProperty("Index", i);
    }
    mnuqp[0]->setChecked(true);
    mnuFastRefresh = item(mnuOptions, "mnuFastRefresh", u"Fast Refresh"_s);
    mnuFastRefresh->setCheckable(true);
    sep2 = separator(mnuOptions, "sep2");
    mnuSettings = item(mnuOptions, "mnuSettings", u"Settings"_s);

    mnuIconize = bar->addAction(u"&Iconize"_s);
    mnuIconize->setObjectName(u"mnuIconize"_s);

    mnuHelp = menu(bar, "mnuHelp", u"Help"_s);
    mnuContents = item(mnuHelp, "mnuContents", u"Contents"_s);
    mnuabout = item(mnuHelp, "mnuabout", u"About"_s);
}

void frmPulsebox::connectHandlers()
{
    connect(Command1, &QPushButton::clicked, this, &frmPulsebox::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &frmPulsebox::Command2_Click);
    connect(Command8, &QPushButton::clicked, this, &frmPulsebox::Command8_Click);
    connect(Command6, &QPushButton::clicked, this, &frmPulsebox::Command6_Click);
    connect(cmAddFav, &QPushButton::clicked, this, &frmPulsebox::cmAddFav_Click);
    connect(List1, &QListWidget::itemSelectionChanged, this, &frmPulsebox::List1_Click);
    connect(List1, &QListWidget::itemDoubleClicked, this, &frmPulsebox::List1_DblClick);
    for (int i = 0; i < 2; ++i)
        connect(mnuqp[static_cast<size_t>(i)], &QAction::triggered, this, [this, i] { mnuqp_Click(i); });
    connect(mnuExit, &QAction::triggered, this, &QWidget::close);
    connect(mnuupdmaster, &QAction::triggered, this, &frmPulsebox::mnuupdmaster_Click);
    connect(mnuFavorites, &QAction::triggered, this, &frmPulsebox::mnuFavorites_Click);
    connect(mnuSettings, &QAction::triggered, this, &frmPulsebox::mnuSettings_Click);
    connect(mnuContents, &QAction::triggered, this, &frmPulsebox::mnuContents_Click);
    connect(mnuabout, &QAction::triggered, this, &frmPulsebox::mnuabout_Click);

    connect(Timer1, &Ticker::timeout, this, [] { ++Mod().TimerTicks; });
    connect(Timer2, &Ticker::timeout, this, [] { ++Mod().SplashTicks; });
    connect(Timer3, &Ticker::timeout, this, [this] { Timer3->setInterval(0); });

    connect(dsSocket1, &DsSocket::Connected, this, &frmPulsebox::dsSocket1_Connected);
    connect(dsSocket1, &DsSocket::SendReady, this, &frmPulsebox::dsSocket1_SendReady);
    connect(dsSocket1, &DsSocket::DataArrival, this, &frmPulsebox::dsSocket1_DataArrival);
    connect(dsSocket1, &DsSocket::Closed, this, &frmPulsebox::dsSocket1_Close);
    connect(dsSocket1, &DsSocket::Error, this, &frmPulsebox::dsSocket1_Error);
    connect(dsSocket2, &DsSocket::SendReady, this, &frmPulsebox::dsSocket2_SendReady);
    connect(dsSocket2, &DsSocket::DataArrival, this, &frmPulsebox::dsSocket2_DataArrival);
    connect(dsSocket2, &DsSocket::Error, this, &frmPulsebox::dsSocket2_Error);
}

void frmPulsebox::setStatus(const QString &text)
{
    Statusbar->setText(text);
    emit statusChanged(text);
}

void frmPulsebox::returnLine(const QString &text)
{
    lbReturn->AddItem(text);
    lbReturn->SelectLast();
}

const ServerRec *frmPulsebox::selectedServer()
{
    const int row = List1->ListIndex();
    const int k = row < 0 ? 0 : List1->ItemData(row);
    if (k < 1 || k > Mod().ServerCount) {
        Seams::prompts().message(u"Pick a server from the list first."_s, AppTitle);
        return nullptr;
    }
    return &Mod().Servers[static_cast<size_t>(k)];
}

void frmPulsebox::Command1_Click() { Mod().CancelRequested = 1; }

void frmPulsebox::List1_Click()
{
    if (Mod().CancelRequested == 1 || !Command1->isEnabled())
        Command6->setEnabled(true);
}

void frmPulsebox::mnuqp_Click(int index)
{
    mnuqp[0]->setChecked(index == 0);
    mnuqp[1]->setChecked(index == 1);
}

// A long run refuses the close until Cancel was pressed; then everything ends at once.
void frmPulsebox::closeEvent(QCloseEvent *event)
{
    const bool running = Command1->isEnabled();
    if (running && Mod().CancelRequested == 0) {
        event->ignore();
        setWindowTitle(u"Pulsebox Server Kit - CAN'T CLOSE BEFORE CANCEL!"_s);
        return;
    }
    event->accept();
    if (running)
        abandonWaits();
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window != this && window->isVisible())
            window->close();
}
