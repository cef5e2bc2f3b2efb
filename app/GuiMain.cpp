#include "app/GuiMain.h"

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "app/SingleInstance.h"
#include "app/WidgetPrompter.h"
#include "controls/AppIcons.h"

#include <QApplication>
#include <cstdlib>

int runGui(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Twinsift"));
    QApplication::setApplicationVersion(QStringLiteral(TWINSIFT_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("twinsift"));

    SingleInstance instance;
    if (instance.handOverToRunning())
        return 0;
    instance.listen();
    AppIcons::setUpTheme();

    WidgetPrompter prompter;
    AppDelegate appDelegate(prompter);
    prompter.setWindow(appDelegate.window());
    QObject::connect(&instance, &SingleInstance::reopenRequested, &appDelegate,
        [&appDelegate] { appDelegate.applicationShouldHandleReopen(appDelegate.window()->isVisible()); });
    // The program ends when its window closes.
    if (AppDelegate::applicationShouldTerminateAfterLastWindowClosed())
        QObject::connect(
            appDelegate.window(), &MainWindow::closed, &app, &QCoreApplication::quit, Qt::QueuedConnection);
    appDelegate.applicationDidFinishLaunching();
    const int status = app.exec();
    // A scan cannot be stopped part-way; quitting does not wait for it.
    if (appDelegate.state().isScanRunning) {
        appDelegate.settingsStore().synchronize();
        std::_Exit(status);
    }
    return status;
}
