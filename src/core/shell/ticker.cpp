#include "shell/ticker.h"

#include <cmath>

namespace {
double g_scale = 1.0;
}

Ticker::Ticker(QObject *parent) : QObject(parent)
{
    timer_.setTimerType(Qt::CoarseTimer);
    connect(&timer_, &QTimer::timeout, this, &Ticker::timeout);
}

void Ticker::setInterval(int ms)
{
    interval_ = ms > 0 ? ms : 0;
    if (interval_ == 0) {
        timer_.stop();
        return;
    }
    timer_.start(std::max(1, static_cast<int>(std::lround(interval_ * g_scale))));
}

void Ticker::setTimeScale(double scale) { g_scale = scale > 0 ? scale : 1.0; }
double Ticker::timeScale() { return g_scale; }
