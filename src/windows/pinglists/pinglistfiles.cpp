// File, Save and File, Load of the main window, and the matcher's Save.
#include "pinglists/pinglistfiles.h"

#include "favorites/favfile.h"
#include "pinglists/pinglist.h"
#include "probes/address.h"
#include "shell/frmpulsebox.h"
#include "shell/prompts.h"
#include "shell/pulseboxmod.h"

#include "shell/boundedfile.h"

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

void frmPulsebox::mnufilesave_Click()
{
    const QString path = PingListFiles::chooseSaveTarget();
    if (path.isEmpty())
        return;
    QString name = Seams::prompts().input(u"Your name:"_s, AppTitle, u"Unknown"_s);
    if (name.isEmpty())
        name = u"Unknown"_s;
    const PulseboxMod &mod = Mod();
    PingListFiles::write(path, PingList::serverListBytes(mod.Servers, mod.ServerCount, name));
}

void frmPulsebox::mnufileload_Click()
{
    Prompter &prompts = Seams::prompts();
    const QString path = prompts.openFileName(u"Load"_s, PingList::kFilter);
    if (path.isEmpty())
        return;
    // Content past the largest the reader accepts is never looked at, so a huge
    // file costs no more than that. A file that cannot be read reads as empty.
    const QByteArray bytes = BoundedFile::read(path, PingList::kMaxContentBytes).bytes;

    PulseboxMod &mod = Mod();
    PingList::LoadResult result = PingList::read(bytes, std::move(static_cast<MatcherData &>(mod)));
    static_cast<MatcherData &>(mod) = std::move(result.data);
    for (const PingList::Message &m : result.messages)
        prompts.message(m.text, m.title, m.exclamation ? Prompter::Icon::Warning : Prompter::Icon::None);
    if (result.outcome == PingList::Outcome::Loaded)
        showMatcher();
}
