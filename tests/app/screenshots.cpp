// Makes the pictures of the README: each screen of the real window, drawn off screen.
// Usage: twinsift_screenshots OUTPUT_FOLDER [BIG_FOLDER]
#include "app/AppDelegate.h"
#include "app/FolderListModel.h"
#include "app/MainWindow.h"
#include "app/mainView.h"
#include "controls/AppIcons.h"
#include "support/ScriptedPrompter.h"
#include "support/TempTree.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QThread>
#include <cstdio>
#include <functional>

namespace {

bool waitUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(5);
    }
    return true;
}

void pause(int ms) {
    waitUntil([] { return false; }, ms);
}

void shoot(AppDelegate& app, const QString& file) {
    pause(400); // past the fade-in and the resize
    app.window()->grab().save(file);
    std::printf("%s\n", qPrintable(file));
}

void writeFile(const QByteArray& path, qint64 size, char fill) {
    QDir().mkpath(QFileInfo(QString::fromUtf8(path)).path());
    QFile file(QString::fromUtf8(path));
    file.open(QIODevice::WriteOnly);
    file.write(QByteArray(size, fill));
}

} // namespace

int main(int argc, char* argv[]) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTPUT_FOLDER [BIG_FOLDER]\n", argv[0]);
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    const QByteArray big = argc > 2 ? QByteArray(argv[2]) : QByteArray("/usr/share");
    AppIcons::setUpTheme();
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));

    TempEnvironment environment;
    const QByteArray demo = QFile::encodeName(QDir::tempPath()) + "/twinsift-demo";
    QDir(QString::fromUtf8(demo)).removeRecursively();
    for (int i = 0; i < 12; ++i)
        writeFile(
            demo + "/Pictures/Holiday/IMG_" + QByteArray::number(4100 + i) + ".jpg", 900000 + i * 37000, char('a' + i));
    for (int i = 0; i < 5; ++i)
        writeFile(demo + "/Pictures/Imported/IMG_" + QByteArray::number(4100 + i) + ".jpg", 900000 + i * 37000,
            char('a' + i));
    writeFile(demo + "/Documents/Report 2023.pdf", 2400000, 'r');
    writeFile(demo + "/Documents/Old/Report 2023 copy.pdf", 2400000, 'r');
    writeFile(demo + "/Documents/Notes.txt", 180000, 'n');
    writeFile(demo + "/Music/Album/01 Opening.flac", 8300000, 'm');
    writeFile(demo + "/Music/Album/02 Theme.flac", 7100000, 't');

    ScriptedPrompter prompter;
    AppDelegate app(prompter);
    app.applicationDidFinishLaunching();
    mainView* setup = app.mainViewObj();
    setup->checkAndReloadTableView({ demo + "/Pictures", demo + "/Documents", demo + "/Music" });
    setup->model()->waitForSizes();
    shoot(app, out + QStringLiteral("/setup.png"));

    app.nextButtonAction_toolbar();
    waitUntil([&] { return app.typetoolbar() == 3 || app.typetoolbar() == 4; }, 60000);
    shoot(app, out + QStringLiteral("/groups-found.png"));

    app.nextButtonAction_toolbar();
    app.backButtonAction_toolbar();
    setup->checkAndReloadTableView({ big });
    app.nextButtonAction_toolbar();
    pause(1200);
    shoot(app, out + QStringLiteral("/scanning.png"));
    waitUntil([&] { return !app.state().isScanRunning; }, 600000);
    QDir(QString::fromUtf8(demo)).removeRecursively();
    return 0;
}
