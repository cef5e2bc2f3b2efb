// How the window copes with a large result: builds N duplicate groups in memory (most of them paths
// that do not exist, and a part made of real files in a temporary folder), shows them on the result
// screen of the real window (offscreen platform) and drives the screen as a user would. A 10 ms
// timer on the interface thread records the longest gap between its ticks: the longest stretch in
// which the window could not have answered input. Each step prints its longest gap and its time to
// done; the last line sums up.
//
//   window_scale [--groups N] [--removal M]
//   window_scale --scan FOLDER        a real scan of FOLDER instead (window_scale_scan.cpp)
#include "bench/WindowScale.h"

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "base/FileSystem.h"
#include "base/PathBytes.h"
#include "detect/FileType.h"
#include "removal/DeletingPanel.h"
#include "review/GroupListModel.h"
#include "review/ResultLists.h"
#include "review/resultView.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

using namespace WindowScale;

namespace {

struct Synthetic {
    QList<DuplicateGroupPtr> groups;
    qint64 files = 0;
    QByteArray realRoot;
};

// Leaf names of the fictional groups, with their categories; a few are not plain ASCII.
struct Kind {
    const char* pattern;
    int type;
};
constexpr Kind kKinds[] = { { "IMG_%06d.JPG", FileType::Photo }, { "holiday %d.png", FileType::Photo },
    { "Track %d.mp3", FileType::Media }, { "clip-%d.mp4", FileType::Media }, { "Report %d.pdf", FileType::Text },
    { "notes_%d.txt", FileType::Text }, { "backup-%d.zip", FileType::Archive }, { "Projekt %d", FileType::Folder },
    { "setup-%d.bin", FileType::Other }, { "caf\xc3\xa9 %d.txt", FileType::Text },
    { "\xc3\x9c"
      "bung %d.odt",
        FileType::Text } };

DuplicateFilePtr fictional(const QByteArray& path, qint64 date) {
    return std::make_shared<duplicateFile>(path, date);
}

// `count` groups; `real` of them made of real files (two copies of 200 bytes each, a hundred per
// name, so that the trash fills with files of one name) below `realRoot`.
Synthetic makeResult(qsizetype count, qsizetype real, const QByteArray& realRoot) {
    Synthetic out;
    out.realRoot = realRoot;
    out.groups.reserve(count);
    quint32 seed = 12345;
    auto next = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return seed >> 8;
    };
    const qsizetype fake = count - real;
    for (qsizetype i = 0; i < fake; ++i) {
        const Kind& kind = kKinds[next() % std::size(kKinds)];
        const QByteArray leaf = QString::asprintf(kind.pattern, static_cast<int>(next() % 1000000)).toUtf8();
        const int copies = i % 10 == 0 ? 3 : 2;
        QList<DuplicateFilePtr> members;
        for (int c = 0; c < copies; ++c) {
            const QByteArray folder = QString::asprintf("/nonexistent-window-scale/%s/%04u/%03u",
                c == 0 ? "home" : "backup", static_cast<unsigned>(next() % 5000), static_cast<unsigned>(i % 997))
                                          .toUtf8();
            members.append(fictional(folder + '/' + leaf, 1'600'000'000'000'000'000LL + c));
        }
        auto group = std::make_shared<duplicates>();
        group->setOriginal(members.first()->urlFile());
        group->setListAll(members);
        group->setSizeFile(4096 * static_cast<qint64>(1 + next() % 5000));
        group->setType(kind.type);
        out.files += copies;
        out.groups.append(group);
    }
    for (qsizetype i = 0; i < real; ++i) {
        const QByteArray name
            = QString::asprintf("d%04lld/a%03lld.dat", static_cast<long long>(i / 100), static_cast<long long>(i % 100))
                  .toUtf8();
        const QByteArray body = QByteArray::number(static_cast<qlonglong>(i)).rightJustified(8, '0').repeated(25);
        QList<DuplicateFilePtr> members;
        for (const char* side : { "keep", "dup" }) {
            const QByteArray path = realRoot + '/' + side + '/' + name;
            if (i % 100 == 0)
                ::mkdir(PathBytes::deletingLastPathComponent(path).constData(), 0700);
            const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
            if (fd < 0 || ::write(fd, body.constData(), static_cast<size_t>(body.size())) != body.size())
                std::fprintf(stderr, "window_scale: cannot write %s\n", path.constData());
            ::close(fd);
            FileSystem::ItemInfo info;
            FileSystem::stat(path, info);
            auto member = std::make_shared<duplicateFile>(path, info.creationNs() + (members.isEmpty() ? 0 : 1));
            member->setIdentity(ItemIdentity::of(info));
            members.append(member);
        }
        auto group = std::make_shared<duplicates>();
        group->setOriginal(members.first()->urlFile());
        group->setListAll(members);
        group->setSizeFile(4096);
        group->setType(FileType::Other);
        out.files += 2;
        out.groups.append(group);
    }
    // The real groups lie among the others, as a scan would find them.
    for (qsizetype i = out.groups.size() - 1; i > 0; --i)
        out.groups.swapItemsAt(i, static_cast<qsizetype>(next() % static_cast<quint32>(i + 1)));
    return out;
}

qsizetype countWhere(const QList<DuplicateGroupPtr>& groups, const std::function<bool(const duplicates&)>& keep) {
    return std::count_if(groups.begin(), groups.end(), [&](const DuplicateGroupPtr& g) { return keep(*g); });
}

bool pathsContain(const duplicates& group, const QByteArray& lowered) {
    for (const DuplicateFilePtr& file : group.listAll()) {
        if (file->urlFile().toLower().contains(lowered))
            return true;
    }
    return false;
}

} // namespace

int WindowScale::runSynthetic(qsizetype count, qsizetype real) {
    QTemporaryDir work(QDir::tempPath() + QStringLiteral("/window-scale-XXXXXX"));
    for (const char* name : { "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME" })
        qputenv(name, QByteArray(work.path().toUtf8() + '/' + name));
    const QByteArray realRoot = work.path().toUtf8() + "/window-scale-real";
    ::mkdir(realRoot.constData(), 0700);
    ::mkdir(QByteArray(realRoot + "/keep").constData(), 0700);
    ::mkdir(QByteArray(realRoot + "/dup").constData(), 0700);

    YesPrompter prompter;
    AppDelegate app(prompter);
    app.applicationDidFinishLaunching();
    resultView* screen = app.resultViewObj();
    GroupListModel* rows = screen->groupModel();
    ResultLists& lists = app.resultLists();
    Heartbeat beat;
    Report report;

    const qint64 before = residentBytes();
    app.resetResultScreenForNewScan();
    Synthetic result = makeResult(count, real, realRoot);
    const QList<DuplicateGroupPtr> groups = result.groups;
    app.state().duplicateMainArray = groups;
    app.state().scanRoots = { work.path().toUtf8() };
    quint64 members = 0;
    quint64 wasted = 0;
    for (const DuplicateGroupPtr& g : groups) {
        members += static_cast<quint64>(g->listAll().size());
        wasted += static_cast<quint64>(g->sizeFile()) * static_cast<quint64>(g->listAll().size());
    }
    app.state().totalDuplicateCount = members;
    app.state().wastedSpaceDuplicates = wasted;
    std::printf("window_scale: %lld groups, %lld files, %lld of them real\n", static_cast<long long>(count),
        static_cast<long long>(result.files), static_cast<long long>(2 * real));

    // A step that changes the list is done when the group table has been reloaded with its rows.
    int resets = 0;
    QObject::connect(rows, &QAbstractItemModel::modelReset, rows, [&resets] { ++resets; });
    const auto shows = [&](qsizetype n) {
        const int before = resets;
        return [&, n, before] { return resets > before && rows->rowCount() == n && !lists.isBusy(); };
    };
    app.makeWindowFor(1);
    report.step(
        "scan end to result screen", beat,
        [&] {
            app.AfterScanningDone();
            app.nextButtonAction_toolbar();
        },
        [&] { return app.typewindow() == 2 && rows->rowCount() == count && !lists.isBusy(); });
    std::printf("%-28s %lld bytes per file\n", "memory with the result", (residentBytes() - before) / result.files);

    const qsizetype photos = countWhere(groups, [](const duplicates& g) { return g.type() == FileType::Photo; });
    report.step(
        "type filter Photo", beat, [&] { screen->filterButton(FileType::Photo)->click(); }, shows(photos));
    report.step(
        "type filter All", beat, [&] { screen->filterButton(FileType::AllTypes)->click(); }, shows(count));

    QLineEdit* search = screen->searchALL();
    const QString typed = QStringLiteral("report 12");
    const qsizetype matching = countWhere(groups, [&](const duplicates& g) { return pathsContain(g, "report 12"); });
    report.step(
        "search typed", beat,
        [&] {
            for (const QChar c : typed) {
                search->insert(QString(c));
                waitFor([] { return false; }, 60);
            }
        },
        shows(matching));
    report.step(
        "search cleared", beat, [&] { search->clear(); }, shows(count));

    // Each sort is asked for twice: the second time the order is one worked out before.
    for (int round = 1; round <= 2; ++round) {
        const char* names[] = { "sort by wasted size", "sort descending", "sort by name", "sort ascending" };
        const quint64 tags[] = { ResultLists::WastedSize, ResultLists::Descending, ResultLists::OriginalFilename,
            ResultLists::Ascending };
        for (int i = 0; i < 4; ++i) {
            const QByteArray name = QByteArray(names[i]) + (round == 1 ? "" : " again");
            report.step(
                name.constData(), beat, [&] { screen->sortItem(tags[i])->trigger(); }, shows(count));
        }
    }

    Selection& selection = app.selection();
    report.step(
        "Auto Select", beat, [&] { screen->autoSelectItem(Selection::keepOldestTitle())->trigger(); },
        [&] { return static_cast<quint64>(selection.duplicateSelectedArray.size()) == members - count; });
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

    // The removal: the real groups, found by a search, their newer copies moved to the trash.
    search->setText(QStringLiteral("window-scale-real"));
    waitFor(shows(real));
    screen->autoSelectItem(Selection::keepOldestTitle())->trigger();
    waitFor([&] { return !screen->isChoosing(); });
    app.nextButtonAction_toolbar();
    waitFor([&] { return app.deleteingWindow()->isVisible() && !app.deleteingWindow()->isChecking(); });
    qint64 removalMs = 0;
    DeletingPanel* sheet = app.deleteingWindow();
    report.step(
        "removal", beat, [&] { sheet->tDelete()->click(); },
        [&] {
            // Anything left alone is listed first; the sheet then closes with "Done".
            if (sheet->isShowingOutcome() && !sheet->isUpdating() && sheet->isVisible())
                sheet->doneButton()->click();
            return !sheet->isVisible() && !lists.isBusy();
        },
        &removalMs);
    const qsizetype left = rows->rowCount();
    const qint64 rate = removalMs > 0 ? real * 1000 / removalMs : 0;
    if (left != 0 || !app.state().duplicateMainArray.size())
        std::printf("window_scale: %lld real groups still listed after the removal\n", static_cast<long long>(left));
    std::printf("window_scale: %lld groups, longest gap %lld ms, removal %lld files/s\n", static_cast<long long>(count),
        static_cast<long long>(report.longestGap), static_cast<long long>(rate));
    return 0;
}

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    qsizetype groups = 500000;
    qsizetype removal = 50000;
    QByteArray scan;
    const QStringList args = QCoreApplication::arguments();
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--groups"))
            groups = args[i + 1].toLongLong();
        else if (args[i] == QLatin1String("--removal"))
            removal = args[i + 1].toLongLong();
        else if (args[i] == QLatin1String("--scan"))
            scan = QFile::encodeName(QFileInfo(args[i + 1]).absoluteFilePath());
    }
    if (!scan.isEmpty())
        return runScan(scan);
    removal = std::min(removal, groups);
    return runSynthetic(groups, removal);
}
