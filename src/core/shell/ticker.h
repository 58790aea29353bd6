#pragma once
#include <QObject>
#include <QTimer>

// A timer with the interval semantics of the main window's timers: interval 0
// means stopped, any other interval (re)starts it. Tests shrink real time with
// setTimeScale so that "two ticks" of a query take a fraction of a second.
class Ticker : public QObject {
    Q_OBJECT
public:
    explicit Ticker(QObject *parent = nullptr);

    void setInterval(int ms);
    int interval() const { return interval_; }

    // Real period = interval x scale. 1.0 in the program.
    static void setTimeScale(double scale);
    static double timeScale();

signals:
    void timeout();

private:
    QTimer timer_;
    int interval_ = 0;
};
