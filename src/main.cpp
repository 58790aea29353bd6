#include "shell/iconize.h"
#include "shell/mainwindow.h"
#include "shell/termination.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Pulsebox"));
    QApplication::setWindowIcon(PulseboxIcon());
    QGuiApplication::setDesktopFileName(QStringLiteral("pulsebox"));
    CloseWindowsOnTerminate();
    MainWindow window;
    window.start();
    window.show();
    return QApplication::exec();
}
