// The whole road of a folder scan in the real window: scan, the result screen with its filters,
// search, sort and automatic choice, the review sheet, each removal action on disk, and the way back.
#include "AppFixture.h"

#include "controls/StripedProgressBar.h"

#include "base/PathBytes.h"
#include "removal/DeletingPanel.h"
#include "removal/DiskFixture.h"
#include "removal/RemovalListModel.h"
#include "removal/RemovalRowDelegate.h"
#include "removal/RemovalTexts.h"
#include "removal/RemovalWorker.h"
#include "review/FileListModel.h"
#include "review/GroupListModel.h"
#include "review/PreviewView.h"
#include "review/ResultFixture.h"
#include "review/StatusTexts.h"
#include "review/resultView.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QSemaphore>
#include <QSplitter>
#include <QtTest>
#include <thread>

namespace {

using Action = RemovalActions::Action;

// Three groups below data/: a photo in three copies, a text and another file in two each, and two
// files with no copy. The two sub-folders differ, so no folder is a duplicate.
struct Road {
    TempTree tree;
    AppFixture f;
    resultView* screen = nullptr;

    Road() {
        tree.sizedFile("data/a.jpg", 150000, 'a');
        tree.sizedFile("data/backup/a.jpg", 150000, 'a');
        tree.sizedFile("data/old/a copy.jpg", 150000, 'a');
        tree.sizedFile("data/b.txt", 150000, 'b');
        tree.sizedFile("data/backup/b.txt", 150000, 'b');
        tree.sizedFile("data/c.bin", 160000, 'c');
        tree.sizedFile("data/backup/c.bin", 160000, 'c');
        tree.sizedFile("data/solo.bin", 150000, 'd');
        tree.sizedFile("data/old/other.bin", 150000, 'e');
        screen = f.app->resultViewObj();
    }

    // Scans data/ and goes on to the result screen.
    void scanAndShow() {
        f.setup()->checkAndReloadTableView({ tree.path("data") });
        QCOMPARE(f.app->typetoolbar(), 1);
        QTest::mouseClick(f.app->nextButton(), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 4, kScanTimeoutMs);
        QTest::mouseClick(f.app->nextButton(), Qt::LeftButton);
        QCOMPARE(f.app->typewindow(), 2);
        QCOMPARE(f.app->typetoolbar(), 5);
    }

    DuplicateGroupPtr groupWith(const QByteArray& relative) const {
        for (const DuplicateGroupPtr& group : f.app->state().duplicateMainArray) {
            for (const DuplicateFilePtr& file : group->listAll()) {
                if (file->urlFile() == tree.path(relative))
                    return group;
            }
        }
        return nullptr;
    }

    // The review sheet, opened with the next button in state 6.
    DeletingPanel* openReview() {
        QTest::mouseClick(f.app->nextButton(), Qt::LeftButton);
        DeletingPanel* sheet = f.app->deleteingWindow();
        if (sheet && !QTest::qWaitForWindowExposed(sheet))
            return nullptr;
        return sheet;
    }
};

// Every item below a folder with its inode, so that a file replaced by a hard link shows as changed.
QMap<QByteArray, QByteArray> snapshotWithInodes(const QByteArray& root) {
    QMap<QByteArray, QByteArray> items = snapshot(root);
    for (auto it = items.begin(); it != items.end(); ++it) {
        struct stat st;
        const QByteArray path = root + '/' + it.key();
        if (::lstat(path.constData(), &st) == 0)
            it.value() += "@" + QByteArray::number(static_cast<qulonglong>(st.st_ino));
    }
    return items;
}

void clickRemoveButton(DeletingPanel* sheet, int row) {
    QListView* list = sheet->tableDeletefileList();
    const QRect rect = list->visualRect(sheet->listModel()->index(row));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, RemovalRowDelegate::removeButtonRect(rect).center());
}

} // namespace

class TestResultFlow : public QObject {
    Q_OBJECT

private slots:
    void theRoadToEachAction_data() {
        QTest::addColumn<int>("popUpIndex");
        for (int action = 0; action < 5; ++action)
            QTest::addRow("%s", qPrintable(RemovalActions::title(Action(action)))) << action;
    }
    void theRoadToEachAction() {
        QFETCH(int, popUpIndex);
        Road road;
        road.scanAndShow();
        AppFixture& f = road.f;
        resultView* screen = road.screen;
        ResultLists& lists = f.app->resultLists();
        QCOMPARE(screen->groupModel()->rowCount(), 3);
        QVERIFY(screen->DisplayView()->isVisible());
        QVERIFY(!screen->notfoundText()->isVisible());
        QCOMPARE(screen->searchALL()->width(), 100);

        // Type filters act as a radio group; pressing the active one keeps it on.
        QPushButton* text = screen->filterButton(40);
        QTest::mouseClick(text, Qt::LeftButton);
        QCOMPARE(screen->groupModel()->rowCount(), 1);
        QVERIFY(text->isChecked() && !screen->filterButton(10)->isChecked());
        QTest::mouseClick(text, Qt::LeftButton);
        QVERIFY(text->isChecked());
        QCOMPARE(lists.typefilter, 40u);
        QTest::mouseClick(screen->filterButton(10), Qt::LeftButton);
        QCOMPARE(screen->groupModel()->rowCount(), 3);

        // A search that matches one copy keeps its whole group; one that matches nothing empties the
        // screen and points the preview at the root.
        QTest::keyClicks(screen->searchALL(), QStringLiteral("A COPY"));
        QTest::keyClick(screen->searchALL(), Qt::Key_Return);
        QCOMPARE(screen->groupModel()->rowCount(), 1);
        QCOMPARE(screen->fileModel()->rowCount(), 3);
        screen->searchALL()->setText(QStringLiteral("nothing like this"));
        QTRY_COMPARE(screen->groupModel()->rowCount(), 0);
        QVERIFY(!screen->DisplayView()->isVisible() && screen->notfoundText()->isVisible());
        QVERIFY(!screen->sortingButton()->isEnabled() && !screen->autoSelectBTN()->isEnabled());
        QVERIFY(!screen->deselectAllBtn()->isEnabled());
        QCOMPARE(screen->quicklookview()->path(), QByteArray("/"));
        QVERIFY(screen->detailsAll()->text().isEmpty());
        screen->searchALL()->clear();
        QTRY_COMPARE(screen->groupModel()->rowCount(), 3);
        QVERIFY(screen->sortingButton()->isEnabled());

        // Sorting by wasted size, then descending: the key stays when the direction changes.
        screen->sortItem(ResultLists::WastedSize)->trigger();
        QCOMPARE(screen->sortingButton()->text(), QStringLiteral("Wasted Size"));
        QTRY_COMPARE(originalNames(lists.duplicateDisplayArray), (QStringList { "b.txt", "c.bin", "a.jpg" }));
        screen->sortItem(ResultLists::Descending)->trigger();
        QTRY_COMPARE(originalNames(lists.duplicateDisplayArray), (QStringList { "a.jpg", "c.bin", "b.txt" }));
        QTRY_VERIFY(screen->sortItem(ResultLists::WastedSize)->isChecked());
        QVERIFY(screen->sortItem(ResultLists::Descending)->isChecked());
        QVERIFY(!screen->sortItem(ResultLists::OriginalFilename)->isChecked());
        QVERIFY(!screen->sortItem(ResultLists::Ascending)->isChecked());
        QCOMPARE(screen->selectedMain(), 0);

        // The current rows follow the clicks: another group resets the file row.
        screen->duplicateListMain()->setCurrentIndex(screen->groupModel()->index(1));
        QCOMPARE(screen->selectedMain(), 1);
        screen->sameList()->setCurrentIndex(screen->fileModel()->index(1));
        QCOMPARE(screen->rowSubSave(), 1);
        const DuplicateGroupPtr c = road.groupWith("data/c.bin");
        QCOMPARE(screen->currentGroup(), c);
        QCOMPARE(screen->selectedFileName()->text(),
            QString::fromUtf8(c->listAll()[1]->urlFile().mid(c->listAll()[1]->urlFile().lastIndexOf('/') + 1)));
        QCOMPARE(screen->quicklookview()->path(), c->listAll()[1]->urlFile());
        QCOMPARE(screen->detailsAll()->text(), StatusTexts::groupDetails(2, c->sizeFile()));
        screen->duplicateListMain()->setCurrentIndex(screen->groupModel()->index(0));
        QCOMPARE(screen->rowSubSave(), 0);

        // Keep the newest of every group: all copies but the last of each.
        screen->autoSelectItem(Selection::keepNewestTitle())->trigger();
        QList<DuplicateFilePtr> chosen;
        for (const DuplicateGroupPtr& group : lists.duplicateDisplayArray)
            chosen.append(group->listAll().first(group->listAll().size() - 1));
        QCOMPARE(f.app->selection().duplicateSelectedArray, chosen);
        QCOMPARE(f.app->typetoolbar(), 6);
        QCOMPARE(f.toolbarText(), QStringLiteral("4 of 7 duplicates selected \n click on Remove for review."));
        QVERIFY(f.app->nextButton()->isEnabled());

        // The review lists the four files; the copy of c.bin is dropped from it (not from its group).
        const QMap<QByteArray, QByteArray> before = snapshotWithInodes(road.tree.root());
        DeletingPanel* sheet = road.openReview();
        QVERIFY(sheet && sheet->isVisible());
        QCOMPARE(sheet->listModel()->rowCount(), 4);
        const DuplicateFilePtr dropped = c->listAll()[0];
        const int droppedRow = static_cast<int>(f.app->selection().duplicateSelectedArray.indexOf(dropped));
        clickRemoveButton(sheet, droppedRow);
        QTRY_COMPARE(sheet->listModel()->rowCount(), 3);
        QVERIFY(sheet->isVisible());
        chosen.removeAll(dropped);

        // The files go one after another on a thread of their own, the sheet showing progress, with
        // "Cancel" (which would stop the run) the only button left.
        f.prompter.expectAlert(Prompter::FirstButton, false, popUpIndex);
        QTest::mouseClick(sheet->tDelete(), Qt::LeftButton);
        QVERIFY(sheet->isRemoving());
        QVERIFY(sheet->progressBar()->isVisible());
        QVERIFY(sheet->back()->isEnabled() && !sheet->tDelete()->isEnabled());
        QVERIFY(sheet->isVisible());
        QTRY_VERIFY(!sheet->isVisible());
        QVERIFY(f.prompter.allAnswered());
        const Prompter::Alert& asked = f.prompter.alertsShown.last();
        QCOMPARE(asked.buttons, (QStringList { "Yes", "No" }));
        QCOMPARE(asked.popUpItems, RemovalActions::actionTitles());
        if (popUpIndex != 0)
            QCOMPARE(asked.messageText, RemovalTexts::confirmation(Action(popUpIndex), 3).messageText);

        // Only the chosen files changed, each as its action says; the kept copy of a group whose
        // original went is its newest copy.
        const QMap<QByteArray, QByteArray> after = snapshotWithInodes(road.tree.root());
        const QByteArray root = road.tree.root() + '/';
        QStringList changed;
        for (auto it = before.cbegin(); it != before.cend(); ++it) {
            if (after.value(it.key()) != it.value())
                changed.append(QString::fromUtf8(it.key()));
        }
        QStringList expected;
        for (const DuplicateFilePtr& file : chosen)
            expected.append(QString::fromUtf8(file->urlFile().mid(root.size())));
        changed.sort();
        expected.sort();
        QCOMPARE(changed, expected);
        for (const DuplicateFilePtr& file : chosen) {
            const QByteArray name = file->urlFile().mid(root.size());
            const QByteArray kept = road.tree.root() + '/'
                + (name.endsWith(".jpg") ? QByteArray("data/old/a copy.jpg") : QByteArray("data/backup/b.txt"));
            switch (Action(popUpIndex)) {
            case Action::MoveToTrash:
                QVERIFY(!after.contains(name));
                QVERIFY(QFile::exists(QString::fromUtf8(f.environment.dataHome() + "/Trash/files")));
                break;
            case Action::PermanentDelete:
                QVERIFY(!after.contains(name));
                break;
            case Action::ReplaceWithAlias:
                QVERIFY(!after.contains(name));
                QVERIFY(after.value(name + ".Alise").contains(QByteArray("URL=" + PathBytes::fileUrl(kept))));
                break;
            case Action::ReplaceWithSymlink:
                QVERIFY(after.value(name).startsWith(QByteArray("l:" + kept + "@")));
                break;
            case Action::ReplaceWithHardlink:
                QCOMPARE(after.value(name), after.value(kept.mid(root.size())));
                break;
            }
        }

        // The group of the dropped row is all that is left; the result screen shows it, nothing chosen.
        QCOMPARE(f.app->state().duplicateMainArray, QList<DuplicateGroupPtr> { c });
        QCOMPARE(c->listAll().size(), 2);
        // The totals are those of the group left.
        QCOMPARE(f.app->state().totalDuplicateCount.load(), 2u);
        QCOMPARE(f.app->state().wastedSpaceDuplicates.load(), static_cast<quint64>(2 * c->sizeFile()));
        QVERIFY(f.app->selection().isEmpty());
        QCOMPARE(f.app->typewindow(), 2);
        QCOMPARE(f.app->typetoolbar(), 5);
        QCOMPARE(screen->groupModel()->rowCount(), 1);
        QCOMPARE(screen->selectedMain(), 0);
        QVERIFY(f.toolbarText().startsWith(QStringLiteral("2 Duplicates. Total: ")));
    }

    // A removal runs on a thread of its own. Its "Cancel" stops it after the item in hand, the rest
    // reported as left; quitting asks first ("Continue" goes on) and waits for the item in hand.
    void cancelAndQuitDuringARemoval() {
        Road road;
        road.scanAndShow();
        AppFixture& f = road.f;
        road.screen->autoSelectItem(Selection::keepOldestTitle())->trigger();
        const QList<DuplicateFilePtr> chosen = f.app->selection().duplicateSelectedArray;
        QCOMPARE(chosen.size(), 4);
        const QMap<QByteArray, QByteArray> before = snapshot(road.tree.root());

        // Each item waits, once checked, until the test lets it go.
        QSemaphore inHand;
        QSemaphore goOn;
        const auto holdEachItem = [&] {
            RemovalActions::setCheckedHook([&](const QByteArray&) {
                inHand.release();
                goOn.tryAcquire(1, 10000);
            });
        };
        holdEachItem();
        DeletingPanel* sheet = road.openReview();
        f.prompter.expectAlert(Prompter::FirstButton, false, 1); // delete for good
        QTest::mouseClick(sheet->tDelete(), Qt::LeftButton);
        QVERIFY(inHand.tryAcquire(1, 10000));
        QVERIFY(sheet->isRemoving());

        // The window answers meanwhile: quitting is refused with "Continue".
        f.prompter.expectAlert(Prompter::SecondButton);
        QVERIFY(!f.app->mayQuit());
        QCOMPARE(f.prompter.alertsShown.last().buttons, (QStringList { "Quit", "Continue" }));
        QVERIFY(sheet->isRemoving());

        // "Cancel": the item in hand is finished, nothing after it is started.
        QTest::mouseClick(sheet->back(), Qt::LeftButton);
        goOn.release();
        QTRY_VERIFY(sheet->isShowingOutcome());
        RemovalActions::setCheckedHook({});
        const QMap<QByteArray, QByteArray> after = snapshot(road.tree.root());
        int gone = 0;
        for (const DuplicateFilePtr& file : chosen)
            gone += !after.contains(file->urlFile().mid(road.tree.root().size() + 1));
        QCOMPARE(gone, 1);
        for (auto it = after.cbegin(); it != after.cend(); ++it)
            QCOMPARE(it.value(), before.value(it.key()));
        // The outcome lists the item done and every other one as left, untouched.
        const QList<RemovalActions::Outcome>& outcomes = sheet->lastOutcomes();
        QCOMPARE(outcomes.size(), chosen.size());
        QCOMPARE(std::count_if(outcomes.begin(), outcomes.end(), [](const auto& o) { return o.done; }), 1);
        for (const RemovalActions::Outcome& outcome : outcomes) {
            QVERIFY(outcome.done != outcome.left);
            if (outcome.left) {
                QCOMPARE(outcome.error, RemovalWorker::cancelledText());
                QVERIFY(after.contains(outcome.file->urlFile().mid(road.tree.root().size() + 1)));
            }
        }
        // The sheet stays and shows the same, row by row, with what became of each item and why the
        // others were left; no row can be dropped any more. "Done" has the keyboard.
        RemovalListModel* rows = sheet->listModel();
        QCOMPARE(rows->rowCount(), outcomes.size());
        QCOMPARE(sheet->statusText()->text(), QStringLiteral("1 deleted, 3 left alone"));
        for (int row = 0; row < rows->rowCount(); ++row) {
            const QModelIndex index = rows->index(row);
            const RemovalActions::Outcome& outcome = outcomes[row];
            QCOMPARE(index.data(RemovalListModel::PathBytesRole).toByteArray(), outcome.file->urlFile());
            QCOMPARE(index.data(RemovalListModel::StatusRole).toString(),
                outcome.done ? QStringLiteral("deleted") : QStringLiteral("left alone: cancelled"));
            QVERIFY(!RemovalRowDelegate::hasRemoveButton(index));
            QVERIFY(index.data(Qt::AccessibleTextRole)
                        .toString()
                        .endsWith(index.data(RemovalListModel::StatusRole).toString()));
        }
        QVERIFY(!sheet->back()->isVisible() && !sheet->tDelete()->isVisible());
        QVERIFY(sheet->doneButton()->isVisible() && sheet->doneButton()->isDefault());
        QTRY_VERIFY(!sheet->isUpdating());
        QCOMPARE(sheet->focusWidget(), sheet->doneButton());
        QTest::keyClick(sheet->tableDeletefileList(), Qt::Key_Delete);
        QCOMPARE(rows->rowCount(), outcomes.size());
        QTest::keyClick(sheet->focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(!sheet->isVisible());
        // Only what was removed left the result.
        quint64 members = 0;
        for (const DuplicateGroupPtr& group : f.app->state().duplicateMainArray)
            members += static_cast<quint64>(group->listAll().size());
        QVERIFY(members == 6u || members == 5u); // 7 copies in three groups; one went (and maybe its group)
        QCOMPARE(f.app->state().totalDuplicateCount.load(), members);

        // Quitting during a removal with "Quit" waits for the item in hand, and starts no other.
        road.screen->autoSelectItem(Selection::keepOldestTitle())->trigger();
        const QMap<QByteArray, QByteArray> second = snapshot(road.tree.root());
        holdEachItem();
        sheet = road.openReview();
        f.prompter.expectAlert(Prompter::FirstButton, false, 1);
        QTest::mouseClick(sheet->tDelete(), Qt::LeftButton);
        QVERIFY(inHand.tryAcquire(1, 10000));
        std::thread release([&] {
            QThread::msleep(200);
            goOn.release();
        });
        f.prompter.expectAlert(Prompter::FirstButton);
        QVERIFY(f.app->mayQuit());
        release.join();
        RemovalActions::setCheckedHook({});
        const QMap<QByteArray, QByteArray> end = snapshot(road.tree.root());
        QCOMPARE(second.size() - end.size(), 1);
        for (auto it = end.cbegin(); it != end.cend(); ++it)
            QCOMPARE(it.value(), second.value(it.key()));
        QVERIFY(f.prompter.allAnswered());
    }

    void cancelKeepsTheChoiceAndTheLastGroupLeavesForTheSetupScreen() {
        Road road;
        road.scanAndShow();
        AppFixture& f = road.f;
        road.screen->autoSelectItem(Selection::keepOldestTitle())->trigger();
        const QList<DuplicateFilePtr> chosen = f.app->selection().duplicateSelectedArray;
        QCOMPARE(chosen.size(), 4);

        // "No" leaves the sheet open; "Cancel" returns to the result screen with the choice intact
        // and the user's place kept: the same group row, the same scroll position.
        road.screen->chooseGroupRow(2);
        const int scroll = road.screen->duplicateListMain()->verticalScrollBar()->value();
        DeletingPanel* sheet = road.openReview();
        f.prompter.expectAlert(Prompter::SecondButton);
        QTest::mouseClick(sheet->tDelete(), Qt::LeftButton);
        QVERIFY(sheet->isVisible());
        QTest::mouseClick(sheet->back(), Qt::LeftButton);
        QVERIFY(!sheet->isVisible());
        QCOMPARE(sheet->result(), DeletingPanel::returnCode);
        QCOMPARE(f.app->typetoolbar(), 6);
        QCOMPARE(f.app->selection().duplicateSelectedArray, chosen);
        QCOMPARE(road.screen->selectedMain(), 2);
        QCOMPARE(road.screen->duplicateListMain()->verticalScrollBar()->value(), scroll);

        // The same sheet comes back, reloaded; all chosen copies go to the trash and no group is left.
        QCOMPARE(road.openReview(), sheet);
        QCOMPARE(sheet->listModel()->rowCount(), 4);
        f.prompter.expectAlert(Prompter::FirstButton, false, 0);
        f.prompter.expectAlert(Prompter::FirstButton);
        QTest::mouseClick(sheet->tDelete(), Qt::LeftButton);
        QTRY_VERIFY(!sheet->isVisible());
        QVERIFY(f.prompter.allAnswered());
        QCOMPARE(f.prompter.alertsShown.last().messageText, QStringLiteral("Alert"));
        QCOMPARE(f.prompter.alertsShown.last().informativeText, QStringLiteral("Successfully removed all duplicates."));
        QVERIFY(f.app->state().duplicateMainArray.isEmpty());
        QCOMPARE(f.app->typewindow(), 0);
        QCOMPARE(f.app->typetoolbar(), 0);
        QVERIFY(f.setup()->folderList().isEmpty());
        QCOMPARE(f.toolbarText(), QStringLiteral("Select folders to scan."));
        for (const DuplicateFilePtr& file : chosen)
            QVERIFY(!road.tree.exists(file->urlFile().mid(road.tree.root().size() + 1)));
        QVERIFY(road.tree.exists("data/solo.bin") && road.tree.exists("data/old/other.bin"));
    }

    // Copies chosen in one result are never carried into the next: every kind of scan starts with
    // nothing chosen in either list.
    void aNewScanStartsWithNothingChosen() {
        Road road;
        road.scanAndShow();
        AppFixture& f = road.f;
        auto choose = [&] {
            road.screen->autoSelectItem(Selection::keepOldestTitle())->trigger();
            QCOMPARE(f.app->selection().duplicateSelectedArray.size(), 4);
            FileDictionary listed;
            listed.url = road.tree.path("data/a.jpg");
            f.app->SelectedFileFolderArray().append(listed);
        };
        choose();
        QTest::mouseClick(f.app->backButton(), Qt::LeftButton);
        f.setup()->checkAndReloadTableView({ road.tree.path("data/old") });
        QTest::mouseClick(f.app->nextButton(), Qt::LeftButton); // a folder scan of another folder
        QVERIFY(f.app->selection().duplicateSelectedArray.isEmpty());
        QVERIFY(f.app->SelectedFileFolderArray().isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 3, kScanTimeoutMs);

        // The result of a scan of data/ again, then a list scan.
        QTest::mouseClick(f.app->backButton(), Qt::LeftButton);
        road.scanAndShow();
        choose();
        f.app->addDragFile({ road.tree.path("data/old") });
        f.app->scanStart();
        QVERIFY(f.app->selection().duplicateSelectedArray.isEmpty());
        QVERIFY(f.app->SelectedFileFolderArray().isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(!f.app->state().isScanRunning, kScanTimeoutMs);
    }

    void dropingEveryRowClosesTheSheetUntouched() {
        Road road;
        road.scanAndShow();
        AppFixture& f = road.f;
        road.screen->keepSegment(resultView::KeepNewest)->click();
        QCOMPARE(f.app->typetoolbar(), 6);
        const qsizetype listed = f.app->selection().duplicateSelectedArray.size();
        const QMap<QByteArray, QByteArray> before = snapshot(road.tree.root());
        DeletingPanel* sheet = road.openReview();
        for (qsizetype i = 0; i < listed; ++i)
            clickRemoveButton(sheet, 0);
        QTRY_VERIFY(!sheet->isVisible());
        QCOMPARE(f.app->typewindow(), 2);
        QCOMPARE(f.app->typetoolbar(), 5);
        QCOMPARE(f.app->state().duplicateMainArray.size(), 3);
        QCOMPARE(snapshot(road.tree.root()), before);
    }

    void theCompletionPanelSharesAndLeads() {
        Road road;
        road.scanAndShow();
        AppFixture& f = road.f;
        QList<QUrl> opened;
        f.app->openUrl = [&opened](const QUrl& url) {
            opened.append(url);
            return true;
        };
        road.screen->autoSelectItem(Selection::keepNewestTitle())->trigger();
        DeletingPanel* sheet = road.openReview();
        f.app->SelectedFileFolderArray() = { FileDictionary { "/x/one", 0, 2000, QStringLiteral("Other") } };
        sheet->congoPanelOpen();
        congoPanel* panel = sheet->CongoPanelObj();
        QVERIFY(panel && panel->isVisible());
        QCOMPARE(panel->SpaceFree()->text(),
            QStringLiteral("You have successfully removed 1 duplicate item and freedup 2 KB."));

        const QList<QAction*> services = panel->shareMenu()->actions();
        QCOMPARE(services.size(), 2);
        QCOMPARE(services[0]->text(), QStringLiteral("Facebook"));
        services[1]->trigger();
        services[0]->trigger();
        const QString text = RemovalTexts::shareText(1, QStringLiteral("https://twinsift.app/"));
        QVERIFY(text.contains(QStringLiteral("1 duplicate using")));
        QCOMPARE(opened.size(), 2);
        QCOMPARE(opened[0].toString(QUrl::FullyEncoded),
            QStringLiteral("https://twitter.com/intent/tweet?text=")
                + QString::fromLatin1(QUrl::toPercentEncoding(text))
                + QStringLiteral("&url=https%3A%2F%2Ftwinsift.app%2F"));
        QVERIFY(opened[0].toString(QUrl::FullyEncoded).contains(QStringLiteral("%23twinsift%20%23brindlewick")));
        QCOMPARE(opened[1].toString(QUrl::FullyEncoded),
            QStringLiteral("https://www.facebook.com/sharer/sharer.php?u=https%3A%2F%2Ftwinsift.app%2F&quote=")
                + QString::fromLatin1(QUrl::toPercentEncoding(text)));

        // OK: the panel closes, the older selection empties, the review closes, and a new scan
        // starts on the empty setup screen.
        QTest::mouseClick(panel->OkBTN(), Qt::LeftButton);
        QVERIFY(!panel->isVisible());
        QCOMPARE(panel->result(), DeletingPanel::returnCode);
        QVERIFY(f.app->SelectedFileFolderArray().isEmpty());
        QVERIFY(!sheet->isVisible());
        QCOMPARE(f.app->typewindow(), 0);
        QCOMPARE(f.app->typetoolbar(), 0);
        QVERIFY(f.setup()->folderList().isEmpty());
        QCOMPARE(f.app->state().duplicateMainArray.size(), 3);
    }

    void theRatingPromptOpensTheWebPageOnYes() {
        AppFixture f;
        QList<QUrl> opened;
        f.app->openUrl = [&opened](const QUrl& url) {
            opened.append(url);
            return true;
        };
        f.prompter.expectAlert(Prompter::SecondButton);
        f.app->rateAppApptentive();
        QVERIFY(opened.isEmpty());
        f.prompter.expectAlert(Prompter::FirstButton);
        f.app->rateAppApptentive();
        QCOMPARE(opened, QList<QUrl> { QUrl(QStringLiteral("https://twinsift.app/")) });
        QCOMPARE(f.prompter.alertsShown.last().buttons, (QStringList { "Yes", "No" }));
    }
};

QTEST_MAIN(TestResultFlow)
#include "tst_resultflow.moc"
