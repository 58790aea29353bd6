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

// Left-over shared state of the windows not yet given their own.
struct PulseboxMod : MatcherData {
    qint32 TimerTicks = 0;       // ticks of the matcher's Timer1 since a wait last cleared it
    qint32 SplashTicks = 0;      // 5 once the splash closed
    qint32 QueryMode = 1;        // which query the next send-ready of the launcher bar sends
    QString LastReply;           // the last datagram received by the launcher bar
    QString GamePath;            // the game program, trimmed; empty when not set
    QString favOrigServer;       // the favorite being modified, for its Cancel
    QString favOrigDesc;
    bool QueryBusy = false;      // the launcher bar's query waits for its reply
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
