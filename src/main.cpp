#include "shell/frmpulsebox.h"
#include "shell/iconize.h"
#include "shell/termination.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Pulsebox"));
    QApplication::setWindowIcon(PulseboxIcon());
    QGuiApplication::setDesktopFileName(QStringLiteral("pulsebox"));
    CloseWindowsOnTerminate();
    frmPulsebox window;
    window.Form_Load();
    window.show();
    return QApplication::exec();
}
