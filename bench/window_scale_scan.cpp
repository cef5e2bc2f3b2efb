// window_scale --scan FOLDER: a real scan of FOLDER in the window, with the minimum size at 0, the
// result screen after it, what the window keeps of the result, and the steps that work on the
// whole result. Nothing on disk is changed.
#include "bench/WindowScale.h"

#include "app/AppDelegate.h"
#include "app/mainView.h"
#include "removal/DeletingPanel.h"
#include "review/GroupListModel.h"
#include "review/ResultLists.h"
#include "review/resultView.h"

#include <QAction>
#include <QPushButton>
#include <QTemporaryDir>

int WindowScale::runScan(const QByteArray& folder) {
    QTemporaryDir work(QDir::tempPath() + QStringLiteral("/window-scale-XXXXXX"));
    for (const char* name : { "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME" })
        qputenv(name, QByteArray(work.path().toUtf8() + '/' + name));
    YesPrompter prompter;
    AppDelegate app(prompter);
    app.applicationDidFinishLaunching();
    app.settingsStore().setDouble(QStringLiteral("SkipLessThen"), 0.0);
    resultView* screen = app.resultViewObj();
    GroupListModel* rows = screen->groupModel();
    ResultLists& lists = app.resultLists();
    Heartbeat beat;
    Report report;

    app.mainViewObj()->checkAndReloadTableView({ folder });
    const qint64 before = residentBytes();
    // The scan, and the result screen asked for as soon as the scan has ended.
    QElapsedTimer clock;
    clock.start();
    beat.reset();
    const qint64 cpuBefore = threadCpuMs();
    app.nextButtonAction_toolbar();
    const bool scanned = waitFor([&] { return app.typetoolbar() == 3 || app.typetoolbar() == 4; }, 3600000);
    const qint64 scanMs = clock.elapsed();
    const qint64 scanGap = beat.longest();
    const qint64 scanCpu = threadCpuMs() - cpuBefore;
    const qsizetype groups = app.state().duplicateMainArray.size();
    const auto files = static_cast<qint64>(app.state().totalCount.load());
    std::printf("window_scale: %s, %lld files, %lld groups\n", folder.constData(), static_cast<long long>(files),
        static_cast<long long>(groups));
    std::printf("%-28s longest gap %5lld ms, done in %6lld ms, window thread busy %5lld ms%s\n", "scan",
        static_cast<long long>(scanGap), static_cast<long long>(scanMs), static_cast<long long>(scanCpu),
        scanned ? "" : " (TIMED OUT)");
    report.longestGap = scanGap;
    report.step(
        "scan end to result screen", beat, [&] { app.nextButtonAction_toolbar(); },
        [&] { return app.typewindow() == 2 && rows->rowCount() == groups && !lists.isBusy(); });
    // What the window keeps once it has settled: the search's index is made after the first list.
    waitFor([] { return false; }, 3000);
    const qint64 kept = residentBytes() - before;
    const qint64 peak = peakResidentBytes() - before;
    std::printf("%-28s %lld bytes per file scanned (%lld MB), at most %lld bytes per file (%lld MB)\n",
        "memory with the result", static_cast<long long>(kept / std::max<qint64>(files, 1)),
        static_cast<long long>(kept >> 20), static_cast<long long>(peak / std::max<qint64>(files, 1)),
        static_cast<long long>(peak >> 20));

    // A step that changes the list is done when the group table has been reloaded with its rows.
    int resets = 0;
    QObject::connect(rows, &QAbstractItemModel::modelReset, rows, [&resets] { ++resets; });
    const auto shows = [&](qsizetype n) {
        const int before = resets;
        return [&, n, before] { return resets > before && rows->rowCount() == n && !lists.isBusy(); };
    };
    report.step(
        "sort by wasted size", beat, [&] { screen->sortItem(ResultLists::WastedSize)->trigger(); }, shows(groups));
    report.step(
        "sort by name", beat, [&] { screen->sortItem(ResultLists::OriginalFilename)->trigger(); }, shows(groups));
    Selection& selection = app.selection();
    report.step(
        "Auto Select", beat, [&] { screen->autoSelectItem(Selection::keepOldestTitle())->trigger(); },
        [&] { return !screen->isChoosing() && !selection.isEmpty(); });
    report.step(
        "open review sheet", beat, [&] { app.nextButtonAction_toolbar(); },
        [&] {
            return app.deleteingWindow() && app.deleteingWindow()->isVisible() && !app.deleteingWindow()->isChecking();
        });
    report.step(
        "cancel review sheet", beat, [&] { app.deleteingWindow()->back()->click(); },
        [&] { return !app.deleteingWindow()->isVisible(); });
    report.step(
        "Deselect All", beat, [&] { screen->deselectAllBtn()->click(); }, [&] { return selection.isEmpty(); });
    std::printf("window_scale: %lld groups, longest gap %lld ms, scan %lld files/s\n", static_cast<long long>(groups),
        static_cast<long long>(report.longestGap), static_cast<long long>(scanMs > 0 ? files * 1000 / scanMs : 0));
    return 0;
}
