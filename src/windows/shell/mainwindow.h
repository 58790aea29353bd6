#pragma once
#include "favorites/favfile.h"
#include "finder/friends.h"
#include "finder/serverfilter.h"
#include "pinglists/pinglist.h"
#include "shell/activity.h"
#include "shell/controlstates.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>

class QAction;
class QActionGroup;
class QTimer;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QMenu;
class QProgressBar;
class QPushButton;
class GameQueryChannel;
class ItemList;
class RefreshSession;
class Ticker;
class TrayIcon;
class FavoritesDialog;
class FindWindow;
class QListWidgetItem;
class LauncherBar;
class SplashWindow;
struct ServerRec;
struct ServerTable;

// The main window: the server list, the log of what the probes did, and the
// buttons and menus that start everything else. A refresh runs in its session
// (RefreshSession); the window shows what the session reports, and one rule
// (controlStates) sets its controls from what runs.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // Start-up: the splash, the list locations, the favorites and the game path.
    void start();

    Activity &activity() { return activity_; }
    const QList<Favorite> &favorites() const { return favorites_; }
    void setFavorites(const QList<Favorite> &favorites) { favorites_ = favorites; }
    const QString &gamePath() const { return gamePath_; }
    void setGamePath(const QString &path) { gamePath_ = path; }
    MatcherData &matcherData() { return matcherData_; }
    // The server table of the last refresh (Count Hops and File, Save read it too).
    ServerTable &servers();
    // The one launch routine, the row double-click's and the launcher bar's:
    // target is address ":" port, prompt the question the player is asked.
    void launchGame(const QString &target, const QString &prompt);

signals:
    void statusChanged(const QString &text);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildControls(QWidget *client);
    void buildMenus();
    void connectHandlers();
    void connectSession();
    // Sets every control from the activity and the facts: the one place that does.
    void applyControlStates();
    void setStatus(const QString &text);
    void addLogLines(const QStringList &lines, qsizetype selected);
    void showProgress(int done, int total);
    // The record of the selected row, or nullptr after telling the user to pick one.
    const ServerRec *selectedServer();
    void loadFavorites();
    void readConfiguration();
    void showMatcher();

    // Handlers.
    void startRefresh();
    void startFavoritesRefresh();
    void runRefresh(bool favoritesOnly);
    void cancelRun();
    void addSelectedToFavorites();
    void countHops();
    // Count Hops with Fast Refresh on: every row's server at once (HopFinder).
    void countHopsAtOnce(const std::function<bool()> &stop);
    // The address of row i's record (0 when the row holds none).
    qint32 rowDestination(int row);
    // Stores a hop count in row i and in the records of its address and origin.
    void storeHops(int row, qint32 destination, qint32 hops);
    void showServerInfo();
    void launchSelected();
    void selectServer();
    void editFavorites();
    void editSettings();
    void showHelp();
    void showAbout();
    void saveList();
    void loadList();
    void updateMasterList();
    void iconize();
    void onTrayEvent(int number);

    // Find and Filter, friends and the friends watch (finder/finder.cpp).
    void buildFinder(QWidget *client);
    void loadFinder();
    void showFinder();
    void finderChanged();
    void editFriends();
    void setFriends(const QStringList &friends);
    bool playersWanted() const;  // a refresh asks every server for its players
    void hideRows();             // the filters and the search over every row
    void presentRow(int row);    // a new row: hidden or not, its friend mark
    void markFriendsOf(QListWidgetItem *item, const ServerFacts &facts);
    // Every row's friend mark, "n friends online", and the watch's notification.
    void markFriends();
    void showFriendsOnline(int count);  // "n friends online", shown while there are friends
    // Iconize takes the Find window and its Friends editor along, and the restore
    // brings back those that showed.
    void hideFinderWindows();
    void showFinderWindows();
    void showListCount();
    void updateWatch();
    void watchTick();

    // State.
    Activity activity_;
    ControlFacts facts_;
    bool hopsCancelRequested_ = false;  // Cancel pressed while Count Hops runs outside a refresh
    GameQueryChannel *queries_;
    RefreshSession *session_;
    QList<Favorite> favorites_;  // in file order
    QString gamePath_;           // the game program, trimmed; empty when not set
    MatcherData matcherData_;    // the loaded ping list and the matcher's players
    QString taskbarEdge_;        // "LEFT", "RIGHT", "TOP", "BOTTOM" or empty
    int splashTicks_ = 0;        // ticks since start-up; the start waits for two
    int trayClickState_ = 0;     // 0 idle, 1 a first click waits for a second, 3 it stayed single
    QPointer<SplashWindow> splash_;
    QPointer<FavoritesDialog> favoritesEditor_;
    QPointer<TrayIcon> tray_;        // made at the first Iconize, kept for the run
    QPointer<LauncherBar> launcherBar_;
    Ticker *splashTicker_;
    Ticker *trayClickTicker_;
    FinderSettings finder_;        // the filters, the search text and the watch
    QStringList friends_;
    bool friendsUnread_ = false;   // Pulsebox.friends exists but could not be read
    bool finderSaveFailed_ = false;
    QString foldedSearch_;         // finder_.filter.playerText, folded once per change
    QString listCountText_;        // what the list count shows while no filter is on
    bool playersAsked_ = false;    // the last refresh asked every server for its players
    bool watchRun_ = false;        // the Fav Refresh under way is the friends watch's
    QList<Friends::Sighting> sightings_;  // friends seen by the last refresh
    QPointer<FindWindow> findWindow_;
    QList<QPointer<QWidget>> finderWindowsHidden_;  // by Iconize, shown again by the restore
    Ticker *friendsWatchTicker_;
    QTimer *listCountLater_;       // coalesces the list count's updates while rows come

    // Controls.
    QLabel *serverAddressLabel_, *listLocationLabel_, *pingLimitLabel_, *ttlLabel_;
    QLineEdit *serverAddressEdit_, *pingLimitEdit_, *ttlEdit_;
    QComboBox *listLocationBox_;
    QFrame *topRule_, *bottomRule_;
    QLabel *serverInfoCaption_, *listCountCaption_, *listCountLabel_, *logCaption_, *statusLabel_, *friendsOnlineLabel_;
    QProgressBar *progressBar_;
    QLabel *pingHeader_, *addressHeader_, *nameHeader_, *hopsHeader_, *versionHeader_, *mapHeader_, *playersHeader_;
    ItemList *serverList_, *logList_;
    QPushButton *refreshButton_, *favRefreshButton_, *cancelButton_, *addFavoriteButton_, *countHopsButton_,
        *serverInfoButton_;
    QMenu *fileMenu_, *optionsMenu_, *pingMenu_, *helpMenu_;
    QAction *loadAction_, *saveAction_, *exitAction_, *favoritesAction_, *updateMasterAction_, *quickPingAction_,
        *fullPingAction_, *fastRefreshAction_, *settingsAction_, *iconizeAction_, *contentsAction_, *aboutAction_,
        *findAction_;
    QActionGroup *pingModeGroup_;
};
