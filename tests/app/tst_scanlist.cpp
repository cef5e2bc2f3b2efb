// The scan-list pages: the target list, the list scan from the menu, and the result page with its
// types, sorting, search, selection rules, context menu, status line and popover.
#include "AppFixture.h"

#include "app/AppMenus.h"
#include "app/FolderRowDelegate.h"
#include "app/MainArrayModel.h"
#include "app/MenuRules.h"
#include "app/OlderPages.h"
#include "app/OlderToolbar.h"
#include "app/mainScreen.h"
#include "base/ByteCountFormatter.h"
#include "base/PathBytes.h"
#include "controls/StripedProgressBar.h"
#include "removal/DeletingPanel.h"
#include "review/OlderFileModel.h"
#include "review/OlderGroupModel.h"
#include "review/OlderTypeModel.h"
#include "review/PreviewWindow.h"
#include "review/ResultScreen.h"
#include "review/StatusTexts.h"
#include "review/StatusWindow.h"
#include "review/resultView.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>
#include <QtTest>

namespace {

QAction* menuItem(AppFixture& f, int tag) {
    f.app->validateMenus();
    return AppMenus::itemWithTag(*f.app->window(), tag);
}

// The names of the groups shown, by their originals.
QStringList shownOriginals(AppFixture& f) {
    QStringList names;
    for (const GroupDictionary& group : f.app->ResultScreenObj()->groupModel()->groups())
        names.append(PathBytes::display(PathBytes::lastPathComponent(group.original.url)));
    return names;
}

// A path below the target as "A/t1.txt".
QString shortName(const QByteArray& path) {
    const QByteArray folder = PathBytes::lastPathComponent(PathBytes::deletingLastPathComponent(path));
    return PathBytes::display(folder + '/' + PathBytes::lastPathComponent(path));
}

QStringList chosenNames(AppFixture& f) {
    QStringList names;
    for (const FileDictionary& file : f.app->SelectedFileFolderArray())
        names.append(shortName(file.url));
    names.sort();
    return names;
}

// Makes `group` the current group by clicking its row.
void chooseGroup(AppFixture& f, const QString& original) {
    const qsizetype row = shownOriginals(f).indexOf(original);
    QVERIFY(row >= 0);
    QTableView* table = f.app->ResultScreenObj()->duplicateList();
    table->setCurrentIndex(table->model()->index(static_cast<int>(row), 0));
    QCOMPARE(f.app->ReloadRow(), row);
}

} // namespace

class TestScanList : public QObject {
    Q_OBJECT

private:
    // Three groups in three folders that differ: photos (2), texts (3) and others (2).
    static QByteArray makeTarget(TempTree& tree) {
        tree.sizedFile("target/A/p1.jpg", 120000, 'p');
        tree.sizedFile("target/B/p2.jpg", 120000, 'p');
        tree.sizedFile("target/A/t1.txt", 110000, 't');
        tree.sizedFile("target/B/t2.txt", 110000, 't');
        tree.sizedFile("target/C/t3.txt", 110000, 't');
        tree.sizedFile("target/A/o1.bin", 130000, 'o');
        tree.sizedFile("target/C/o2.bin", 130000, 'o');
        tree.sizedFile("target/C/solo.bin", 130000, 's');
        return tree.path("target");
    }

    // Shows the scan list, lists the target and runs the list scan from the menu, up to its result.
    static void scanFromTheMenu(AppFixture& f, const QByteArray& target) {
        QAction* show = f.app->window()->findChild<QAction*>(QStringLiteral("ShowScanList"));
        QVERIFY(show);
        show->trigger();
        QVERIFY(f.app->isOlderViewShown());
        QVERIFY(f.app->isMainScreen());
        QVERIFY(f.toolbar()->isHidden());
        f.app->addDragFile({ target });
        QAction* scan = menuItem(f, MenuRules::Scan);
        QTRY_VERIFY(scan->isEnabled());
        scan->trigger();
        QVERIFY(f.app->state().isScanRunning);
        QVERIFY(!f.app->olderPages()->toolbar()->scan()->isEnabled());
        QVERIFY(!f.app->olderPages()->toolbar()->folderScanButton()->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(!f.app->isMainScreen(), kScanTimeoutMs);
        QVERIFY(f.app->olderPages()->currentPage() == f.app->ResultScreenObj());
        // The list is filtered once a moment after it shows: sorted by the original's name.
        QTRY_COMPARE(shownOriginals(f), (QStringList { "o1.bin", "p1.jpg", "t1.txt" }));
        // The scan counts as running a moment longer; nothing starts another meanwhile.
        QTRY_VERIFY(!f.app->state().isScanRunning);
        QVERIFY(f.app->olderPages()->toolbar()->ResetNewScanBTN()->isEnabled());
    }

private slots:
    // A list scan that found nothing clears the running flag once more a moment later: that step
    // must leave alone a scan started in between.
    void aLaterScanKeepsItsRunningFlag() {
        TempTree tree;
        tree.file("lone/a.txt", "only one");
        AppFixture f;
        f.app->ShowScanList_Menubar();
        f.app->addDragFile({ tree.path("lone") });
        f.app->scanStart();
        QTRY_VERIFY_WITH_TIMEOUT(!f.app->state().isScanRunning, kScanTimeoutMs);
        // The next scan starts as the driver starts every scan, and is still running 1.5 s later.
        ++f.app->state().scanGeneration;
        f.app->state().isScanRunning = true;
        QTest::qWait(1700);
        QVERIFY(f.app->state().isScanRunning);
        f.app->state().isScanRunning = false;
    }

    void theTargetListTakesPanelsDropsAndRemovals() {
        TempTree tree;
        const QByteArray one = tree.folder("one");
        const QByteArray two = tree.folder("two");
        const QByteArray file = tree.file("note.txt", "x");
        AppFixture f;
        // A folder waits on the setup screen (toolbar state 1): its Return key does not start the
        // folder scan while the scan list shows.
        f.setup()->checkAndReloadTableView({ one });
        QCOMPARE(f.app->typetoolbar(), 1);
        f.app->ShowScanList_Menubar();
        QVERIFY(QTest::qWaitForWindowActive(f.app->window()));
        QTest::keyClick(f.app->window(), Qt::Key_Return);
        QVERIFY(!f.app->state().isScanRunning);
        QCOMPARE(f.app->typewindow(), 0);
        mainScreen* page = f.app->mainScreenObj();
        QTRY_COMPARE(f.app->olderItems().bottomStatus, StatusTexts::addOrDragText());
        QVERIFY(page->hint()->isVisibleTo(page));
        QCOMPARE(page->hint()->text(), QStringLiteral("Add or Drag Files and Folders"));
        // The popover does not open over the hint.
        f.app->showStatusWindow();
        QVERIFY(!f.app->StatusWindowObj()->isVisible());

        // The add panel: files and folders, several, new folders allowed; a repeat joins once.
        f.prompter.expectPanel(Prompter::OK, { one, file, one });
        QTest::mouseClick(f.app->olderPages()->toolbar()->Add(), Qt::LeftButton);
        const Prompter::OpenPanel& panel = f.prompter.panelsShown.last();
        QVERIFY(panel.canChooseFiles && panel.canChooseDirectories);
        QVERIFY(panel.allowsMultipleSelection && panel.canCreateDirectories);
        QCOMPARE(f.app->state().mainArray, (QList<QByteArray> { one, file }));
        QVERIFY(page->hint()->isHidden());
        QTRY_VERIFY(f.app->olderPages()->toolbar()->scan()->isEnabled());
        QVERIFY(f.app->olderItems().bottomStatus.isEmpty());

        // A drop lands at the row under the pointer; plain files are refused.
        QMimeData mime;
        mime.setData(QStringLiteral("text/uri-list"), PathBytes::fileUrl(two) + "\r\n" + PathBytes::fileUrl(file));
        f.app->window()->resize(760, 540);
        page->foldersScrollview()->doItemsLayout();
        const QRect firstRow = page->foldersScrollview()->visualRect(page->model()->index(0));
        const QPoint at = page->foldersScrollview()->viewport()->mapTo(page, firstRow.center());
        QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(page, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(page, &drop);
        QCOMPARE(f.app->state().mainArray, (QList<QByteArray> { two, one, file }));
        QCOMPARE(page->model()->rowCount(), 3);

        // A row's remove button takes it out, unless a scan runs.
        auto clickRemove = [page](int row) {
            const QRect rect = page->foldersScrollview()->visualRect(page->model()->index(row));
            QTest::mouseClick(page->foldersScrollview()->viewport(), Qt::LeftButton, Qt::NoModifier,
                FolderRowDelegate::removeButtonRect(rect).center());
        };
        f.app->state().isScanRunning = true;
        clickRemove(0);
        QCOMPARE(f.app->state().mainArray.size(), 3);
        f.app->state().isScanRunning = false;
        clickRemove(0);
        QCOMPARE(f.app->state().mainArray, (QList<QByteArray> { one, file }));

        // Leaving keeps the list for the next visit; the window is back where it was.
        QTest::mouseClick(f.app->olderPages()->toolbar()->folderScanButton(), Qt::LeftButton);
        QVERIFY(!f.app->isOlderViewShown());
        QVERIFY(f.setup()->isVisible());
        QVERIFY(!f.toolbar()->isHidden());
        QCOMPARE(f.app->typetoolbar(), 1);
        QCOMPARE(f.app->state().mainArray.size(), 2);
    }

    // Back on the list after a scan, a row's remove button takes it out at once (it once did
    // nothing until another item had been added).
    void rowsCanBeRemovedAfterAScan() {
        TempTree tree;
        const QByteArray target = makeTarget(tree);
        const QByteArray extra = tree.folder("extra");
        AppFixture f;
        f.app->addDragFile({ extra });
        scanFromTheMenu(f, target);
        QCOMPARE(f.app->state().mainArray, (QList<QByteArray> { extra, target }));
        QTest::mouseClick(f.app->olderPages()->toolbar()->Add(), Qt::LeftButton);
        QVERIFY(f.app->isMainScreen());
        QListView* list = f.app->mainScreenObj()->foldersScrollview();
        list->doItemsLayout();
        const QRect row = list->visualRect(f.app->mainScreenObj()->model()->index(0));
        QTest::mouseClick(
            list->viewport(), Qt::LeftButton, Qt::NoModifier, FolderRowDelegate::removeButtonRect(row).center());
        QCOMPARE(f.app->state().mainArray, QList<QByteArray> { target });
        QCOMPARE(f.app->mainScreenObj()->model()->rowCount(), 1);
    }

    void aListScanEndsOnItsResult() {
        TempTree tree;
        const QByteArray target = makeTarget(tree);
        AppFixture f;
        scanFromTheMenu(f, target);
        ResultScreen* page = f.app->ResultScreenObj();
        OlderToolbar* bar = f.app->olderPages()->toolbar();

        // The toolbar of the result page: back to the list, remove, new scan.
        QCOMPARE(bar->Add()->text(), QStringLiteral("Back"));
        QVERIFY(bar->Add()->isEnabled());
        QVERIFY(bar->scan()->isHidden() && bar->iPhoto()->isHidden() && bar->showDuplicate()->isHidden());
        QVERIFY(!bar->Remove()->isHidden() && !bar->Remove()->isEnabled());
        QVERIFY(bar->ResetNewScanBTN()->isEnabled());
        QCOMPARE(bar->statusText()->text(), QStringLiteral("3 groups of duplicates"));
        const qint64 wasted = f.app->state().DuplicateWastedSpace;
        QCOMPARE(f.app->olderPages()->bottomStatus()->text(),
            QStringLiteral("7 Duplicates (%1)").arg(ByteCountFormatter::decimal(wasted)));

        // The types found, in their fixed order, with their figures.
        QCOMPARE(page->typeModel()->types(), (QStringList { "All", "Photo", "Text", "Other" }));
        QCOMPARE(page->typeModel()->index(2).data(OlderTypeModel::CountRole).toString(), QStringLiteral("0 of 3"));
        // Group rows: chosen of all, and the group's size.
        const QModelIndex textRow = page->groupModel()->index(2, OlderGroupModel::SelectedColumn);
        QCOMPARE(textRow.data().toString(), QStringLiteral("0 of 3"));
        const qint64 textBytes = 3 * allocatedSize(tree.path("target/A/t1.txt"));
        QCOMPARE(page->groupModel()->index(2, OlderGroupModel::SizeColumn).data().toString(),
            QStringLiteral("Size: %1").arg(ByteCountFormatter::decimal(textBytes)));

        // A type narrows the list; "All" brings it back.
        page->typeList()->setCurrentIndex(page->typeModel()->index(2));
        QCOMPARE(shownOriginals(f), QStringList { "t1.txt" });
        QCOMPARE(f.app->ReloadRowMain(), 2);
        page->typeList()->setCurrentIndex(page->typeModel()->index(0));
        QCOMPARE(shownOriginals(f).size(), 3);

        // Sorting: a key keeps the direction, a direction keeps the key; the pop-up shows both.
        page->sortItemAt(2)->trigger(); // Duplicate Count
        QCOMPARE(shownOriginals(f), (QStringList { "o1.bin", "p1.jpg", "t1.txt" }));
        page->sortItemAt(8)->trigger(); // Z to A
        QCOMPARE(shownOriginals(f), (QStringList { "t1.txt", "o1.bin", "p1.jpg" }));
        QVERIFY(page->sortItemAt(2)->isChecked() && page->sortItemAt(8)->isChecked());
        QVERIFY(!page->sortItemAt(0)->isChecked() && !page->sortItemAt(7)->isChecked());
        QCOMPARE(page->btnSortItem_()->text(), QStringLiteral("Duplicate Count ↓"));
        page->sortItemAt(0)->trigger();
        page->sortItemAt(7)->trigger();
        QCOMPARE(shownOriginals(f), (QStringList { "o1.bin", "p1.jpg", "t1.txt" }));

        // Search: any member's path, ignoring case; the whole group stays.
        QTest::keyClicks(page->searchALL(), QStringLiteral("c/T3"));
        QCOMPARE(shownOriginals(f), QStringList { "t1.txt" });
        QVERIFY(page->notFound()->isHidden());
        page->searchALL()->setText(QStringLiteral("nothing like it"));
        QVERIFY(shownOriginals(f).isEmpty());
        QVERIFY(page->notFound()->isVisibleTo(page));
        page->searchALL()->clear();
        QCOMPARE(shownOriginals(f).size(), 3);

        // Ctrl+F reaches this page's search field.
        QVERIFY(menuItem(f, MenuRules::Find)->isEnabled());
        f.app->Findfile();
        QVERIFY(page->searchALL()->hasFocus() || !f.app->window()->isActiveWindow());

        // New scan: the scan list is forgotten and the folder scan's setup screen is back.
        QTest::mouseClick(bar->ResetNewScanBTN(), Qt::LeftButton);
        QVERIFY(!f.app->isOlderViewShown());
        QVERIFY(f.setup()->isVisible());
        QCOMPARE(f.app->typewindow(), 0);
        QVERIFY(f.app->state().mainArray.isEmpty() && f.app->saveResultArray().isEmpty());
        QVERIFY(f.app->state().DuplicateFileFolderArray.isEmpty());
        QVERIFY(!menuItem(f, MenuRules::NewScan)->isEnabled());
    }

    void selectionRulesThroughTheSelectionMenu_data() {
        QTest::addColumn<bool>("suppress");
        QTest::newRow("asked every time") << false;
        QTest::newRow("not asked again") << true;
    }
    void selectionRulesThroughTheSelectionMenu() {
        QFETCH(bool, suppress);
        TempTree tree;
        const QByteArray target = makeTarget(tree);
        AppFixture f;
        scanFromTheMenu(f, target);
        ResultScreen* page = f.app->ResultScreenObj();
        QAction* selectItem = menuItem(f, MenuRules::SelectAllDuplicate);
        QVERIFY(selectItem->isEnabled());

        // The menu item pops up the selection menu at its button.
        selectItem->trigger();
        QTRY_COMPARE(QApplication::activePopupWidget(), page->select_menu());
        page->select_menu()->close();
        QTest::mouseClick(page->Select_Duplicate_(), Qt::LeftButton);
        QTRY_COMPARE(QApplication::activePopupWidget(), page->select_menu());
        page->keepNewestItem()->trigger();
        page->select_menu()->close();
        // Files of a group are in creation order: the last one is the newest.
        QStringList expected;
        for (const GroupDictionary& group : f.app->saveResultArray()) {
            for (qsizetype i = 0; i + 1 < group.SameFileList.size(); ++i)
                expected.append(shortName(group.SameFileList[i].url));
        }
        expected.sort();
        QCOMPARE(chosenNames(f), expected);
        QCOMPARE(page->Select_Duplicate_()->text(), QStringLiteral("Keep Newest"));
        const qint64 each[] = { allocatedSize(tree.path("target/A/o1.bin")),
            allocatedSize(tree.path("target/A/p1.jpg")), allocatedSize(tree.path("target/A/t1.txt")) };
        const qint64 chosenBytes = each[0] + each[1] + 2 * each[2];
        const qint64 all = f.app->state().totalDuplicateCountFolder + f.app->state().totalDuplicateCountFiles;
        QCOMPARE(f.app->olderPages()->bottomStatus()->text(),
            QStringLiteral("4 of %1 Duplicates (%2) selected").arg(all).arg(ByteCountFormatter::decimal(chosenBytes)));
        QVERIFY(f.app->olderPages()->toolbar()->Remove()->isEnabled());
        QCOMPARE(
            page->groupModel()->index(2, OlderGroupModel::SelectedColumn).data().toString(), QStringLiteral("2 of 3"));
        QCOMPARE(page->typeModel()->index(0).data(OlderTypeModel::CountRole).toString(), QStringLiteral("4 of 7"));

        // Keep none asks first: Cancel (the box ticked) changes nothing and stores nothing.
        f.prompter.expectAlert(Prompter::SecondButton, true);
        page->keepNoneItem()->trigger();
        QCOMPARE(f.app->SelectedFileFolderArray().size(), 4);
        QCOMPARE(f.prompter.alertsShown.last().messageText,
            QStringLiteral("Are you sure, you want to select all duplicate items?"));
        f.prompter.expectAlert(Prompter::FirstButton, suppress);
        page->keepNoneItem()->trigger();
        QCOMPARE(f.app->SelectedFileFolderArray().size(), 7);
        QCOMPARE(page->Select_Duplicate_()->text(), QStringLiteral("Select All"));
        // With everything chosen the menu's select command rests; its deselect item needs a
        // right-clicked row as well.
        QVERIFY(!menuItem(f, MenuRules::SelectAllDuplicate)->isEnabled());
        QVERIFY(!menuItem(f, MenuRules::DeselectAllDuplicate)->isEnabled());

        // Deselect all, then the per-group segments on the current group.
        page->deselectAllItem()->trigger();
        QVERIFY(f.app->SelectedFileFolderArray().isEmpty());
        QCOMPARE(page->Select_Duplicate_()->text(), QStringLiteral("Select Duplicates"));
        QCOMPARE(f.app->olderPages()->bottomStatus()->text(),
            QStringLiteral("7 Duplicates (%1)").arg(ByteCountFormatter::decimal(f.app->state().DuplicateWastedSpace)));
        QVERIFY(!f.app->olderPages()->toolbar()->Remove()->isEnabled());
        chooseGroup(f, QStringLiteral("t1.txt"));
        page->keepSegments()->button(3)->click(); // keep the oldest
        QCOMPARE(page->fileModel()->isChosen(0), false);
        QVERIFY(page->fileModel()->isChosen(1) && page->fileModel()->isChosen(2));
        if (!suppress)
            f.prompter.expectAlert(Prompter::FirstButton);
        page->keepSegments()->button(1)->click(); // all, asked unless suppressed
        QCOMPARE(f.app->SelectedFileFolderArray().size(), 3);
        page->keepSegments()->button(0)->click();
        QVERIFY(f.app->SelectedFileFolderArray().isEmpty());

        // Check boxes: the group's last unchosen copy is asked for, and a no puts the box back.
        QAbstractItemModel* files = page->fileModel();
        QVERIFY(files->setData(files->index(0, 0), Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(f.app->olderPages()->bottomStatus()->text(),
            QStringLiteral("1 of %1 Duplicate (%2) selected").arg(all).arg(ByteCountFormatter::decimal(each[2])));
        QVERIFY(files->setData(files->index(1, 0), Qt::Checked, Qt::CheckStateRole));
        if (!suppress)
            f.prompter.expectAlert(Prompter::SecondButton);
        QVERIFY(files->setData(files->index(2, 0), Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(files->index(2, 0).data(Qt::CheckStateRole).toInt(), suppress ? Qt::Checked : Qt::Unchecked);
        QCOMPARE(f.app->SelectedFileFolderArray().size(), suppress ? 3 : 2);
        QVERIFY(f.prompter.allAnswered());
    }

    void setAsOriginalFromTheContextMenu() {
        TempTree tree;
        const QByteArray target = makeTarget(tree);
        AppFixture f;
        scanFromTheMenu(f, target);
        ResultScreen* page = f.app->ResultScreenObj();
        chooseGroup(f, QStringLiteral("t1.txt"));
        QMenu* menu = f.app->rightClickMenu();
        QAction* setAsOriginal = menu->findChild<QAction*>(QStringLiteral("SetAsOriginal"));
        QVERIFY(setAsOriginal);
        QCOMPARE(f.app->selRowRightClick(), -1);
        QVERIFY(!f.app->validateMenuItem(0));

        // The original's own row: everything but "Set as Original".
        f.app->RightClickOnItem(0, QPoint(10, 10));
        QTRY_VERIFY(menu->isVisible());
        QVERIFY(!setAsOriginal->isEnabled());
        QVERIFY(menu->actions().first()->isEnabled()); // Quick Look
        menu->close();

        // Another row, chosen: it becomes the original and the former original takes its place in
        // the selection; the list keeps its order.
        QAbstractItemModel* files = page->fileModel();
        files->setData(files->index(1, 0), Qt::Checked, Qt::CheckStateRole);
        const QByteArray second = page->fileModel()->pathAt(1);
        f.app->RightClickOnItem(1, QPoint(10, 10));
        QVERIFY(setAsOriginal->isEnabled());
        setAsOriginal->trigger();
        menu->close();
        QVERIFY(page->fileModel()->isOriginal(1));
        QCOMPARE(page->fileModel()->pathAt(1), second);
        QVERIFY(page->fileModel()->isChosen(0) && !page->fileModel()->isChosen(1));
        QCOMPARE(page->groupTitle()->text(), PathBytes::display(PathBytes::lastPathComponent(second)));
        QVERIFY(!f.app->validateMenuItem(0, true)); // the right-clicked row is the original now
        // The whole result keeps it: a search shows the new original.
        page->searchALL()->setText(QStringLiteral("t2"));
        QCOMPARE(shownOriginals(f), QStringList { PathBytes::display(PathBytes::lastPathComponent(second)) });

        // Quick Look toggles the preview window.
        f.app->RightClickOnItem(0, QPoint(10, 10));
        menu->actions().first()->trigger();
        menu->close();
        QVERIFY(f.app->previewWindow() && f.app->previewWindow()->isVisible());
        f.app->QuickLookInIB();
        QVERIFY(!f.app->previewWindow()->isVisible());
    }

    void theChosenCopiesGoThroughTheReview() {
        TempTree tree;
        const QByteArray target = makeTarget(tree);
        AppFixture f;
        scanFromTheMenu(f, target);
        ResultScreen* page = f.app->ResultScreenObj();
        QToolButton* remove = f.app->olderPages()->toolbar()->Remove();

        // The review lists the scan list's chosen copies; a dropped row and "Cancel" leave the
        // groups and the disk as they were, and the selection without that row.
        page->keepNewestItem()->trigger();
        QTest::mouseClick(remove, Qt::LeftButton);
        DeletingPanel* sheet = f.app->scanListReview()->panel();
        QVERIFY(sheet && sheet->isVisible());
        QCOMPARE(sheet->review().numberOfRows(), 4);
        const QByteArray dropped = sheet->review().fileAtRow(0)->urlFile();
        sheet->removefromlist(0);
        QTest::mouseClick(sheet->back(), Qt::LeftButton);
        QVERIFY(!sheet->isVisible());
        QCOMPARE(f.app->SelectedFileFolderArray().size(), 3);
        QVERIFY(std::none_of(f.app->SelectedFileFolderArray().cbegin(), f.app->SelectedFileFolderArray().cend(),
            [&dropped](const FileDictionary& file) { return file.url == dropped; }));
        QCOMPARE(f.app->saveResultArray().size(), 3);

        // One copy of the three texts goes to the trash: that group keeps two, the others stay
        // whole, and nothing else on disk changes.
        page->deselectAllItem()->trigger();
        chooseGroup(f, QStringLiteral("t1.txt"));
        const QByteArray gone = page->fileModel()->pathAt(2);
        QAbstractItemModel* files = page->fileModel();
        files->setData(files->index(2, 0), Qt::Checked, Qt::CheckStateRole);
        QTest::mouseClick(remove, Qt::LeftButton);
        QVERIFY(sheet->isVisible());
        QCOMPARE(sheet->review().numberOfRows(), 1);
        f.prompter.expectAlert(Prompter::FirstButton, false, 0); // "Yes", Move to Trash
        QTest::mouseClick(sheet->tDelete(), Qt::LeftButton);
        QTRY_VERIFY(!sheet->isVisible());
        QVERIFY(!QFile::exists(QString::fromUtf8(gone)));
        for (const char* kept :
            { "target/A/p1.jpg", "target/B/p2.jpg", "target/A/o1.bin", "target/C/o2.bin", "target/C/solo.bin" })
            QVERIFY2(tree.exists(kept), kept);
        QCOMPARE(f.app->saveResultArray().size(), 3);
        QVERIFY(f.app->SelectedFileFolderArray().isEmpty());
        const qsizetype texts = shownOriginals(f).indexOf(QStringLiteral("t1.txt"));
        QCOMPARE(page->groupModel()->index(static_cast<int>(texts), OlderGroupModel::SelectedColumn).data().toString(),
            QStringLiteral("0 of 2"));
        QCOMPARE(f.app->state().totalDuplicateCountFolder.load(), 6);
        QVERIFY(f.app->olderPages()->bottomStatus()->text().startsWith(QStringLiteral("6 Duplicates (")));

        // Every group's spare copies: the scan list's main page comes back with the message.
        page->keepOldestItem()->trigger();
        QTest::mouseClick(remove, Qt::LeftButton);
        f.prompter.expectAlert(Prompter::FirstButton, false, 0);
        f.prompter.expectAlert(Prompter::FirstButton);
        QTest::mouseClick(sheet->tDelete(), Qt::LeftButton);
        QTRY_VERIFY(f.app->isMainScreen());
        QCOMPARE(f.prompter.alertsShown.last().informativeText, QStringLiteral("Successfully removed all duplicates."));
        QVERIFY(f.app->saveResultArray().isEmpty());
        QVERIFY(!f.app->olderPages()->toolbar()->showDuplicate()->isEnabled());
        QVERIFY(tree.exists("target/C/solo.bin"));
        QVERIFY(f.prompter.allAnswered());
    }

    void theSelectCommandFollowsTheScreenShown() {
        TempTree tree;
        tree.sizedFile("one/a.bin", 120000, 'a');
        tree.sizedFile("two/a.bin", 120000, 'a');
        AppFixture f;
        f.setup()->checkAndReloadTableView({ tree.path("one"), tree.path("two") });
        f.app->nextButtonAction_toolbar();
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 4, kScanTimeoutMs);
        f.app->nextButtonAction_toolbar();
        QCOMPARE(f.app->typewindow(), 2);
        // The folder scan's result screen: the command opens its automatic choice.
        menuItem(f, MenuRules::SelectAllDuplicate)->trigger();
        QTRY_COMPARE(QApplication::activePopupWidget(), f.app->resultViewObj()->autoSelectBTN()->menu());
        QApplication::activePopupWidget()->close();
        // The scan list's main page takes no selection command.
        f.app->ShowScanList_Menubar();
        QVERIFY(!menuItem(f, MenuRules::SelectAllDuplicate)->isEnabled());
    }

    void theStatusPopoverShowsTheScanFigures() {
        TempTree tree;
        const QByteArray target = makeTarget(tree);
        AppFixture f;
        scanFromTheMenu(f, target);
        StatusWindow* popover = f.app->StatusWindowObj();
        QVERIFY(f.app->olderPages()->StatusWindowBTN()->isEnabled());
        QTest::mouseClick(f.app->olderPages()->StatusWindowBTN(), Qt::LeftButton);
        QTRY_VERIFY(popover->isVisible());
        QCOMPARE(popover->scannedItems()->text(), QString::number(f.app->state().totalCount.load()));
        QCOMPARE(popover->duplicatesFound()->text(), QStringLiteral("7"));
        QCOMPARE(popover->wastedSpace()->text(), ByteCountFormatter::decimal(f.app->state().DuplicateWastedSpace));
        QCOMPARE(popover->progress()->value(), 1.0);
        QVERIFY(!popover->isINFIProcessBarShown());
        popover->closein();
        QVERIFY(!popover->isVisible());

        // A scan that finds nothing returns to the list with its text; the popover reads zero.
        TempTree lonely;
        lonely.sizedFile("only/a.bin", 120000, 'a');
        QTest::mouseClick(f.app->olderPages()->toolbar()->ResetNewScanBTN(), Qt::LeftButton);
        f.app->ShowScanList_Menubar();
        f.app->addDragFile({ lonely.path("only") });
        QTRY_VERIFY(menuItem(f, MenuRules::Scan)->isEnabled());
        f.app->Scan_Menubar();
        QTRY_VERIFY_WITH_TIMEOUT(!f.app->state().isScanRunning, kScanTimeoutMs);
        QVERIFY(f.app->isMainScreen() && f.app->isOlderViewShown());
        QCOMPARE(f.app->olderPages()->bottomStatus()->text(), QStringLiteral("Scan completed and no duplicate found"));
        QCOMPARE(f.app->olderPages()->toolbar()->statusText()->text(), QStringLiteral("No duplicates found."));
        f.app->showStatusWindow();
        QTRY_VERIFY(popover->isVisible());
        QCOMPARE(popover->wastedSpace()->text(), QStringLiteral("0 byte"));
        QCOMPARE(popover->duplicatesFound()->text(), QStringLiteral("0"));
        popover->closein();
        QVERIFY(!f.app->olderPages()->toolbar()->scan()->isEnabled());
    }
};

QTEST_MAIN(TestScanList)
#include "tst_scanlist.moc"
