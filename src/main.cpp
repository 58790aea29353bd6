#include "shell/frmpulsebox.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Pulsebox"));
    frmPulsebox window;
    window.Form_Load();
    window.show();
    return QApplication::exec();
}
