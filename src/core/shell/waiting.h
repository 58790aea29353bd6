#pragma once
#include <QObject>

#include <functional>

// The program's only way of waiting: it sleeps until the next event arrives
// (a socket, a click, a tick of a running timer), runs it, and tests `done`
// again. Nothing spins; the caller makes sure some event will come, normally
// by running the one-second tick timer whose counter `done` reads.
void waitUntil(const std::function<bool()> &done);

// Lets the pending events run once without sleeping.
void yieldOnce();

// Once the program is ending, every wait returns at once so that a run still
// on the stack unwinds instead of holding the exit up.
void abandonWaits(bool abandon = true);
bool waitsAbandoned();

// Starts a job of the event loop (the probe engine, the hop finder: start(input),
// a finished signal, cancel()) and waits until it finishes or `stopped` says so;
// whatever is still running then is cancelled. The job's results stay to be read.
template <typename Job, typename Input>
void runUntilFinished(Job &job, const Input &input, const std::function<bool()> &stopped)
{
    bool finished = false;
    const QMetaObject::Connection done = QObject::connect(&job, &Job::finished, [&finished] { finished = true; });
    job.start(input);
    waitUntil([&] { return finished || stopped(); });
    job.cancel();
    QObject::disconnect(done);
}
