#pragma once
#include <QList>
#include <QPointer>
#include <QWidget>

class DsSocket;
class HiddenText;
class QAction;
class QFrame;
class QMenu;
class QPushButton;
class QScrollArea;
class Ticker;
class MainWindow;
class frmsrvpop;

// The launcher bar: one button per favorite beside the desktop's panel. A click
// shows the server's players in a pop-up, a right click offers Launch and Chat.
class frmLaunch : public QWidget {
    Q_OBJECT
public:
    // Reads the favorites of `owner`'s hidden lists; the bar's window belongs to it.
    explicit frmLaunch(MainWindow *owner);
    ~frmLaunch() override;

    QFrame *Frame1;
    QList<QPushButton *> cmdLaunch;
    QPushButton *Command1;
    HiddenText *Text2;
    Ticker *Timer1;
    DsSocket *dsSocket1;
    QMenu *mnupopup;
    QAction *mnuLaunch, *mnuChat;
    QPointer<frmsrvpop> popup;  // frmsrvpop while it is loaded

    bool launchBusy = false;
    int launchIndex = 0;
    int popupIndex = 0;
    qint32 launchTicks = 0;

    void Form_Load();
    void cmdLaunch_Click(int index);
    void cmdLaunch_MouseDown(int index, Qt::MouseButton button, QPoint globalPosition);
    void mnuLaunch_Click();
    void mnuChat_Click();
    void Command1_Click();
    void dsSocket1_SendReady();
    void dsSocket1_DataArrival(const QString &data);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPushButton *newButton(int index);
    void fitToWorkArea(int favorites);
    // Another query, or a run of the main window, is going: the bar's query would
    // share QueryMode and LastReply with it.
    bool mainWindowBusy() const;
    void placePopup(int index);

    MainWindow *owner_;
    QScrollArea *column_;  // the buttons scroll when the bar would not fit the screen
    QWidget *buttons_;
    bool closeAfterQuery_ = false;  // "x" was pressed while a query waited
};
