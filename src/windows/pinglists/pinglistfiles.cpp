// File, Save and File, Load of the main window, and the matcher's Save.
#include "pinglists/pinglistfiles.h"

#include "favorites/favfile.h"
#include "pinglists/pinglist.h"
#include "probes/address.h"
#include "matcher/pingmatcherdialog.h"
#include "serverlist/refreshsession.h"
#include "shell/mainwindow.h"
#include "shell/waiting.h"
#include "shell/prompts.h"
#include "shell/seams.h"

#include "shell/boundedfile.h"

#include <QAction>

using namespace Qt::StringLiterals;

namespace PingListFiles {

QString chooseSaveTarget()
{
    Prompter &prompts = Seams::prompts();
    const QString chosen = prompts.saveFileName(u"Save"_s, PingList::kFilter);
    if (chosen.isEmpty())
        return {};
    const QString path = PingList::withDefaultSuffix(chosen);
    if (FileExists(path) && !prompts.question(u"File Exists, Replace?"_s, AppTitle))
        return {};
    return path;
}

bool write(const QString &path, const QByteArray &bytes)
{
    QString error;
    if (WriteFileAtomically(path, bytes, &error))
        return true;
    Seams::prompts().message(u"Could not save "_s + path + u":\n"_s + error
                                 + u"\n\nAn existing file of that name was left as it was."_s,
                             AppTitle, Prompter::Icon::Warning);
    return false;
}

void saveMatcher(const MatcherData &data)
{
    const QString path = chooseSaveTarget();
    if (!path.isEmpty())
        write(path, PingList::matcherBytes(data));
}

}

void MainWindow::saveList()
{
    const QString path = PingListFiles::chooseSaveTarget();
    if (path.isEmpty())
        return;
    QString name = Seams::prompts().input(u"Your name:"_s, AppTitle, u"Unknown"_s);
    if (name.isEmpty())
        name = u"Unknown"_s;
    const ServerTable &table = session_->table();
    PingListFiles::write(path, PingList::serverListBytes(table.Servers, table.ServerCount, name));
}

void MainWindow::loadList()
{
    Prompter &prompts = Seams::prompts();
    const QString path = prompts.openFileName(u"Load"_s, PingList::kFilter);
    if (path.isEmpty())
        return;
    // Content past the largest the reader accepts is never looked at, so a huge
    // file costs no more than that. A file that cannot be read reads as empty.
    const QByteArray bytes = BoundedFile::read(path, PingList::kMaxContentBytes).bytes;

    PingList::LoadResult result = PingList::read(bytes, std::move(matcherData_));
    matcherData_ = std::move(result.data);
    for (const PingList::Message &m : result.messages)
        prompts.message(m.text, m.title, m.exclamation ? Prompter::Icon::Warning : Prompter::Icon::None);
    if (result.outcome == PingList::Outcome::Loaded)
        showMatcher();
}

// File, Load ends here. Each opening builds the matcher afresh from the loaded data;
// File, Load returns only once the matcher is closed again.
void MainWindow::showMatcher()
{
    PingMatcherDialog matcher(matcherData_, this, fastRefreshAction_->isChecked());
    matcher.show();
    waitUntil([&matcher] { return !matcher.isVisible(); });
}
