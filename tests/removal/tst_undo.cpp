#include "engine/ScanState.h"
#include "removal/DiskFixture.h"
#include "removal/Journal.h"
#include "removal/RemovalReview.h"
#include "removal/Undo.h"
#include "review/ResultFixture.h"
#include "review/ResultLists.h"
#include "review/Selection.h"
#include "support/TempTree.h"

#include <QtTest>

namespace {

using Action = RemovalActions::Action;

// Removes the second copy of each given pair with `action`, through the review as the window does.
QList<RemovalActions::Outcome> removeCopies(const QList<std::pair<QByteArray, QByteArray>>& pairs, Action action) {
    ScanState state;
    Selection selection;
    ResultLists lists(state, selection);
    const QList<FileDictionary> older;
    RemovalReview review(state, selection, lists, older);
    for (const auto& [kept, copy] : pairs) {
        state.duplicateMainArray.append(duplicates::initWithURL({ kept, copy }, 1));
        // The group orders its members by creation time, which two files made at once may share.
        for (const DuplicateFilePtr& member : state.duplicateMainArray.last()->listAll()) {
            if (member->urlFile() == copy)
                selection.duplicateSelectedArray.append(member);
        }
    }
    return review.runAction(action);
}

Journal::Removal lastRemoval() {
    const QList<Journal::Removal> removals = Journal::list();
    return removals.isEmpty() ? Journal::Removal() : removals.last();
}

struct stat statOf(const QByteArray& path) {
    struct stat st { };
    ::lstat(path.constData(), &st);
    return st;
}

void setModified(const QByteArray& path, qint64 seconds) {
    const struct timespec times[2] = { { seconds, 0 }, { seconds, 123456789 } };
    ::utimensat(AT_FDCWD, path.constData(), times, 0);
}

} // namespace

class TestUndo : public QObject {
    Q_OBJECT

private slots:
    // Every action is put back by content, permissions and time, whatever the name; a permanent
    // delete says it cannot be.
    void undoEveryAction_data() {
        QTest::addColumn<int>("action");
        QTest::addColumn<QByteArray>("name");
        for (int action = 0; action < 5; ++action) {
            for (const char* name : { "photo.jpg", "\xff\n.txt" }) {
                QTest::addRow(
                    "%s %s", qPrintable(RemovalActions::title(Action(action))), QByteArray(name).toHex().constData())
                    << action << QByteArray(name);
            }
        }
    }
    void undoEveryAction() {
        QFETCH(int, action);
        QFETCH(QByteArray, name);
        TempEnvironment environment;
        TempTree tree;
        const QByteArray kept = tree.file("A/" + name, "same bytes");
        const QByteArray copy = tree.file("B/" + name, "same bytes");
        ::chmod(copy.constData(), 0640);
        setModified(copy, 1600000000);
        const QList<RemovalActions::Outcome> outcomes = removeCopies({ { kept, copy } }, Action(action));
        QVERIFY(outcomes[0].done);

        const Journal::Removal removal = lastRemoval();
        QCOMPARE(removal.doneCount(), 1);
        QVERIFY(removal.started.isValid() && qAbs(removal.started.secsTo(QDateTime::currentDateTimeUtc())) < 600);
        QCOMPARE(removal.entries[0].path, copy);
        QCOMPARE(removal.entries[0].kept, kept);
        const QList<Undo::Result> results = Undo::undo(removal);
        QCOMPARE(results.size(), 1);
        if (Action(action) == Action::PermanentDelete) {
            QVERIFY(!results[0].restored);
            QCOMPARE(results[0].reason, Undo::notRestorableText());
            QVERIFY(!tree.exists("B/" + name));
            return;
        }
        QVERIFY2(results[0].restored, qPrintable(results[0].reason));
        QCOMPARE(snapshot(tree.path("B")), (QMap<QByteArray, QByteArray> { { name, "f:same bytes" } }));
        const struct stat st = statOf(copy);
        QCOMPARE(st.st_mode & 07777, 0640u);
        QCOMPARE(qint64(st.st_mtim.tv_sec), qint64(1600000000));
        QCOMPARE(qint64(st.st_mtim.tv_nsec), qint64(123456789));
        QVERIFY(statOf(copy).st_ino != statOf(kept).st_ino);
        QCOMPARE(tree.read("A/" + name), QByteArray("same bytes"));
        QVERIFY(snapshot(environment.dataHome() + "/Trash/info").isEmpty());
        // Done once: the journal says so and a second undo has nothing to do.
        QVERIFY(lastRemoval().undone());
        QVERIFY(Undo::undo(lastRemoval()).isEmpty());
    }

    // Nothing present is ever overwritten: a path taken again keeps what took it.
    void aPathTakenAgainIsLeftAlone() {
        TempEnvironment environment;
        TempTree tree;
        const QByteArray keptT = tree.file("A/t.txt", "t");
        const QByteArray keptL = tree.file("A/l.txt", "l");
        const QByteArray trashed = tree.file("B/t.txt", "t");
        const QByteArray linked = tree.file("B/l.txt", "l");
        const QList<std::pair<QByteArray, QByteArray>> pairs { { keptT, trashed } };
        QVERIFY(removeCopies(pairs, Action::MoveToTrash)[0].done);
        tree.file("B/t.txt", "new content");
        const QList<Undo::Result> results = Undo::undo(lastRemoval());
        QCOMPARE(results[0].reason, Undo::pathTakenText());
        QCOMPARE(tree.read("B/t.txt"), QByteArray("new content"));
        QCOMPARE(snapshot(environment.dataHome() + "/Trash/files").value("t.txt"), QByteArray("f:t"));

        QVERIFY(removeCopies({ { keptL, linked } }, Action::ReplaceWithSymlink)[0].done);
        ::unlink(linked.constData());
        tree.symlink("B/l.txt", "/somewhere/else");
        QCOMPARE(Undo::undo(lastRemoval())[0].reason, Undo::pathTakenText());
        QCOMPARE(snapshot(tree.path("B")).value("l.txt"), QByteArray("l:/somewhere/else"));
    }

    // A journal cut short in the middle of a removal says where it stopped: what was done comes
    // back, the item whose record has no end is not touched, and a torn last line is ignored.
    void aJournalCutShort() {
        TempEnvironment environment;
        TempTree tree;
        QList<std::pair<QByteArray, QByteArray>> pairs;
        // Paths of three lengths: every way a path's base64 can end.
        for (const char* name : { "1", "22", "333" })
            pairs.append({ tree.file(QByteArray("A/") + name, name), tree.file(QByteArray("B/") + name, name) });
        removeCopies(pairs, Action::ReplaceWithHardlink);
        const QByteArray file = lastRemoval().file;
        QFile journal(QString::fromLocal8Bit(file));
        QVERIFY(journal.open(QIODevice::ReadOnly));
        QList<QByteArray> lines = journal.readAll().split('\n');
        journal.close();
        // begin 1, done 1, begin 2, then a torn line: as if the program stopped while acting on 2.
        QVERIFY(journal.open(QIODevice::WriteOnly | QIODevice::Truncate));
        journal.write(lines[0] + '\n' + lines[1] + '\n' + lines[2] + '\n' + lines[3].left(10));
        journal.close();

        const Journal::Removal removal = lastRemoval();
        QCOMPARE(removal.entries.size(), 2);
        QCOMPARE(removal.entries[1].state, Journal::Entry::State::Begun);
        QCOMPARE(removal.entries[1].path, tree.path("B/22"));
        QCOMPARE(removal.doneCount(), 1);
        const QList<Undo::Result> results = Undo::undo(removal);
        QCOMPARE(results.size(), 1);
        QVERIFY(results[0].restored);
        QVERIFY(statOf(tree.path("B/1")).st_ino != statOf(tree.path("A/1")).st_ino);
        QCOMPARE(statOf(tree.path("B/22")).st_ino, statOf(tree.path("A/22")).st_ino); // left as it is
    }

    // An item trashed on another mount comes back from that mount's trash.
    void trashOnAnotherMount() {
        TempEnvironment environment;
        TempTree tree;
        TmpfsMount mount(tree.path("disk"));
        if (!mount.ok)
            QSKIP("cannot mount a tmpfs here");
        const QByteArray copy = tree.file("disk/\xfe copy.dat", "on the disk");
        QVERIFY(removeCopies({ { tree.file("disk/kept.dat", "on the disk"), copy } }, Action::MoveToTrash)[0].done);
        QVERIFY(!tree.exists("disk/\xfe copy.dat"));
        QVERIFY(Undo::undo(lastRemoval())[0].restored);
        QCOMPARE(tree.read("disk/\xfe copy.dat"), QByteArray("on the disk"));
        const QByteArray uid = QByteArray::number(::getuid());
        QVERIFY(snapshot(tree.path("disk/.Trash-" + uid + "/info")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestUndo)
#include "tst_undo.moc"
