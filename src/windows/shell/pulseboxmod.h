#pragma once
#include "pinglists/pinglist.h"
#include "serverlist/probedecisions.h"
#include "shell/serverrow.h"

#include <QString>

#include <functional>
#include <vector>

class EchoService;
class Prompter;
class ProgramStarter;
class TrayIcon;
class QWidget;

// The program's module-level state: every long run and every window shares it.
// The server table (Servers, ServerCount) and the ping matcher's data
// (PlayerCount, MatchServerCount, PlayerNames, PlayerLists) are part of it as
// they are of the refresh's decisions and the file format's reader.
struct PulseboxMod : ServerTable, MatcherData {
    qint32 TimerTicks = 0;       // ticks of Timer1 since a wait last cleared it
    qint32 SplashTicks = 0;      // ticks of Timer2 since start; 5 once the splash closed
    qint16 CancelRequested = 0;  // 1 while the user asked a long run to stop
    qint32 QueryMode = 1;        // which query the next send-ready of dsSocket2 sends
    QString LastReply;           // the last datagram received on dsSocket2
    QString ListUrl;             // the list URL of the current fetch
    bool FetchBusy = false;      // a list fetch is running
    qint32 BytesReceived = 0;    // characters of the fetched body lines
    qint16 FavoritesOnly = 0;    // -1: this refresh probes the favorites only
    QString GamePath;            // the game program, trimmed; empty when not set
    QString favOrigServer;       // the favorite being modified, for its Cancel
    QString favOrigDesc;
    bool echoTroubleReported = false;  // the "no ICMP here" advice was shown once
    bool QueryBusy = false;      // a game query waits for its reply (main window or launcher bar)
    qint16 TrayClickState = 0;   // 0 idle, 1 a first click waits for a second, 3 it stayed single
    QString TaskbarEdge;         // "LEFT", "RIGHT", "TOP", "BOTTOM" or empty
    std::vector<ServerRec> LaunchServers;  // the launcher bar's favorites, one spare at the end
};

PulseboxMod &Mod();

inline const QString AppTitle = QStringLiteral("Pulsebox");

// Seams that tests replace: the echo service, the prompts and the program starter.
namespace Seams {
EchoService &echo();
void setEcho(EchoService *service);  // nullptr restores the real one
bool echoReplaced();                 // a test or benchmark put its own echo service in
Prompter &prompts();
void setPrompts(Prompter *prompter);
ProgramStarter &starter();
void setStarter(ProgramStarter *starter);
// The tray icon of a window: the desktop's tray where there is one, else a stand-in.
TrayIcon *makeTray(QWidget *owner);
void setTrayMaker(std::function<TrayIcon *(QWidget *owner)> maker);  // empty restores the real one
}
