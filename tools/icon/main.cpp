// pulsebox-icon DIR: draws the program's icon (the one its windows and tray show), square, into
// DIR/SIZExSIZE/apps/pulsebox.png for the usual hicolor sizes (for the package).
#include "shell/iconize.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>

#include <cstdio>

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");  // no display needed to draw
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: pulsebox-icon DIR\n");
        return 2;
    }
    const QString root = QString::fromLocal8Bit(argv[1]);
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(root).arg(size);
        if (!QDir().mkpath(folder) || !PulseboxIconPixmap(size).save(folder + QStringLiteral("/pulsebox.png"))) {
            std::fprintf(stderr, "pulsebox-icon: cannot write %s\n", qPrintable(folder));
            return 1;
        }
    }
    return 0;
}
