// Runs Count Hops through the main window against one real server and prints the
// stored hop count and the log: "hops=N" then one line per log line. --fast: with
// Fast Refresh on. Run inside the network namespaces that netns_icmp.sh and
// netns_hops.sh build.
#include "support/dialogsupport.h"
#include "support/testsupport.h"

#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"

#include <QApplication>
#include <QPushButton>

#include <cstdio>

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const bool fast = argc == 3 && qstrcmp(argv[1], "--fast") == 0;
    if (argc != 2 && !fast) {
        std::fprintf(stderr, "usage: counthops_probe [--fast] DESTINATION\n");
        return 2;
    }
    TestEnvironment env(1.0);
    Seams::setEcho(nullptr);  // the real echo service
    auto window = newMainWindow();
    MainWindowDriver::offerListCommands(*window);
    const int k = addListedServer(*window, argv[argc - 1], 27910);
    if (fast)
        MainWindowDriver::trigger(*window, "fastRefreshAction_");
    env.prompts.answers = {true};
    window->findChild<QPushButton *>(QStringLiteral("countHopsButton_"))->click();
    std::printf("hops=%d\n", window->servers().Servers[static_cast<size_t>(k)].Hops);
    for (const QString &line : window->findChild<ItemList *>(QStringLiteral("logList_"))->texts())
        std::printf("%s\n", qPrintable(line));
    return 0;
}
