#include "engine/ScanHarness.h"
#include "removal/DiskFixture.h"
#include "removal/RemovalPlan.h"
#include "removal/RemovalReview.h"
#include "removal/Trash.h"
#include "review/ResultFixture.h"
#include "review/ResultLists.h"
#include "review/Selection.h"
#include "support/TempTree.h"

#include <QThread>
#include <QtTest>
#include <sys/mount.h>

namespace {

using Action = RemovalActions::Action;

struct Review {
    explicit Review(ScanState& scanned)
        : state(scanned) { }
    ScanState& state;
    Selection selection;
    ResultLists lists { state, selection };
    QList<FileDictionary> older;
    RemovalReview review { state, selection, lists, older };
};

// What an item holds, links not followed: a file's bytes, a folder's whole tree; empty when it is
// missing or is a link.
QByteArray contentOf(const QByteArray& path) {
    struct stat st;
    if (::lstat(path.constData(), &st) != 0 || S_ISLNK(st.st_mode))
        return {};
    if (!S_ISDIR(st.st_mode)) {
        QFile file(QString::fromLocal8Bit(path));
        return file.open(QIODevice::ReadOnly) ? "f:" + file.readAll() : QByteArray();
    }
    QByteArray tree = "d:";
    const QMap<QByteArray, QByteArray> items = snapshot(path);
    for (auto it = items.cbegin(); it != items.cend(); ++it)
        tree += it.key() + '=' + it.value() + ';';
    return tree;
}

// Every group's content as it was before a removal, to be found again afterwards at one of its paths.
QList<std::pair<QByteArray, QList<QByteArray>>> contentsOf(const QList<DuplicateGroupPtr>& groups) {
    QList<std::pair<QByteArray, QList<QByteArray>>> out;
    for (const DuplicateGroupPtr& group : groups) {
        QList<QByteArray> paths;
        for (const DuplicateFilePtr& member : group->listAll())
            paths.append(member->urlFile());
        out.append({ contentOf(paths.first()), paths });
    }
    return out;
}

// The paths of the groups that no longer hold their content anywhere.
QList<QByteArray> lostContents(const QList<std::pair<QByteArray, QList<QByteArray>>>& before) {
    QList<QByteArray> lost;
    for (const auto& [content, paths] : before) {
        if (std::none_of(
                paths.cbegin(), paths.cend(), [&](const QByteArray& path) { return contentOf(path) == content; }))
            lost.append(paths.first());
    }
    return lost;
}

ino_t inodeOf(const QByteArray& path) {
    struct stat st;
    return ::lstat(path.constData(), &st) == 0 ? st.st_ino : 0;
}

// A bind mount for one test (root only); `ok` is false where it is not allowed.
class BindMount {
public:
    BindMount(const QByteArray& from, const QByteArray& to)
        : m_to(to) {
        ::mkdir(to.constData(), 0755);
        ok = ::mount(from.constData(), to.constData(), nullptr, MS_BIND, nullptr) == 0;
    }
    ~BindMount() {
        if (ok)
            ::umount2(m_to.constData(), MNT_DETACH);
    }
    BindMount(const BindMount&) = delete;
    BindMount& operator=(const BindMount&) = delete;
    bool ok = false;

private:
    QByteArray m_to;
};

} // namespace

class TestSafety : public QObject {
    Q_OBJECT

private slots:
    // A file group overlapping a folder group (a copy directly in the target is grouped with the
    // copies inside two folders before those folders are grouped): whatever the keep rule and the
    // action, every content keeps a copy that is a real file, and every link points at one.
    void nestedGroupsKeepEveryContent_data() {
        QTest::addColumn<int>("action");
        QTest::addColumn<bool>("keepNewest");
        for (int action = 0; action < 5; ++action) {
            for (const bool newest : { true, false }) {
                QTest::addRow(
                    "%s, keep %s", qPrintable(RemovalActions::title(Action(action))), newest ? "newest" : "oldest")
                    << action << newest;
            }
        }
    }
    void nestedGroupsKeepEveryContent() {
        QFETCH(int, action);
        QFETCH(bool, keepNewest);
        TempEnvironment environment;
        TempTree tree;
        const NestedCopies copies(tree);

        ScanHarness scan;
        scan.scan({ tree.path("t") });
        QCOMPARE(scan.state.duplicateMainArray.size(), 2);
        const auto before = contentsOf(scan.state.duplicateMainArray);
        Review f(scan.state);
        f.selection.AutoSelectAction(
            keepNewest ? Selection::keepNewestTitle() : Selection::keepOldestTitle(), scan.state.duplicateMainArray);
        // The sheet says before the question which files will be left alone.
        f.review.updatePlan();
        QVERIFY(f.review.leftCount() > 0);
        qsizetype shownLeft = 0;
        for (qsizetype row = 0; row < f.review.numberOfRows(); ++row)
            shownLeft += !f.review.leftReasonAtRow(row).isEmpty();
        QCOMPARE(shownLeft, f.review.leftCount());
        const QList<RemovalActions::Outcome> outcomes = f.review.runAction(Action(action));

        QCOMPARE(lostContents(before), QList<QByteArray>());
        QCOMPARE(tree.read("t/A/only-a.txt"), QByteArray("a\n"));
        for (const RemovalActions::Outcome& outcome : outcomes) {
            QVERIFY2(!outcome.keptCopy.isEmpty() || outcome.left, outcome.file->urlFile().constData());
            if (!outcome.done)
                QVERIFY2(outcome.left || Action(action) == Action::ReplaceWithHardlink, qPrintable(outcome.error));
            // A kept copy is never a link and never gone.
            if (outcome.done)
                QVERIFY(!contentOf(outcome.keptCopy).isEmpty());
        }
        // Something was removed: the plan leaves only what it must.
        QVERIFY(std::any_of(outcomes.cbegin(), outcomes.cend(), [](const auto& outcome) { return outcome.done; })
            || Action(action) == Action::ReplaceWithHardlink);

        // The window comes back with what is really left.
        f.review.refreshAndReload();
        quint64 members = 0;
        for (const DuplicateGroupPtr& group : scan.state.duplicateMainArray)
            members += static_cast<quint64>(group->listAll().size());
        QCOMPARE(scan.state.totalDuplicateCount.load(), members);
    }

    // The plan's answers for choices that would take a content's last copy, and what is acted on.
    void planLeavesWhatMustStay() {
        TempTree tree;
        const auto group
            = [&](const QList<QByteArray>& paths, qint64 size = 1) { return duplicates::initWithURL(paths, size); };
        // Every copy chosen: one stays.
        const DuplicateGroupPtr all = group({ tree.file("a1", "a"), tree.file("a2", "a"), tree.file("a3", "a") });
        // The only other copy of "loose" lies inside a chosen folder: the file is left rather than
        // the folder.
        tree.file("F1/x", "x");
        tree.file("F2/x", "x");
        const DuplicateGroupPtr folderPair = group({ tree.path("F1"), tree.path("F2") }, 100);
        const DuplicateGroupPtr inner = group({ tree.file("F1/in", "in"), tree.file("loose", "in") }, 1);
        // A hard-linked pair: the two paths are one file.
        const QByteArray h1 = tree.file("h1", "h");
        const QByteArray h2 = tree.path("h2");
        QCOMPARE(::link(h1.constData(), h2.constData()), 0);
        const DuplicateGroupPtr linked = group({ h1, h2 });
        const DuplicateFilePtr stranger = std::make_shared<duplicateFile>(tree.file("stranger", "s"), 0);

        const QList<DuplicateFilePtr> chosen = { all->listAll()[0], all->listAll()[1], all->listAll()[2],
            folderPair->listAll()[0], inner->listAll()[1], linked->listAll()[1], stranger };
        const RemovalPlan plan(chosen, { all, folderPair, inner, linked });
        QHash<QByteArray, QString> left;
        QHash<QByteArray, QByteArray> kept;
        for (const RemovalPlan::Item& item : plan.items()) {
            if (item.isLeft())
                left.insert(item.file->urlFile(), item.leftReason);
            else
                kept.insert(item.file->urlFile(), item.kept->urlFile());
        }
        QCOMPARE(left.value(tree.path("a1")), RemovalPlan::lastCopyText());
        QCOMPARE(kept.value(tree.path("a3")), tree.path("a1"));
        QCOMPARE(kept.value(tree.path("F1")), tree.path("F2"));
        QCOMPARE(left.value(tree.path("loose")), RemovalPlan::lastCopyText());
        QCOMPARE(left.value(h2), RemovalPlan::sameFileText());
        QCOMPARE(left.value(tree.path("stranger")), RemovalPlan::notOnScreenText());
        QCOMPARE(plan.leftCount(), 4);
        // Items to act on come first.
        QVERIFY(!plan.items().front().isLeft());
        QVERIFY(plan.items().back().isLeft());

        // Nothing inside a protected folder, nor a folder that holds one, is ever acted on.
        const DuplicateGroupPtr guarded = group({ tree.file("M/keep/z", "z"), tree.file("N/z", "z") });
        const DuplicateGroupPtr holders = group({ tree.path("M"), tree.file("O/keep/z", "z") }, 5);
        const RemovalPlan shielded({ guarded->listAll()[0], holders->listAll()[0], guarded->listAll()[1] },
            { guarded, holders }, { tree.path("M/keep") });
        QCOMPARE(shielded.items().size(), size_t(3));
        QCOMPARE(shielded.leftCount(), 2);
        for (const RemovalPlan::Item& item : shielded.items()) {
            if (item.file->urlFile() == tree.path("N/z"))
                QVERIFY(!item.isLeft());
            else
                QCOMPARE(item.leftReason, RemovalPlan::protectedText());
        }

        // A chosen file inside a chosen folder goes with the folder.
        const DuplicateGroupPtr nested = group({ tree.file("G1/y", "y"), tree.file("G2/y", "y") });
        const DuplicateGroupPtr outer = group({ tree.path("G1"), tree.path("G2") }, 10);
        const RemovalPlan withFolder({ nested->listAll()[1], outer->listAll()[1] }, { nested, outer });
        QCOMPARE(withFolder.items().size(), size_t(2));
        QCOMPARE(withFolder.items()[0].file->urlFile(), tree.path("G2"));
        QCOMPARE(withFolder.items()[1].container, 0);
    }

    // Just before acting, each item is checked against what the scan saw and against its kept copy.
    void checkedJustBeforeActing_data() {
        QTest::addColumn<int>("action");
        for (int action = 0; action < 5; ++action)
            QTest::addRow("%s", qPrintable(RemovalActions::title(Action(action)))) << action;
    }
    void checkedJustBeforeActing() {
        QFETCH(int, action);
        TempEnvironment environment;
        TempTree tree;
        ScanState state;
        const auto add = [&](const QList<QByteArray>& paths) {
            state.duplicateMainArray.append(duplicates::initWithURL(paths, 1));
            return state.duplicateMainArray.last()->listAll()[1];
        };
        const DuplicateFilePtr grown = add({ tree.file("k1", "same"), tree.file("d1", "same") });
        const DuplicateFilePtr edited = add({ tree.file("k2", "same"), tree.file("d2", "same") });
        const DuplicateFilePtr gone = add({ tree.file("k3", "same"), tree.file("d3", "same") });
        tree.file("H1/f", "f");
        tree.file("H2/f", "f");
        tree.file("H1/.notes", "mine");
        const DuplicateFilePtr hidden = add({ tree.path("H1"), tree.path("H2") });
        tree.symlink("L1/link", "/somewhere");
        tree.symlink("L2/link", "/elsewhere");
        const DuplicateFilePtr links = add({ tree.path("L1"), tree.path("L2") });
        tree.file("P1/.cfg/state", "one");
        tree.file("P2/.cfg/state", "two");
        const DuplicateFilePtr hiddenFolder = add({ tree.path("P1"), tree.path("P2") });
        tree.file("S1/.cfg/state", "same");
        tree.file("S2/.cfg/state", "same");
        tree.symlink("S1/l", "t");
        tree.symlink("S2/l", "t");
        const DuplicateFilePtr equalFolders = add({ tree.path("S1"), tree.path("S2") });
        const DuplicateFilePtr fine = add({ tree.file("k4", "four"), tree.file("d4", "four") });

        // After the scan: one file grows, one is rewritten with its length and time kept, one goes.
        tree.file("d1", "same, and more");
        struct stat st;
        ::lstat(tree.path("d2").constData(), &st);
        tree.file("d2", "SAME");
        const struct timespec times[2] = { st.st_atim, st.st_mtim };
        ::utimensat(AT_FDCWD, tree.path("d2").constData(), times, AT_SYMLINK_NOFOLLOW);
        ::unlink(tree.path("d3").constData());

        Review f(state);
        f.selection.duplicateSelectedArray = { grown, edited, gone, hidden, links, hiddenFolder, equalFolders, fine };
        LogCapture log;
        const QList<RemovalActions::Outcome> outcomes = f.review.runAction(Action(action));
        QHash<QByteArray, QString> why;
        for (const RemovalActions::Outcome& outcome : outcomes)
            why.insert(outcome.file->urlFile(), outcome.done ? QStringLiteral("done") : outcome.error);
        const bool hardLink = Action(action) == Action::ReplaceWithHardlink;
        QCOMPARE(why.value(tree.path("d1")), RemovalActions::changedText());
        QCOMPARE(why.value(tree.path("d2")), RemovalActions::differsText());
        QCOMPARE(why.value(tree.path("d3")), RemovalActions::changedText());
        const QString folderDiffers
            = hardLink ? QStringLiteral("Operation not permitted") : RemovalActions::differsText();
        QCOMPARE(why.value(tree.path("H2")), folderDiffers);
        QCOMPARE(why.value(tree.path("L2")), folderDiffers);
        QCOMPARE(why.value(tree.path("P2")), folderDiffers);
        QCOMPARE(
            why.value(tree.path("S2")), hardLink ? QStringLiteral("Operation not permitted") : QStringLiteral("done"));
        QCOMPARE(why.value(tree.path("d4")), QStringLiteral("done"));
        QVERIFY(log.lines.contains(tree.path("d2") + " left alone: " + RemovalActions::differsText()));
        // What was left is untouched.
        QCOMPARE(tree.read("d1"), QByteArray("same, and more"));
        QCOMPARE(tree.read("d2"), QByteArray("SAME"));
        QCOMPARE(tree.read("H1/.notes"), QByteArray("mine"));
        QCOMPARE(tree.read("P2/.cfg/state"), QByteArray("two"));

        // Only what was done leaves the result.
        f.review.refreshAndReload();
        QCOMPARE(state.duplicateMainArray.size(), hardLink ? 7 : 6);
    }

    // A folder of the tree swapped for a link (or another folder) between the scan and the action, or
    // at the worst moment inside it: nothing outside the tree changes, and the item is left.
    void swappedFoldersNeverRedirectAnAction_data() {
        QTest::addColumn<int>("action");
        QTest::addColumn<QString>("swap");
        QTest::addColumn<bool>("atCheck");
        for (int action = 0; action < 5; ++action) {
            for (const char* swap : { "folder to link", "item to link", "folder replaced" }) {
                for (const bool atCheck : { false, true }) {
                    QTest::addRow("%s, %s, %s", qPrintable(RemovalActions::title(Action(action))), swap,
                        atCheck ? "at the check" : "before")
                        << action << QString::fromLatin1(swap) << atCheck;
                }
            }
        }
    }
    void swappedFoldersNeverRedirectAnAction() {
        QFETCH(int, action);
        QFETCH(QString, swap);
        QFETCH(bool, atCheck);
        TempEnvironment environment;
        TempTree tree;
        const QByteArray outside = tree.file("outside/dup.dat", "same bytes");
        const ino_t outsideInode = inodeOf(outside);
        tree.file("scanned/keep/dup.dat", "same bytes");
        tree.file("scanned/sub/dup.dat", "same bytes");
        tree.file("scanned/keep/not-a-twin", "k");
        ScanHarness scan;
        scan.scan({ tree.path("scanned") });
        const QList<QList<QByteArray>> expectedGroups { { tree.path("scanned/keep/dup.dat"),
            tree.path("scanned/sub/dup.dat") } };
        QCOMPARE(scan.groups(), expectedGroups);
        const DuplicateGroupPtr group = scan.state.duplicateMainArray.first();
        const DuplicateFilePtr chosen
            = group->listAll()[0]->urlFile().contains("/sub/") ? group->listAll()[0] : group->listAll()[1];

        const auto doSwap = [&] {
            const QByteArray sub = tree.path("scanned/sub");
            if (swap == QLatin1String("folder to link")) {
                QCOMPARE(::rename(sub.constData(), tree.path("scanned/sub.old").constData()), 0);
                QCOMPARE(::symlink(tree.path("outside").constData(), sub.constData()), 0);
            } else if (swap == QLatin1String("item to link")) {
                QCOMPARE(::rename(chosen->urlFile().constData(), tree.path("scanned/moved.dat").constData()), 0);
                QCOMPARE(::symlink(outside.constData(), chosen->urlFile().constData()), 0);
            } else {
                QCOMPARE(::rename(sub.constData(), tree.path("scanned/sub.old").constData()), 0);
                tree.file("scanned/sub/dup.dat", "same bytes");
            }
        };
        if (atCheck)
            RemovalActions::setCheckedHook([&](const QByteArray&) { doSwap(); });
        else
            doSwap();
        Review f(scan.state);
        f.selection.duplicateSelectedArray = { chosen };
        const QList<RemovalActions::Outcome> outcomes = f.review.runAction(Action(action));
        RemovalActions::setCheckedHook({});

        QCOMPARE(outcomes.size(), 1);
        QVERIFY(!outcomes[0].done);
        QCOMPARE(outcomes[0].error, RemovalActions::changedText());
        QVERIFY(outcomes[0].left);
        QCOMPARE(snapshot(tree.path("outside")), (QMap<QByteArray, QByteArray> { { "dup.dat", "f:same bytes" } }));
        QCOMPARE(inodeOf(outside), outsideInode);
        QCOMPARE(tree.read("scanned/keep/dup.dat"), QByteArray("same bytes"));
        QVERIFY(snapshot(environment.dataHome()).isEmpty()
            || snapshot(QByteArray(environment.dataHome() + "/Trash/files")).isEmpty());
    }

    // One file reached by two paths (a bind mount): removing "the copy" would remove the only file,
    // and a folder removed for good never empties a mount inside it.
    void sameFileByTwoPathsAndMountsInside() {
        TempEnvironment environment;
        TempTree tree;
        tree.file("data/only.dat", "the only copy");
        BindMount bind(tree.path("data"), tree.path("view"));
        if (!bind.ok)
            QSKIP("bind mounts need root");
        ScanState state;
        state.duplicateMainArray.append(
            duplicates::initWithURL({ tree.path("data/only.dat"), tree.path("view/only.dat") }, 1));
        Review f(state);
        f.selection.duplicateSelectedArray = { state.duplicateMainArray[0]->listAll()[1] };
        const QList<RemovalActions::Outcome> outcomes = f.review.runAction(Action::PermanentDelete);
        QVERIFY(outcomes[0].left);
        QCOMPARE(outcomes[0].error, RemovalPlan::sameFileText());
        QCOMPARE(tree.read("data/only.dat"), QByteArray("the only copy"));

        // Two equal folders, one of them holding a bind mount: the copy is not removed.
        tree.file("A/f", "f");
        tree.file("B/f", "f");
        tree.folder("A/m");
        tree.folder("B/m");
        BindMount inside(tree.path("data"), tree.path("B/m"));
        QVERIFY(inside.ok);
        ScanState folders;
        folders.duplicateMainArray.append(duplicates::initWithURL({ tree.path("A"), tree.path("B") }, 1));
        Review g(folders);
        g.selection.duplicateSelectedArray = { folders.duplicateMainArray[0]->listAll()[1] };
        const QList<RemovalActions::Outcome> removed = g.review.runAction(Action::PermanentDelete);
        QVERIFY(!removed[0].done);
        QCOMPARE(tree.read("data/only.dat"), QByteArray("the only copy"));
    }

    // A disk's trash folder that is a link (to anywhere) is never used.
    void linkedTrashFolderIsNotUsed() {
        TempEnvironment environment;
        TempTree tree;
        TmpfsMount mount(tree.path("disk"));
        if (!mount.ok)
            QSKIP("cannot mount a tmpfs here");
        tree.folder("elsewhere");
        const QByteArray uid = QByteArray::number(::getuid());
        tree.symlink("disk/.Trash-" + uid, tree.path("elsewhere"));
        const QByteArray item = tree.file("disk/item", "x");
        const Trash::Result result = Trash::moveToTrash(item);
        QVERIFY(!result.ok());
        QCOMPARE(tree.read("disk/item"), QByteArray("x"));
        QVERIFY(snapshot(tree.path("elsewhere")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSafety)
#include "tst_safety.moc"
