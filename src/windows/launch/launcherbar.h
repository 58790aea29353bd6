#pragma once
#include "favorites/favfile.h"
#include "shell/serverrow.h"

#include <QList>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <vector>

class Activity;
class DsSocket;
class QAction;
class QFrame;
class QMenu;
class QPushButton;
class QScrollArea;
class StatusPopup;
class Ticker;

// The launcher bar: one button per favorite beside the desktop's panel. A click
// shows the server's players in a pop-up, a right click offers Launch and Chat.
class LauncherBar : public QWidget {
    Q_OBJECT
public:
    // The owner's one launch routine: target is address ":" port, prompt the question to ask.
    using LaunchGame = std::function<void(const QString &target, const QString &prompt)>;

    // The buttons are built from `favorites` as they are now; `activity` says
    // whether a game query of the owner waits, which the bar's query never overlaps.
    LauncherBar(const QList<Favorite> &favorites, Activity &activity, LaunchGame launchGame, QWidget *owner);
    ~LauncherBar() override;

    // The side of the screen the panel is on ("LEFT", "RIGHT", "TOP", "BOTTOM"):
    // the pop-up opens on the bar's other side.
    void setTaskbarEdge(const QString &edge) { taskbarEdge_ = edge; }

    // A status query of the bar was asked for and has not ended.
    bool isQuerying() const { return launchBusy_; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPushButton *newButton(int index);
    void fitToWorkArea(int favorites);
    void queryStatus(int index);
    // Sends the query once no query of the owner waits any more.
    void startWhenFree();
    void runQuery();
    void showStatus(int index, const QString &reply);
    void placePopup(int index);
    void showServerMenu(int index, QPoint globalPosition);
    void launchChosen();
    void showChat();
    void closeBar();

    Activity &activity_;
    LaunchGame launchGame_;
    QString taskbarEdge_;
    std::vector<ServerRec> servers_;  // one per button, one spare at the end

    QFrame *frame_;
    QScrollArea *column_;  // the buttons scroll when the bar would not fit the screen
    QWidget *buttons_;
    QList<QPushButton *> launchButtons_;
    QPushButton *closeButton_;
    QMenu *serverMenu_;
    QAction *launchAction_, *chatAction_;
    QPointer<StatusPopup> popup_;  // while it is loaded

    DsSocket *querySocket_;
    Ticker *queryTicker_;
    QString reply_;  // the last datagram on the query socket
    qint32 launchTicks_ = 0;
    bool launchBusy_ = false;
    bool waitsForOwner_ = false;    // the query waits for the owner's to end
    QMetaObject::Connection ownerWait_;
    bool closeAfterQuery_ = false;  // "x" was pressed while a query waited
    int launchIndex_ = 0;  // the button last left-clicked
    int menuIndex_ = 0;    // the button last right-clicked
};
