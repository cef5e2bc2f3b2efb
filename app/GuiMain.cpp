#include "app/GuiMain.h"

#include <QApplication>
#include <QMainWindow>

int runGui(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Twinsift"));
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Twinsift"));
    window.resize(540, 500);
    window.show();
    return app.exec();
}
