#pragma once
#include "serverlist/urltext.h"

#include <QMainWindow>
#include <QPointer>

#include <array>

class QAction;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class DsSocket;
class MasterClient;
class HiddenText;
class Ticker;
class VbList;
class TrayIcon;
class LauncherBar;
struct ServerRec;
#include "favorites/favoritesdialog.h"
#include "shell/splashwindow.h"

// The main window: the server list, the log of what the probes did, and the
// buttons and menus that start everything else. Its handlers are spread over
// the subsystems' folders; this file only builds the window.
class frmPulsebox : public QMainWindow {
    Q_OBJECT
public:
    explicit frmPulsebox(QWidget *parent = nullptr);
    ~frmPulsebox() override;

    // Start-up: splash, URL choices, favorites and game path, then the window is ready.
    void Form_Load();

    // Controls, named as the program's design names them.
    QLabel *Label1, *Label4, *Label5, *Label3, *Label6, *Label7, *Label14, *Label2;
    QLabel *Label10, *Label12, *Label11, *lbHops, *Label8, *Label13, *Label9;
    QLabel *Statusbar;
    QLineEdit *txIPAddress, *Text4, *txTTL;
    QComboBox *Text1;
    QFrame *Shape1, *Shape2, *Line1, *Line2;
    VbList *List1, *lbReturn, *lbHost, *lbFav, *lbFavDesc;
    QPushButton *Command2, *Command8, *Command1, *cmAddFav, *Command7, *Command6;
    HiddenText *Text2;
    DsSocket *dsSocket1, *dsSocket2;
    Ticker *Timer1, *Timer2, *Timer3;

    QMenu *mnufile, *mnuOptions, *mnuPing, *mnuHelp;
    QAction *mnufileload, *mnufilesave, *sep3, *mnuExit;
    QAction *mnuFavorites, *sep5, *mnuupdmaster, *sep1, *sep2, *mnuSettings;
    std::array<QAction *, 2> mnuqp;
    QAction *mnuIconize, *mnuContents, *mnuabout;
    QAction *mnuFastRefresh = nullptr;  // Options, "Fast Refresh": the refresh probes all servers at once

    // The whole status line.
    void setStatus(const QString &text);
    // Appends one line to the log and scrolls it into view.
    void returnLine(const QString &text);

    // Handlers.
    void Command1_Click();
    void Command2_Click();
    void Command8_Click();
    void Command6_Click();
    void cmAddFav_Click();
    void List1_Click();
    void List1_DblClick();
    void mnuqp_Click(int index);
    void mnuupdmaster_Click();
    void mnuFavorites_Click();
    void mnuSettings_Click();
    void mnuContents_Click();
    void mnuabout_Click();
    void Command7_Click();      // Count Hops
    void mnufilesave_Click();  // File, Save: the server table as a one-player ping list
    void mnufileload_Click();  // File, Load: a ping list into the matcher, then the matcher
    // Opens the matcher window modally over the data a load left in Mod(); the
    // main window waits until it is closed.
    void showMatcher();
    void mnuIconize_Click();
    // The tray icon's mouse events: 513 a left press, 515 a left double click.
    void Tray_MouseEvent(int number);

    // The list fetch (its steps and the stream socket's events).
    bool fetchPrepare(QString *host);
    void fetchStart(const QString &host);
    void dsSocket1_Connected();
    void dsSocket1_SendReady();
    void dsSocket1_DataArrival(const QString &line);
    void dsSocket1_Close();
    void dsSocket1_Error(int number, const QString &description);
    // A master:// list location: the master's servers into lbHost. Empty when the
    // master answered, else why not.
    QString fetchFromMaster(const QString &host, quint16 port);

    // Game queries on the datagram socket.
    QString query(const QString &address, const QString &port, int mode);
    struct VersionProbeResult { QString version; QString infoLine; };
    VersionProbeResult versionProbe(const QString &address, const QString &port);
    void dsSocket2_SendReady();
    void dsSocket2_DataArrival(const QString &data);
    void dsSocket2_Error(int number, const QString &description);

    // One server entry of a refresh.
    QString lookUp(const QString &name);
    void probeServer(const QString &entry, bool favorite);
    // The probing passes of a refresh run by the probe engine (Fast Refresh).
    void probeFast(bool withWebList);

    // Favorites and configuration at start-up.
    void loadFavorites();
    void readConfiguration();
    void appendFavorite(const QString &address, const QString &description);

signals:
    void statusChanged(const QString &text);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildControls(QWidget *client);
    void buildMenus();
    void connectHandlers();
    void setRunControls(bool running);  // the controls a refresh switches
    QPushButton *button(QWidget *client, const char *name, const QString &caption,
                        const QString &tip, QRect geometry, bool enabled);
    QLineEdit *textBox(QWidget *client, const char *name, const QString &text, const QString &tip,
                       QRect geometry, QLabel *caption);
    // The record of the selected row, or nullptr after telling the user to pick one.
    const ServerRec *selectedServer();

    ListBodyReader listBody_;  // the list response's lines, its header skipped
    QPointer<SplashWindow> splash_;
    QPointer<FavoritesDialog> favorites_;
    QPointer<TrayIcon> tray_;        // made at the first Iconize, kept for the run
    QPointer<LauncherBar> launchBar_;  // the launcher bar while it is loaded
    MasterClient *master_ = nullptr;
};
