#pragma once
#include <QDialog>

class QLabel;

// The start-up splash, also shown as the About box. Any key or click closes it.
class SplashWindow : public QDialog {
    Q_OBJECT
public:
    explicit SplashWindow(QWidget *parent = nullptr);

signals:
    // However the window closes: the start-up wait need not go on.
    void closed();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    QLabel *logo_, *versionLabel_, *platformLabel_, *riskLabel_;
};

// The program's logo, drawn rather than shipped.
QPixmap PulseboxLogo(int width, int height);
