// The demo network: a server list over HTTP and simulated game servers on loopback.
#include "demonetwork.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include <csignal>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pulsebox-demonet"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PULSEBOX_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Runs a demo network on loopback until Ctrl+C or SIGTERM: a Quake 2 server list over HTTP on\n"
        "127.0.0.1 (port 80, else 8080 and up; standard HTTP/1.1 clients get it as text at /?raw=1\n"
        "and as binary records at /?raw=2), simulated game servers on 127.0.0.2 and up, and a\n"
        "master server when the population has one (the built-in population does). It prints the\n"
        "list's URL and the master's."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("population"),
        QStringLiteral("A population file instead of the built-in one: one http, master, server or list line each."),
        QStringLiteral("[population]"));
    parser.process(app);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = QStringList{app.arguments().value(0)} + parser.positionalArguments();
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
        << "List URL: " << network.listUrl() << "\n"
        << "Standard list URLs: " << network.standardListUrl(false) << " (text), " << network.standardListUrl(true)
        << " (binary)\n";
    if (!network.masterUrl().isEmpty())
        out << "Master URL: " << network.masterUrl() << "\n";
    out.flush();
    std::signal(SIGTERM, [](int) { QCoreApplication::quit(); });
    std::signal(SIGINT, [](int) { QCoreApplication::quit(); });
    return QCoreApplication::exec();
}
