#pragma once
#include "support/filesizelimit.h"
#include "launch/programstarter.h"
#include "probes/echoservice.h"
#include "shell/serverrow.h"
#include "shell/prompts.h"

#include <QHash>
#include <QList>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>

class MainWindow;

// Answers every prompt by script and remembers what was shown.
class ScriptedPrompter : public Prompter {
public:
    struct Shown {
        QString kind;  // "message", "question", "input", "open" or "save"
        QString text;
        QString title;
        Icon icon = Icon::None;
        QString defaultText = {};  // of an input box
    };
    QList<Shown> shown;
    QList<bool> answers;     // for the questions, in order; No once they run out
    QStringList inputs;      // typed into the input boxes, in order; cancelled once they run out
    QStringList fileNames;   // chosen in the file dialogs, in order; cancelled once they run out

    void message(const QString &text, const QString &title, Icon icon) override;
    bool question(const QString &text, const QString &title) override;
    QString openFileName(const QString &title, const QString &filter) override;
    QString saveFileName(const QString &title, const QString &filter) override;
    QString input(const QString &prompt, const QString &title, const QString &defaultText) override;
    QStringList texts() const;
};

// Echo outcomes by destination; a destination without a script answers in 10 ms.
class ScriptedEcho : public EchoService {
public:
    struct Outcome {
        int result;
        quint32 status;
        quint32 rtt;
        QString from = {};  // dotted address of who answered; empty for the destination itself
    };
    QHash<QString, QList<Outcome>> script;  // consumed in order; the last one repeats
    // The routers before a destination, in hop order ("" never answers): a probe whose
    // time-to-live runs out at one gets its answer (5 ms a hop), and only the others
    // reach the destination and take from its script.
    QHash<QString, QStringList> routes;
    QList<QPair<QString, int>> sent;        // destination and time-to-live of every call
    QList<int> timeouts;                    // the time-out of every call, in ms
    std::function<void()> onSend;           // runs at every call, before it answers

    int sendEcho(qint32 destination, const QByteArray &payload, int ttl, int timeoutMs,
                 EchoReply &reply) override;
};

class ScriptedStarter : public ProgramStarter {
public:
    struct Started {
        QString program;
        QStringList arguments;
        QString workingFolder;
    };
    QList<Started> started;
    bool fail = false;
    bool start(const QString &program, const QStringList &arguments, const QString &workingFolder,
               QString *error) override;
};

// A fresh module state, scripted seams, fast ticks and a temporary current folder.
struct TestEnvironment {
    explicit TestEnvironment(double timeScale = 0.05);
    ~TestEnvironment();
    QTemporaryDir dir;
    QString previousFolder;
    ScriptedPrompter prompts;
    ScriptedEcho echo;
    ScriptedStarter starter;
};

// Whole-file helpers for the program's files; readFile gives "<missing>" for no file.
QByteArray readFile(const QString &path);
void writeFile(const QString &path, const QByteArray &bytes = {});
// A loopback TCP port that nothing listens on.
quint16 closedPort();

// The main window without its start-up wait, shown offscreen.
std::unique_ptr<MainWindow> newMainWindow();

// Driving the main window by its controls' names.
class ItemList;
namespace MainWindowDriver {
ItemList *serverList(MainWindow &window);
// A Fav Refresh without favorites: the list's commands (Add to Favorites, Count Hops) are offered.
void offerListCommands(MainWindow &window);
void doubleClickRow(MainWindow &window, int row);
void addToFavorites(MainWindow &window, int row);  // selects the row, clicks Add to Favorites
void trigger(MainWindow &window, const char *actionName);
}
