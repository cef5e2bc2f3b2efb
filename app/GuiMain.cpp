#include "app/GuiMain.h"

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "app/SingleInstance.h"
#include "app/WidgetPrompter.h"

#include <QApplication>
#include <QIcon>
#include <QStandardPaths>
#include <cstdlib>

void ensureIconTheme() {
    if (!QIcon::fromTheme(QStringLiteral("folder")).isNull())
        return;
    QStringList paths = QIcon::themeSearchPaths();
    const QStringList found = QStandardPaths::locateAll(
        QStandardPaths::GenericDataLocation, QStringLiteral("icons"), QStandardPaths::LocateDirectory);
    for (const QString& path : found) {
        if (!paths.contains(path))
            paths.append(path);
    }
    QIcon::setThemeSearchPaths(paths);
    QIcon::setThemeName(QStringLiteral("Adwaita"));
}

int runGui(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Twinsift"));
    QApplication::setApplicationVersion(QStringLiteral(TWINSIFT_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("twinsift"));

    SingleInstance instance;
    if (instance.handOverToRunning())
        return 0;
    instance.listen();
    ensureIconTheme();

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
