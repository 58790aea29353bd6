#include "shell/seams.h"

#include "engine/echobatch.h"
#include "launch/programstarter.h"
#include "probes/icmpecho.h"
#include "shell/prompts.h"
#include "shell/trayicon.h"

namespace Seams {
namespace {
EchoService *g_echo = nullptr;
Prompter *g_prompts = nullptr;
ProgramStarter *g_starter = nullptr;
}

EchoService &echo()
{
    static LinuxIcmpEcho real;
    return g_echo ? *g_echo : real;
}
void setEcho(EchoService *service) { g_echo = service; }
bool echoReplaced() { return g_echo != nullptr; }
std::unique_ptr<EchoBatch> echoBatch()
{
    if (g_echo)
        return std::make_unique<ServiceEchoBatch>(*g_echo);
    return std::make_unique<IcmpEchoBatch>();
}

Prompter &prompts()
{
    static DialogPrompter real;
    return g_prompts ? *g_prompts : real;
}
void setPrompts(Prompter *prompter) { g_prompts = prompter; }

ProgramStarter &starter()
{
    static DetachedStarter real;
    return g_starter ? *g_starter : real;
}
void setStarter(ProgramStarter *starter) { g_starter = starter; }

namespace {
std::function<TrayIcon *(QWidget *)> g_trayMaker;
}

TrayIcon *makeTray(QWidget *owner)
{
    return g_trayMaker ? g_trayMaker(owner) : TrayIcon::forDesktop(owner);
}
void setTrayMaker(std::function<TrayIcon *(QWidget *owner)> maker) { g_trayMaker = std::move(maker); }
}
