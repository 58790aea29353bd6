// Runs Count Hops through the main window against one real server and prints the
// stored hop count and the log: "hops=N" then one line per log line.
// Run inside the network namespaces that netns_icmp.sh builds.
#include "support/testsupport.h"

#include "probes/address.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/serverrow.h"
#include "shell/vblist.h"

#include <QApplication>
#include <QPushButton>

#include <cstdio>

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: counthops_probe DESTINATION\n");
        return 2;
    }
    TestEnvironment env(1.0);
    Seams::setEcho(nullptr);  // the real echo service
    auto window = newMainWindow();
    ServerRec rec;
    rec.Address = DottedToAddress(QString::fromLatin1(argv[1]));
    rec.Port = 27910;
    const qint32 k = Mod().appendServer(rec);
    window->List1->SetItemData(window->List1->AddItem(ServerRow::format(
        1, false, AddressToDotted(rec.Address) + QStringLiteral(":27910"), {}, {}, {}, {})), k);
    window->Command7->setEnabled(true);
    env.prompts.answers = {true};
    window->Command7->click();
    std::printf("hops=%d\n", Mod().Servers[static_cast<size_t>(k)].Hops);
    for (const QString &line : window->lbReturn->Texts())
        std::printf("%s\n", qPrintable(line));
    return 0;
}
