#include "base/SettingsStore.h"
#include "review/ListSelection.h"
#include "review/ResultFixture.h"
#include "review/Selection.h"
#include "support/ScriptedPrompter.h"
#include "support/TempTree.h"

#include <QtTest>

namespace {

// The paths of the chosen records, in selection order.
QList<QByteArray> chosenPaths(const Selection& selection) {
    QList<QByteArray> paths;
    for (const DuplicateFilePtr& file : selection.duplicateSelectedArray)
        paths.append(file->urlFile());
    return paths;
}

FileDictionary member(const char* url) {
    return FileDictionary { url, 0, 100, QStringLiteral("Other") };
}

} // namespace

class TestSelection : public QObject {
    Q_OBJECT

private slots:
    void automaticChoice_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QList<QByteArray>>("chosen");
        QTest::newRow("keep newest") << Selection::keepNewestTitle()
                                     << QList<QByteArray> { "/two/old", "/three/old", "/three/mid" };
        QTest::newRow("keep oldest") << Selection::keepOldestTitle()
                                     << QList<QByteArray> { "/two/new", "/three/mid", "/three/new" };
        QTest::newRow("any other title keeps the oldest")
            << QStringLiteral("Keep newest") << QList<QByteArray> { "/two/new", "/three/mid", "/three/new" };
    }
    void automaticChoice() {
        QFETCH(QString, title);
        QFETCH(QList<QByteArray>, chosen);
        const DuplicateGroupPtr two = makeGroup({ "/two/old", "/two/new" }, 1);
        const DuplicateGroupPtr three = makeGroup({ "/three/old", "/three/mid", "/three/new" }, 1);
        const DuplicateGroupPtr hidden = makeGroup({ "/hidden/old", "/hidden/new" }, 1);
        Selection selection;
        selection.duplicateSelectedArray = { hidden->listAll()[0] };
        // Only the displayed groups are chosen in; a hidden group loses its selection.
        selection.AutoSelectAction(title, { two, three });
        QCOMPARE(chosenPaths(selection), chosen);
        QCOMPARE(selection.toolbarState(), 6);
        // A sender that is not the pop-up only empties the selection.
        selection.AutoSelectAction(std::nullopt, { two, three });
        QVERIFY(selection.isEmpty());
        QCOMPARE(selection.toolbarState(), 5);
    }

    void groupSegmentsAndCheckBoxes() {
        const DuplicateGroupPtr two = makeGroup({ "/two/old", "/two/new" }, 1);
        const DuplicateGroupPtr three = makeGroup({ "/three/old", "/three/mid", "/three/new" }, 1);
        Selection selection;
        selection.duplicateSelectedArray = { two->listAll()[1] };

        selection.keepSegmentAction(*three, 1);
        QCOMPARE(chosenPaths(selection), (QList<QByteArray> { "/two/new", "/three/old", "/three/mid" }));
        selection.keepSegmentAction(*three, 7); // any other segment keeps the oldest
        QCOMPARE(chosenPaths(selection), (QList<QByteArray> { "/two/new", "/three/mid", "/three/new" }));
        QCOMPARE(selection.setStateOfCheckBox(*three), Selection::CheckState::Mixed);
        selection.keepSegmentAction(*two, 1);
        QCOMPARE(selection.countSelected(*two), 1);
        QVERIFY(selection.contains(two->listAll()[0]));
        selection.keepSegmentAction(*three, 0);
        QCOMPARE(selection.countSelected(*three), 0);
        QCOMPARE(selection.setStateOfCheckBox(*three), Selection::CheckState::Off);

        // From mixed the box goes on and the whole group joins, original included, each record once.
        selection.duplicateSelectedArray = { three->listAll()[1], two->listAll()[0], three->listAll()[1] };
        QCOMPARE(selection.checkBoxActionMain(*three, Selection::CheckState::Mixed), Selection::CheckState::On);
        QCOMPARE(selection.duplicateSelectedArray.size(), 4);
        QCOMPARE(selection.countSelected(*three), 3);
        QCOMPARE(selection.setStateOfCheckBox(*three), Selection::CheckState::On);
        QCOMPARE(selection.checkBoxActionMain(*three, Selection::CheckState::Off), Selection::CheckState::Off);
        QCOMPARE(chosenPaths(selection), QList<QByteArray> { "/two/old" });
        QCOMPARE(selection.checkBoxActionMain(*two, Selection::CheckState::On), Selection::CheckState::On);
        QCOMPARE(chosenPaths(selection), (QList<QByteArray> { "/two/old", "/two/new" }));

        // File check boxes toggle the very record; another record of the same path is another file.
        const DuplicateGroupPtr twin = makeGroup({ "/two/old", "/two/new" }, 1);
        selection.checkBoxActionFromTableRow(*twin, 0);
        QCOMPARE(selection.duplicateSelectedArray.size(), 3);
        QCOMPARE(selection.countSelected(*twin), 1);
        QCOMPARE(selection.countSelected(*two), 2);
        selection.checkBoxActionFromTableRow(*two, 0);
        QVERIFY(!selection.contains(two->listAll()[0]));
        QVERIFY(selection.contains(twin->listAll()[0]));
        selection.checkBoxActionFromTableRow(*two, 5); // no such row
        QCOMPARE(selection.duplicateSelectedArray.size(), 2);
        QCOMPARE(Selection::setStateOfCheckBox(0, 0), Selection::CheckState::On);
    }

    // Copies inside a protected folder are never chosen: the keep rules keep them whatever the age,
    // the group box and a click pass them over, and a group of protected copies offers nothing.
    void protectedFoldersAreNeverChosen() {
        const DuplicateGroupPtr mixed = makeGroup({ "/photos/old", "/backup/mid", "/master/new" }, 1);
        const DuplicateGroupPtr shielded = makeGroup({ "/master/a", "/master/sub/b" }, 1);
        const DuplicateGroupPtr plain = makeGroup({ "/x/old", "/x/new" }, 1);
        Selection selection;
        selection.setProtectedFolders({ "/master/", "/nowhere" });
        QCOMPARE(selection.protectingFolder("/master/sub/b"), QByteArray("/master"));
        QCOMPARE(selection.protectingFolder("/masterpiece"), QByteArray());
        const auto paths = [&] {
            QList<QByteArray> out;
            for (const DuplicateFilePtr& file : selection.duplicateSelectedArray)
                out.append(file->urlFile());
            return out;
        };

        for (const QString& rule : { Selection::keepNewestTitle(), Selection::keepOldestTitle() }) {
            selection.AutoSelectAction(rule, { mixed, shielded, plain });
            QList<QByteArray> expected { "/photos/old", "/backup/mid" };
            expected.append(rule == Selection::keepNewestTitle() ? "/x/old" : "/x/new");
            QCOMPARE(paths(), expected);
        }
        selection.keepSegmentAction(*mixed, 2);
        QVERIFY(!paths().contains("/master/new"));

        // The group box: On chooses what may be chosen and shows Mixed; a click on it then takes
        // those out again, so the box never gets stuck.
        selection.duplicateSelectedArray.clear();
        QCOMPARE(selection.checkBoxActionMain(*mixed, Selection::CheckState::On), Selection::CheckState::Mixed);
        QCOMPARE(paths(), (QList<QByteArray> { "/photos/old", "/backup/mid" }));
        QCOMPARE(selection.checkBoxActionMain(*mixed, Selection::CheckState::On), Selection::CheckState::Off);
        QVERIFY(selection.isEmpty());
        QCOMPARE(selection.checkBoxActionMain(*shielded, Selection::CheckState::On), Selection::CheckState::Off);
        QVERIFY(selection.isEmpty());

        // A click on a protected copy does nothing; on another it toggles as usual.
        selection.checkBoxActionFromTableRow(*mixed, 2);
        QVERIFY(selection.isEmpty());
        selection.checkBoxActionFromTableRow(*mixed, 0);
        QCOMPARE(paths(), QList<QByteArray> { "/photos/old" });
    }

    void selectAllQuestion() {
        TempEnvironment environment;
        SettingsStore store;
        ScriptedPrompter prompter;

        prompter.expectAlert(Prompter::SecondButton, true); // Cancel with the box ticked stores nothing
        QVERIFY(!alertSelectAll(prompter, store));
        QVERIFY(!store.contains(QStringLiteral("showAgain")));
        prompter.expectAlert(Prompter::FirstButton, false);
        QVERIFY(alertSelectAll(prompter, store));
        QVERIFY(!store.contains(QStringLiteral("showAgain")));
        prompter.expectAlert(Prompter::FirstButton, true);
        QVERIFY(alertSelectAll(prompter, store));
        QCOMPARE(store.string(QStringLiteral("showAgain")), QStringLiteral("yes"));
        QVERIFY(alertSelectAll(prompter, store)); // no question any more
        QVERIFY(prompter.allAnswered());

        QCOMPARE(prompter.alertsShown.size(), 3);
        const Prompter::Alert& alert = prompter.alertsShown.first();
        QCOMPARE(alert.messageText, QStringLiteral("Are you sure, you want to select all duplicate items?"));
        QCOMPARE(alert.informativeText,
            QStringLiteral("This will include all duplicates files including original files in deletable list."));
        QCOMPARE(alert.buttons, (QStringList { "OK", "Cancel" }));
        QVERIFY(alert.showsSuppressionButton);
    }

    void olderListRules() {
        ScanState state;
        ListSelection selection(state);
        const GroupDictionary two { { member("/2/a"), member("/2/b") }, member("/2/a") };
        const GroupDictionary three { { member("/3/a"), member("/3/b"), member("/3/c") }, member("/3/a") };
        state.DuplicateFileFolderArray = { two, three };
        bool answer = false;
        int asked = 0;
        selection.alertSelectAll = [&] {
            ++asked;
            return answer;
        };
        auto urls = [&selection] {
            QList<QByteArray> out;
            for (const FileDictionary& file : selection.SelectedFileFolderArray)
                out.append(file.url);
            return out;
        };

        selection.keepNewestAction();
        QCOMPARE(urls(), (QList<QByteArray> { "/2/a", "/3/a", "/3/b" }));
        selection.keepOldestAction();
        QCOMPARE(urls(), (QList<QByteArray> { "/3/b", "/2/b", "/3/c" }));
        QCOMPARE(selection.selectedBytes(), 300);
        QVERIFY(!selection.keepNoneAction());
        QCOMPARE(selection.SelectedFileFolderArray.size(), 3);
        answer = true;
        QVERIFY(selection.keepNoneAction());
        QCOMPARE(selection.SelectedFileFolderArray.size(), 5);

        // Segments on the current row: 1 returns at once when all are chosen.
        selection.ReloadRow = 1;
        QVERIFY(!selection.SegmentKeepAction(1));
        QCOMPARE(asked, 2);
        QVERIFY(selection.SegmentKeepAction(0));
        QCOMPARE(selection.selectedCountIn(three), 0);
        answer = false;
        QVERIFY(selection.SegmentKeepAction(1)); // refreshed after a Cancel too
        QCOMPARE(selection.selectedCountIn(three), 0);
        QVERIFY(selection.SegmentKeepAction(2));
        QCOMPARE(urls(), (QList<QByteArray> { "/2/b", "/2/a", "/3/a", "/3/b" }));
        QVERIFY(selection.SegmentKeepAction(3));
        QCOMPARE(urls(), (QList<QByteArray> { "/2/b", "/2/a", "/3/b", "/3/c" }));
        QVERIFY(selection.SegmentKeepAction(4));
        QCOMPARE(selection.SelectedFileFolderArray.size(), 4);

        // The file check box asks only for the group's last unchosen copy.
        selection.DeselectAllFromDuplicateList();
        QVERIFY(selection.SelectedFileFolderArray.isEmpty());
        QVERIFY(selection.addInSelectedDuplicateList(0));
        QVERIFY(selection.addInSelectedDuplicateList(1));
        const int before = asked;
        QVERIFY(!selection.addInSelectedDuplicateList(2)); // answered no: box back off
        QCOMPARE(asked, before + 1);
        QCOMPARE(selection.selectedCountIn(three), 2);
        QVERIFY(!selection.addInSelectedDuplicateList(1)); // a chosen file is dropped
        QCOMPARE(selection.selectedCountIn(three), 1);
        QVERIFY(selection.removeEnabled());

        // Set as original: an unchosen file leaves the selection as it is; a chosen one is swapped
        // for the former original, so the count stays.
        QCOMPARE(urls(), QList<QByteArray> { "/3/a" });
        selection.SetAsOriginal(1);
        QCOMPARE(state.DuplicateFileFolderArray[1].original, member("/3/b"));
        QCOMPARE(urls(), QList<QByteArray> { "/3/a" });
        selection.SetAsOriginal(0);
        QCOMPARE(state.DuplicateFileFolderArray[1].original, member("/3/a"));
        QCOMPARE(urls(), QList<QByteArray> { "/3/b" });
        QCOMPARE(state.DuplicateFileFolderArray[1].SameFileList[0], member("/3/a")); // the list keeps its order
    }
};

QTEST_GUILESS_MAIN(TestSelection)
#include "tst_selection.moc"
