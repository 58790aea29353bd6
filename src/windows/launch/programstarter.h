#pragma once
#include <QString>
#include <QStringList>

// Starts a program without waiting for it.
class ProgramStarter {
public:
    virtual ~ProgramStarter() = default;
    // False with `error` set when the program could not be started.
    virtual bool start(const QString &program, const QStringList &arguments,
                       const QString &workingFolder, QString *error) = 0;
};

class DetachedStarter : public ProgramStarter {
public:
    bool start(const QString &program, const QStringList &arguments,
               const QString &workingFolder, QString *error) override;
};
