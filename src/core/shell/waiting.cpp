#include "shell/waiting.h"

#include <QCoreApplication>
#include <QEventLoop>

namespace {
bool g_abandoned = false;
}

void waitUntil(const std::function<bool()> &done)
{
    while (!g_abandoned && !done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void yieldOnce()
{
    QCoreApplication::processEvents();
}

void abandonWaits(bool abandon) { g_abandoned = abandon; }
bool waitsAbandoned() { return g_abandoned; }
