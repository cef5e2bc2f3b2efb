#include "base/PathBytes.h"
#include "engine/ScanState.h"
#include "removal/DiskFixture.h"
#include "removal/RemovalPlan.h"
#include "removal/RemovalReview.h"
#include "removal/RemovalTexts.h"
#include "review/ResultFixture.h"
#include "review/ResultLists.h"
#include "review/Selection.h"
#include "support/ScriptedPrompter.h"
#include "support/TempTree.h"

#include <QtTest>

namespace {

using Action = RemovalActions::Action;

// The application's shared state as the review sheet sees it.
struct Review {
    ScanState state;
    Selection selection;
    ResultLists lists { state, selection };
    QList<FileDictionary> older;
    RemovalReview review { state, selection, lists, older };

    DuplicateGroupPtr add(const DuplicateGroupPtr& group) {
        state.duplicateMainArray.append(group);
        state.totalDuplicateCount += static_cast<quint64>(group->listAll().size());
        state.wastedSpaceDuplicates += static_cast<quint64>(group->sizeFile() * group->listAll().size());
        return group;
    }
    DuplicateGroupPtr addOnDisk(const QList<QByteArray>& paths, qint64 size = 4096) {
        return add(duplicates::initWithURL(paths, size));
    }
};

ino_t inodeOf(const QByteArray& path) {
    struct stat st;
    return ::lstat(path.constData(), &st) == 0 ? st.st_ino : 0;
}

} // namespace

class TestRemoval : public QObject {
    Q_OBJECT

private slots:
    void everyActionOnDisk_data() {
        QTest::addColumn<int>("action");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("aliasName"); // the Name= value of the link file
        const QList<std::pair<const char*, const char*>> names = { { "photo.jpg", "photo.jpg" },
            { "\xff\xfe.jpg", "\xef\xbf\xbd\xef\xbf\xbd.jpg" }, { "two\nlines.jpg", "two\\nlines.jpg" } };
        for (int action = 0; action < 5; ++action) {
            for (const auto& [name, aliasName] : names) {
                QTest::addRow(
                    "%s %s", qPrintable(RemovalActions::title(Action(action))), QByteArray(name).toHex().constData())
                    << action << QByteArray(name) << QByteArray(aliasName);
            }
        }
    }
    void everyActionOnDisk() {
        QFETCH(int, action);
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, aliasName);
        TempEnvironment environment;
        TempTree tree;
        const QByteArray kept = tree.file("A/" + name, "same");
        const QByteArray dup = tree.file("B/" + name, "same");
        tree.file("B/other", "stays");
        Review f;
        const DuplicateGroupPtr group = f.addOnDisk({ kept, dup });
        QCOMPARE(group->original(), kept);
        f.selection.duplicateSelectedArray = { group->listAll()[1] };

        LogCapture log;
        const QList<RemovalActions::Outcome> outcomes = f.review.runAction(Action(action));
        QCOMPARE(outcomes.size(), 1);
        QVERIFY2(outcomes[0].done, qPrintable(outcomes[0].error));
        QCOMPARE(outcomes[0].keptCopy, kept);
        QCOMPARE(log.lines, QStringList());

        QMap<QByteArray, QByteArray> expected { { "A", "d" }, { "A/" + name, "f:same" }, { "B", "d" },
            { "B/other", "f:stays" } };
        switch (Action(action)) {
        case Action::MoveToTrash:
            QCOMPARE(tree.read(QByteArray(environment.dataHome() + "/Trash/files/" + name)), QByteArray("same"));
            break;
        case Action::PermanentDelete:
            break;
        case Action::ReplaceWithAlias:
            expected["B/" + name + ".Alise"] = "f:[Desktop Entry]\nType=Link\nName=" + aliasName + "\nURL=file://"
                + PathBytes::percentEncoded(kept) + "\n";
            break;
        case Action::ReplaceWithSymlink:
            expected["B/" + name] = "l:" + kept;
            break;
        case Action::ReplaceWithHardlink:
            expected["B/" + name] = "f:same";
            QCOMPARE(inodeOf(dup), inodeOf(kept));
            break;
        }
        QCOMPARE(snapshot(tree.root()), expected);

        // The group of two ends: the result is empty and the setup screen comes back.
        const RemovalReview::CloseDecision decision = f.review.refreshAndReload();
        QVERIFY(decision.allRemoved);
        QCOMPARE(decision.returnCode, -1000);
        QCOMPARE(decision.typewindow, 0);
        QCOMPARE(decision.typetoolbar, 0);
        QVERIFY(f.state.duplicateMainArray.isEmpty());
        QCOMPARE(f.state.wastedSpaceDuplicates.load(), 0u);
        QCOMPARE(f.state.totalDuplicateCount.load(), 0u);
        QVERIFY(f.selection.isEmpty());
    }

    void refreshAndReloadBookkeeping() {
        Review f;
        const DuplicateGroupPtr two = f.add(makeGroup({ "/t/a1", "/t/a2" }, 10));
        const DuplicateGroupPtr three = f.add(makeGroup({ "/t/b1", "/t/b2", "/t/b3" }, 7));
        const DuplicateGroupPtr other = f.add(makeGroup({ "/t/c1", "/t/c2", "/t/c3" }, 5));
        QCOMPARE(f.state.wastedSpaceDuplicates.load(), 56u);
        // Both files of the group of two (the original first): the group ends once, and the second
        // file finds no group. A group of three loses its original and gets the next file as one.
        f.selection.duplicateSelectedArray
            = { two->listAll()[0], two->listAll()[1], three->listAll()[0], other->listAll()[1] };

        const RemovalReview::CloseDecision decision = f.review.refreshAndReload();
        QCOMPARE(f.state.wastedSpaceDuplicates.load(), 56u - 20u - 7u - 5u);
        QCOMPARE(f.state.totalDuplicateCount.load(), 8u - 4u);
        // Changed groups go last, in turn, as new records: the old ones, which a list on screen may
        // still show, stay as they were.
        QCOMPARE(originalNames(f.state.duplicateMainArray), (QStringList { "b2", "c1" }));
        const DuplicateGroupPtr threeNow = f.state.duplicateMainArray[0];
        const DuplicateGroupPtr otherNow = f.state.duplicateMainArray[1];
        QCOMPARE(threeNow->listAll(), three->listAll().sliced(1));
        QCOMPARE(otherNow->listAll(), (QList<DuplicateFilePtr> { other->listAll()[0], other->listAll()[2] }));
        QCOMPARE(threeNow->sizeFile(), 7);
        QCOMPARE(three->listAll().size(), 3);
        QCOMPARE(three->original(), QByteArray("/t/b1"));
        QVERIFY(f.selection.isEmpty());
        QVERIFY(!decision.allRemoved);
        QCOMPARE(decision.typewindow, 2);
        QCOMPARE(decision.typetoolbar, 5);
        QCOMPARE(originalNames(f.lists.duplicateDisplayArray), (QStringList { "b2", "c1" }));
    }

    void confirmationAndDroppingRows() {
        TempEnvironment environment;
        TempTree tree;
        Review f;
        const DuplicateGroupPtr three
            = f.addOnDisk({ tree.file("X/1", "x"), tree.file("X/2", "x"), tree.file("X/3", "x") });
        const DuplicateGroupPtr untouched = f.addOnDisk({ tree.file("Y/1", "y"), tree.file("Y/2", "y") });
        f.older = { FileDictionary { "/elsewhere", 0, 1, std::nullopt } };
        f.selection.duplicateSelectedArray = { three->listAll()[1], untouched->listAll()[1], three->listAll()[2] };
        const QMap<QByteArray, QByteArray> before = snapshot(tree.root());

        // A dropped row leaves the selection, not its group; the sheet stays open.
        QCOMPARE(f.review.removefromlist(1), std::nullopt);
        QCOMPARE(f.review.removefromlist(7), std::nullopt);
        QCOMPARE(f.review.numberOfRows(), 2);
        QCOMPARE(f.review.fileAtRow(1), three->listAll()[2]);
        QCOMPARE(untouched->listAll().size(), 2);

        // "No" changes nothing. The first texts count the older selection (one item).
        ScriptedPrompter prompter;
        prompter.expectAlert(Prompter::SecondButton);
        QCOMPARE(f.review.removeSelectedFiles(prompter), std::nullopt);
        QCOMPARE(snapshot(tree.root()), before);
        QCOMPARE(f.review.numberOfRows(), 2);
        const Prompter::Alert& asked = prompter.alertsShown.last();
        QCOMPARE(asked.messageText, QStringLiteral("Are you sure you want move selected item to trash?"));
        QCOMPARE(asked.informativeText, QStringLiteral("If you choose Yes, item will resides in Trash.\n"));
        QCOMPARE(asked.buttons, (QStringList { "Yes", "No" }));
        QCOMPARE(asked.popUpItems, RemovalActions::actionTitles());

        // "Yes" after choosing the symlink item: the texts now count the listed files.
        prompter.expectAlert(Prompter::FirstButton, false, 3);
        const std::optional<RemovalReview::CloseDecision> decision = f.review.removeSelectedFiles(prompter);
        QVERIFY(prompter.allAnswered());
        QCOMPARE(prompter.alertsShown.last().messageText,
            QStringLiteral("Are you sure you want replace selected items with symlink?"));
        QVERIFY(decision.has_value());
        QVERIFY(!decision->allRemoved);
        QCOMPARE(decision->typetoolbar, 5);
        const QMap<QByteArray, QByteArray> after = snapshot(tree.root());
        QCOMPARE(after.value("X/2"), QByteArray("l:" + tree.path("X/1")));
        QCOMPARE(after.value("X/3"), QByteArray("l:" + tree.path("X/1")));
        QCOMPARE(after.value("Y/2"), QByteArray("f:y"));
        QCOMPARE(f.state.duplicateMainArray, QList<DuplicateGroupPtr> { untouched });
        QCOMPARE(f.state.wastedSpaceDuplicates.load(), 2u * 4096u);

        // Dropping the last row closes the sheet onto the result screen, nothing done.
        f.selection.duplicateSelectedArray = { untouched->listAll()[1] };
        QCOMPARE(f.review.closewindow().typetoolbar, 6); // "Cancel" with files still listed
        const std::optional<RemovalReview::CloseDecision> dropped = f.review.removefromlist(0);
        QVERIFY(dropped.has_value());
        QCOMPARE(dropped->typetoolbar, 5);
        QCOMPARE(dropped->typewindow, 2);
        QCOMPARE(tree.read("Y/2"), QByteArray("y"));
    }

    // Keeping the newest chooses the group's original: the replacements then point at the newest
    // copy, and when every copy is chosen the kept one stays in place.
    void replacementsNeverPointAtAChosenCopy() {
        TempEnvironment environment;
        TempTree tree;
        Review f;
        const DuplicateGroupPtr group
            = f.addOnDisk({ tree.file("old", "same"), tree.file("mid", "same"), tree.file("new", "same") });
        f.selection.duplicateSelectedArray = { group->listAll()[0], group->listAll()[1] };
        f.review.runAction(Action::ReplaceWithSymlink);
        QCOMPARE(snapshot(tree.root()),
            (QMap<QByteArray, QByteArray> {
                { "mid", "l:" + tree.path("new") }, { "new", "f:same" }, { "old", "l:" + tree.path("new") } }));

        TempTree all;
        Review g;
        const DuplicateGroupPtr every = g.addOnDisk({ all.file("a", "x"), all.file("b", "x"), all.file("c", "x") });
        g.selection.duplicateSelectedArray = every->listAll();
        LogCapture log;
        g.review.runAction(Action::ReplaceWithHardlink);
        QCOMPARE(log.lines,
            QStringList { QString::fromUtf8(all.path("a")) + " left alone: " + RemovalPlan::lastCopyText() });
        QCOMPARE(all.read("a"), QByteArray("x"));
        QCOMPARE(all.read("c"), QByteArray("x"));
    }

    // Folders stay open from one item to the next. One moved away from its path while the second
    // of its items is checked is not acted in; the new folder at that path is reached, and what it
    // holds is acted on only when it is the file the scan saw.
    void aFolderMovedBetweenItems_data() {
        QTest::addColumn<bool>("sameFile");
        QTest::newRow("an equal new file") << false;
        QTest::newRow("the same file moved") << true;
    }
    void aFolderMovedBetweenItems() {
        QFETCH(bool, sameFile);
        TempEnvironment environment;
        TempTree tree;
        Review f;
        for (const char* name : { "a", "b" }) {
            const QByteArray kept = tree.file(QByteArray("keep/") + name, name);
            const QByteArray copy = tree.file(QByteArray("dup/") + name, name);
            for (const DuplicateFilePtr& member : f.addOnDisk({ kept, copy }, 1)->listAll()) {
                if (member->urlFile() == copy)
                    f.selection.duplicateSelectedArray.append(member);
            }
        }
        RemovalActions::setCheckedHook([&](const QByteArray& path) {
            if (!path.endsWith("/dup/b") || tree.exists("dup.old"))
                return;
            QCOMPARE(::rename(tree.path("dup").constData(), tree.path("dup.old").constData()), 0);
            tree.folder("dup");
            if (sameFile)
                QCOMPARE(::rename(tree.path("dup.old/b").constData(), tree.path("dup/b").constData()), 0);
            else
                tree.file("dup/b", "b");
        });
        const QList<RemovalActions::Outcome> outcomes = f.review.runAction(Action::MoveToTrash);
        RemovalActions::setCheckedHook({});

        QVERIFY(outcomes[0].done);
        QCOMPARE(outcomes[1].done, sameFile);
        const QByteArray trash = environment.dataHome() + "/Trash/files";
        if (sameFile) {
            QCOMPARE(snapshot(trash), (QMap<QByteArray, QByteArray> { { "a", "f:a" }, { "b", "f:b" } }));
            QCOMPARE(snapshot(tree.path("dup")), (QMap<QByteArray, QByteArray> {}));
        } else {
            QCOMPARE(outcomes[1].error, RemovalActions::changedText());
            QCOMPARE(snapshot(trash), (QMap<QByteArray, QByteArray> { { "a", "f:a" } }));
            QCOMPARE(tree.read("dup.old/b"), QByteArray("b"));
            QCOMPARE(tree.read("dup/b"), QByteArray("b"));
        }
    }

    void otherFileSystemsAndReadOnlyMounts() {
        TempEnvironment environment;
        TempTree tree;
        TmpfsMount mount(tree.path("mnt"));
        if (!mount.ok)
            QSKIP("cannot mount a tmpfs here");
        {
            // A hard link cannot cross file systems: refused and logged, and the duplicate stays.
            Review f;
            const DuplicateGroupPtr group = f.addOnDisk({ tree.file("k", "k"), tree.file("mnt/d", "k") });
            f.selection.duplicateSelectedArray = { group->listAll()[1] };
            LogCapture log;
            f.review.runAction(Action::ReplaceWithHardlink);
            QCOMPARE(log.lines,
                QStringList { "erroring for file alising " + QString::fromUtf8(tree.path("mnt/d"))
                    + " with error Invalid cross-device link" });
            QCOMPARE(tree.read("mnt/d"), QByteArray("k"));
            QCOMPARE(tree.read("k"), QByteArray("k"));
        }

        const QByteArray item = tree.file("mnt/ro/\xff.txt", "ro");
        const QByteArray kept = tree.file("kept.txt", "ro");
        const DuplicateGroupPtr onDisk = duplicates::initWithURL({ kept, item }, 1);
        QVERIFY(mount.remountReadOnly());
        const QString shown = QString::fromUtf8(item);
        const QList<std::pair<Action, QStringList>> cases = {
            { Action::MoveToTrash, { "file " + shown + " not removed" } },
            { Action::PermanentDelete, { "file " + shown + " not removed" } },
            { Action::ReplaceWithAlias, { "::: Read-only file system (" + shown + ".Alise)" } },
            { Action::ReplaceWithSymlink,
                { "erroring for file alising " + shown + " with error Read-only file system" } },
            { Action::ReplaceWithHardlink,
                { "erroring for file alising " + shown + " with error Invalid cross-device link" } },
        };
        for (const auto& [action, expected] : cases) {
            Review f;
            const DuplicateGroupPtr group = f.add(onDisk);
            f.selection.duplicateSelectedArray = { group->listAll()[1] };
            LogCapture log;
            const QList<RemovalActions::Outcome> outcomes = f.review.runAction(action);
            QCOMPARE(log.lines.join(QStringLiteral(" | ")), expected.join(QStringLiteral(" | ")));
            QVERIFY(!outcomes[0].done);
            QCOMPARE(tree.read(item), QByteArray("ro"));
        }
        QCOMPARE(snapshot(tree.path("mnt")).keys(), (QList<QByteArray> { "d", "ro", "ro/\xff.txt" }));
        QVERIFY(snapshot(environment.dataHome()).isEmpty()
            || snapshot(QByteArray(environment.dataHome() + "/Trash/files")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestRemoval)
#include "tst_removal.moc"
