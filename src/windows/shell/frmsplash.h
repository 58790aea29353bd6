#pragma once
#include <QDialog>

class QLabel;
class Ticker;

// The start-up splash, also shown as the About box. Any key or click closes it.
class frmSplash : public QDialog {
    Q_OBJECT
public:
    // startupClock: the main window's Timer2, stopped when the splash closes.
    explicit frmSplash(Ticker *startupClock, QWidget *parent = nullptr);

    QLabel *imgLogo, *lblVersion, *lblPlatform, *Label1;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    Ticker *startupClock_;
};

// The program's logo, drawn rather than shipped.
QPixmap PulseboxLogo(int width, int height);
