#include "launch/programstarter.h"

#include <QProcess>

bool DetachedStarter::start(const QString &program, const QStringList &arguments,
                            const QString &workingFolder, QString *error)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setWorkingDirectory(workingFolder);
    if (process.startDetached())
        return true;
    if (error)
        *error = process.errorString();
    return false;
}
