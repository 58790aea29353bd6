#pragma once
#include "serverlist/probedecisions.h"
#include "shell/serverrow.h"

#include <QString>

#include <vector>

class EchoService;
class Prompter;
class ProgramStarter;

// The program's module-level state: every long run and every window shares it.
struct PulseboxMod : ServerTable {
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
    qint32 PlayerCount = 0;      // players of the ping matcher's data
    QString favOrigServer;       // the favorite being modified, for its Cancel
    QString favOrigDesc;
    bool echoTroubleReported = false;  // the "no ICMP here" advice was shown once
};

PulseboxMod &Mod();

inline const QString EchoRequestText = QStringLiteral("Server please echo this back.");
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
}
