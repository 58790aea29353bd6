#pragma once
#include <QByteArray>
#include <QString>

struct MatcherData;

// The ping-list files' dialogs and writes, shared by the main window's File menu
// and the matcher window's Save. Every prompt goes through Seams::prompts().
namespace PingListFiles {
// The save dialog with the ping-list filter, then "File Exists, Replace?" when the
// chosen file is there. A name typed without an extension gets ".Pbx". Empty when
// the user cancelled the dialog or answered No: then nothing may be written.
QString chooseSaveTarget();

// Writes the whole file or nothing (temporary file, renamed over the old one).
// On failure the user is told why, the old file is left as it was, and the result is false.
bool write(const QString &path, const QByteArray &bytes);

// The matcher window's Save: the dialog and the question as above, no name
// prompt, then every player of `data`, names as they are.
void saveMatcher(const MatcherData &data);
}
