#include "support/testsupport.h"

#include "probes/address.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"
#include "shell/ticker.h"
#include "shell/waiting.h"

#include <QDir>
#include <QFile>
#include <QAction>
#include <QPushButton>
#include <QTcpServer>
#include <QTest>

void ScriptedPrompter::message(const QString &text, const QString &title, Icon icon)
{
    shown.append({QStringLiteral("message"), text, title, icon});
}

bool ScriptedPrompter::question(const QString &text, const QString &title)
{
    shown.append({QStringLiteral("question"), text, title});
    return answers.isEmpty() ? false : answers.takeFirst();
}

QString ScriptedPrompter::openFileName(const QString &title, const QString &filter)
{
    shown.append({QStringLiteral("open"), filter, title});
    return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
}

QString ScriptedPrompter::saveFileName(const QString &title, const QString &filter)
{
    shown.append({QStringLiteral("save"), filter, title});
    return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
}

QString ScriptedPrompter::input(const QString &prompt, const QString &title, const QString &defaultText)
{
    shown.append({QStringLiteral("input"), prompt, title, Icon::None, defaultText});
    return inputs.isEmpty() ? QString() : inputs.takeFirst();
}

QStringList ScriptedPrompter::texts() const
{
    QStringList list;
    for (const Shown &s : shown)
        list << s.text;
    return list;
}

int ScriptedEcho::sendEcho(qint32 destination, const QByteArray &, int ttl, int timeoutMs, EchoReply &reply)
{
    const QString dotted = AddressToDotted(destination);
    sent.append({dotted, ttl});
    timeouts.append(timeoutMs);
    if (onSend)
        onSend();
    reply = EchoReply{};
    Outcome outcome{1, 0, 10};
    if (destination == 0)
        outcome = {0, 11018, 0};
    const QStringList route = routes.value(dotted);
    auto it = script.find(dotted);
    if (ttl >= 1 && ttl <= route.size()) {
        const QString &router = route[ttl - 1];
        outcome = router.isEmpty() ? Outcome{0, 11010, 0} : Outcome{1, 11013, quint32(5 * ttl), router};
    } else if (it != script.end() && !it->isEmpty()) {
        outcome = it->size() > 1 ? it->takeFirst() : it->first();
    }
    reply.Address = outcome.from.isEmpty() ? destination : DottedToAddress(outcome.from);
    reply.Status = outcome.status;
    reply.RoundTripTime = outcome.rtt;
    return outcome.result;
}

bool ScriptedStarter::start(const QString &program, const QStringList &arguments,
                            const QString &workingFolder, QString *error)
{
    started.append({program, arguments, workingFolder});
    if (fail && error)
        *error = QStringLiteral("No such file or directory");
    return !fail;
}

TestEnvironment::TestEnvironment(double timeScale) : previousFolder(QDir::currentPath())
{
    abandonWaits(false);
    Ticker::setTimeScale(timeScale);
    Seams::setPrompts(&prompts);
    Seams::setEcho(&echo);
    Seams::setStarter(&starter);
    QDir::setCurrent(dir.path());
}

TestEnvironment::~TestEnvironment()
{
    QDir::setCurrent(previousFolder);
    Seams::setPrompts(nullptr);
    Seams::setEcho(nullptr);
    Seams::setStarter(nullptr);
    Ticker::setTimeScale(1.0);
    abandonWaits(false);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write the test file %s", qPrintable(path));
}

quint16 closedPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return probe.serverPort();  // closed again as probe goes
}

namespace MainWindowDriver {
ItemList *serverList(MainWindow &window) { return window.findChild<ItemList *>(QStringLiteral("serverList_")); }

void offerListCommands(MainWindow &window)
{
    window.findChild<QPushButton *>(QStringLiteral("favRefreshButton_"))->click();
}

void addToFavorites(MainWindow &window, int row)
{
    serverList(window)->selectRow(row);
    window.findChild<QPushButton *>(QStringLiteral("addFavoriteButton_"))->click();
}

void doubleClickRow(MainWindow &window, int row)
{
    ItemList *list = serverList(window);
    const QPoint at = list->visualItemRect(list->item(row)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
}

void trigger(MainWindow &window, const char *actionName)
{
    window.findChild<QAction *>(QLatin1String(actionName))->trigger();
}
}

std::unique_ptr<MainWindow> newMainWindow()
{
    auto window = std::make_unique<MainWindow>();
    window->show();
    return window;
}
