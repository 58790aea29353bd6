// The demo network: a server list over HTTP and simulated game servers on loopback.
#include "demonetwork.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include <csignal>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = app.arguments();
    Demo::Config config = Demo::Config::builtIn();
    if (args.size() > 1) {
        QFile file(args[1]);
        if (!file.open(QIODevice::ReadOnly)) {
            err << "pulsebox-demonet: cannot read " << args[1] << ": " << file.errorString() << "\n";
            return 2;
        }
        QString error;
        const auto parsed = Demo::Config::parse(QString::fromUtf8(file.readAll()), &error);
        if (!parsed) {
            err << "pulsebox-demonet: " << args[1] << ": " << error << "\n";
            return 2;
        }
        config = *parsed;
    }
    Demo::Network network;
    QString error;
    if (!network.start(config, &error)) {
        err << "pulsebox-demonet: " << error << "\n";
        return 1;
    }
    out << "Demo network up: " << network.gameServers().size() << " game servers on loopback.\n"
        << "List URL: " << network.listUrl() << "\n";
    if (!network.masterUrl().isEmpty())
        out << "Master URL: " << network.masterUrl() << "\n";
    out.flush();
    std::signal(SIGTERM, [](int) { QCoreApplication::quit(); });
    std::signal(SIGINT, [](int) { QCoreApplication::quit(); });
    return QCoreApplication::exec();
}
