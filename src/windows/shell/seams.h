#pragma once
#include <QString>

#include <functional>
#include <memory>

class EchoBatch;
class EchoService;
class Prompter;
class ProgramStarter;
class TrayIcon;
class QWidget;

inline const QString AppTitle = QStringLiteral("Pulsebox");

// Seams that tests replace: the echo service, the prompts and the program starter.
namespace Seams {
EchoService &echo();
void setEcho(EchoService *service);  // nullptr restores the real one
bool echoReplaced();                 // a test or benchmark put its own echo service in
// Echoes that do not block, for the runs that count on many at once: the ICMP socket,
// or the replaced echo service answering from the event loop.
std::unique_ptr<EchoBatch> echoBatch();
Prompter &prompts();
void setPrompts(Prompter *prompter);
ProgramStarter &starter();
void setStarter(ProgramStarter *starter);
// The tray icon of a window: the desktop's tray where there is one, else a stand-in.
TrayIcon *makeTray(QWidget *owner);
void setTrayMaker(std::function<TrayIcon *(QWidget *owner)> maker);  // empty restores the real one
}
