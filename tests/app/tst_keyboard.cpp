// The window from the keyboard alone: a folder scan driven with keys from the setup screen to the
// removal, and the scan list's pages.
#include "AppFixture.h"

#include "app/OlderPages.h"
#include "app/OlderToolbar.h"
#include "app/mainScreen.h"
#include "removal/DeletingPanel.h"
#include "removal/RemovalListModel.h"
#include "review/FileListModel.h"
#include "review/GroupListModel.h"
#include "review/OlderFileModel.h"
#include "review/OlderGroupModel.h"
#include "review/PreviewWindow.h"
#include "review/ResultLists.h"
#include "review/ResultScreen.h"
#include "review/resultView.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>
#include <QtTest>

namespace {

QWidget* focused() {
    return QApplication::focusWidget();
}

// A key as the user types it: to the focused widget of the active window, or to the open menu.
void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(static_cast<QWidget*>(nullptr), key, modifiers);
}

QString describe(const QWidget* widget) {
    if (!widget)
        return QStringLiteral("nothing");
    const auto* button = qobject_cast<const QAbstractButton*>(widget);
    return widget->objectName() + (button ? QLatin1Char(' ') + button->text() : QString());
}

// Tab (or Backtab) as often as it takes, within a round of the window, until `target` has the focus.
bool tabTo(const QWidget* target, Qt::Key key = Qt::Key_Tab) {
    QStringList seen;
    for (int i = 0; i < 30 && focused() != target; ++i) {
        seen.append(describe(focused()));
        press(key);
    }
    if (focused() != target)
        qWarning("%s not reached; Tab went through %s", qPrintable(describe(target)), qPrintable(seen.join(", ")));
    return focused() == target;
}

// Space on the focused menu button, Down until `title` is the active item, Return to take it.
bool chooseFromMenu(const QString& title) {
    bool chosen = false;
    QTimer::singleShot(0, qApp, [&chosen, title] {
        QMenu* menu = nullptr;
        if (!QTest::qWaitFor([&menu] { return (menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())); }))
            return;
        for (int i = 0; i < 12 && !(menu->activeAction() && menu->activeAction()->text() == title); ++i)
            press(Qt::Key_Down);
        chosen = menu->activeAction() && menu->activeAction()->text() == title;
        press(chosen ? Qt::Key_Return : Qt::Key_Escape);
    });
    QWidget* window = QApplication::activeWindow();
    press(Qt::Key_Space);
    // The offscreen platform activates a menu as a window of its own and leaves it active when it
    // closes; a desktop hands the keyboard back to the window the menu belongs to.
    if (window && QApplication::activeWindow() != window) {
        window->activateWindow();
        return QTest::qWaitForWindowActive(window) && chosen;
    }
    return chosen;
}

QStringList shownNames(const resultView* screen) {
    QStringList names;
    for (int row = 0; row < screen->groupModel()->rowCount(); ++row)
        names.append(screen->groupModel()->index(row).data(GroupListModel::NameRole).toString());
    return names;
}

} // namespace

class TestKeyboard : public QObject {
    Q_OBJECT

private slots:
    // Setup, scan, result screen, a choice of copies, the review sheet and the removal: no mouse.
    void aWholeFolderScanByKeys() {
        TempTree tree;
        tree.sizedFile("data/a.jpg", 150000, 'a');
        tree.sizedFile("data/backup/a.jpg", 150000, 'a');
        tree.sizedFile("data/old/a copy.jpg", 150000, 'a');
        tree.sizedFile("data/b.txt", 150000, 'b');
        tree.sizedFile("data/backup/b.txt", 150000, 'b');
        tree.sizedFile("data/c.bin", 160000, 'c');
        tree.sizedFile("data/backup/c.bin", 160000, 'c');
        AppFixture f;
        QVERIFY(QTest::qWaitForWindowActive(f.app->window()));
        resultView* screen = f.app->resultViewObj();
        Selection& selection = f.app->selection();

        // An empty setup screen starts on Add Folders; Return starts the scan of what it added.
        QCOMPARE(focused(), f.setup()->addButton());
        f.prompter.expectPanel(Prompter::OK, { tree.path("data") });
        press(Qt::Key_Space);
        QTRY_COMPARE(f.setup()->folderList(), QList<QByteArray> { tree.path("data") });
        press(Qt::Key_Return);
        QCOMPARE(f.app->typewindow(), 1);
        // The scan's end hands the focus to "Show duplicates"; Return presses it.
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 4, kScanTimeoutMs);
        QCOMPARE(focused(), f.app->nextButton());
        press(Qt::Key_Return);
        QCOMPARE(f.app->typewindow(), 2);
        QCOMPARE(focused(), screen->duplicateListMain());
        QCOMPARE(shownNames(screen), (QStringList { "a.jpg", "b.txt", "c.bin" }));

        // The arrows walk the groups; Return goes on to the copies, where the arrows walk the copies
        // and Return ticks and clears the current one.
        press(Qt::Key_Down);
        QCOMPARE(screen->selectedMain(), 1);
        press(Qt::Key_Up);
        QCOMPARE(screen->selectedMain(), 0);
        const DuplicateGroupPtr a = screen->currentGroup();
        press(Qt::Key_Return);
        QCOMPARE(focused(), screen->sameList());
        press(Qt::Key_Down);
        QCOMPARE(screen->rowSubSave(), 1);
        press(Qt::Key_Return);
        QCOMPARE(selection.duplicateSelectedArray, QList<DuplicateFilePtr> { a->listAll()[1] });
        QCOMPARE(f.app->typetoolbar(), 6);
        press(Qt::Key_Enter, Qt::KeypadModifier);
        QVERIFY(selection.isEmpty());
        QCOMPARE(f.app->typetoolbar(), 5);

        // Space keeps the preview: it opens the larger window and closes it again.
        press(Qt::Key_Space);
        QTRY_VERIFY(screen->previewWindow()->isVisible());
        QCOMPARE(screen->previewWindow()->path(), a->listAll()[1]->urlFile());
        press(Qt::Key_Space);
        QTRY_VERIFY(!screen->previewWindow()->isVisible());
        QTRY_COMPARE(focused(), screen->sameList());

        // Back from the copies to the keep segments, along them with the arrows; Space keeps the
        // newest copy of the group.
        QVERIFY(tabTo(screen->keepSegment(resultView::KeepOldest), Qt::Key_Backtab));
        press(Qt::Key_Left);
        QCOMPARE(focused(), screen->keepSegment(resultView::KeepNewest));
        press(Qt::Key_Space);
        QCOMPARE(selection.duplicateSelectedArray, a->listAll().first(2));
        QCOMPARE(screen->checkBoxAllDuplicates()->checkState(), Qt::PartiallyChecked);
        // The group's box: Space chooses every copy.
        press(Qt::Key_Backtab);
        QCOMPARE(focused(), screen->keepSegment(resultView::KeepAll));
        press(Qt::Key_Backtab);
        QCOMPARE(focused(), screen->checkBoxAllDuplicates());
        press(Qt::Key_Space);
        QCOMPARE(screen->countSelected(), 3);

        // The type filters are one stop for Tab, at the chosen filter from either side; the arrows
        // move the filter.
        QVERIFY(tabTo(screen->sortingButton(), Qt::Key_Backtab));
        press(Qt::Key_Backtab);
        QCOMPARE(focused(), screen->filterButton(ResultLists::AllTypes));
        for (int i = 0; i < 3; ++i)
            press(Qt::Key_Right);
        QVERIFY(screen->filterButton(40)->isChecked());
        QCOMPARE(focused(), screen->filterButton(40));
        QCOMPARE(shownNames(screen), QStringList { "b.txt" });
        press(Qt::Key_Tab);
        QCOMPARE(focused(), screen->sortingButton());
        press(Qt::Key_Backtab);
        QCOMPARE(focused(), screen->filterButton(40));
        for (int i = 0; i < 3; ++i)
            press(Qt::Key_Left);
        QVERIFY(screen->filterButton(ResultLists::AllTypes)->isChecked());
        QCOMPARE(shownNames(screen).size(), 3);

        // The sort pop-up opens with Space and is worked with the arrows and Return.
        press(Qt::Key_Tab);
        QVERIFY(chooseFromMenu(QStringLiteral("Wasted Size")));
        QCOMPARE(screen->sortingButton()->text(), QStringLiteral("Wasted Size"));
        QTRY_COMPARE(shownNames(screen), (QStringList { "b.txt", "c.bin", "a.jpg" }));

        // The search field.
        press(Qt::Key_Tab);
        QCOMPARE(focused(), screen->searchALL());
        QTest::keyClicks(focused(), QStringLiteral("a copy"));
        press(Qt::Key_Return);
        QCOMPARE(shownNames(screen), QStringList { "a.jpg" });
        press(Qt::Key_A, Qt::ControlModifier);
        press(Qt::Key_Backspace);
        press(Qt::Key_Return);
        QCOMPARE(shownNames(screen).size(), 3);

        // Deselect All, then Auto Select's pop-up: every copy but the newest of each group.
        QVERIFY(tabTo(screen->deselectAllBtn()));
        press(Qt::Key_Space);
        QVERIFY(selection.isEmpty());
        QCOMPARE(f.app->typetoolbar(), 5);
        press(Qt::Key_Backtab);
        QCOMPARE(focused(), screen->autoSelectBTN());
        QVERIFY(chooseFromMenu(Selection::keepNewestTitle()));
        QCOMPARE(selection.duplicateSelectedArray.size(), 4);
        QCOMPARE(f.app->typetoolbar(), 6);

        // The toolbar's Remove opens the review sheet, which starts on its list.
        QVERIFY(tabTo(f.app->nextButton()));
        press(Qt::Key_Space);
        DeletingPanel* sheet = f.app->deleteingWindow();
        QVERIFY(sheet);
        QVERIFY(QTest::qWaitForWindowActive(sheet));
        QCOMPARE(focused(), sheet->tableDeletefileList());
        QCOMPARE(sheet->listModel()->rowCount(), 4);
        // Delete drops the current file from the list (not from its group); the next row takes its place.
        press(Qt::Key_Down);
        const int row = sheet->tableDeletefileList()->currentIndex().row();
        QVERIFY(row >= 0);
        const DuplicateFilePtr dropped = selection.duplicateSelectedArray.at(row);
        press(Qt::Key_Delete);
        QCOMPARE(sheet->listModel()->rowCount(), 3);
        QVERIFY(!selection.duplicateSelectedArray.contains(dropped));
        QCOMPARE(sheet->tableDeletefileList()->currentIndex().row(), std::min(row, 2));
        // Tab goes to the buttons and back round to the list.
        QVERIFY(tabTo(sheet->back()));
        QVERIFY(tabTo(sheet->tDelete()));
        QVERIFY(tabTo(sheet->tableDeletefileList()));

        // Return is "Remove Selected"; the question answered, the three files go to the trash.
        const QList<DuplicateFilePtr> chosen = selection.duplicateSelectedArray;
        f.prompter.expectAlert(Prompter::FirstButton, false, 0);
        press(Qt::Key_Return);
        QTRY_VERIFY(!sheet->isVisible());
        QVERIFY(f.prompter.allAnswered());
        for (const DuplicateFilePtr& file : chosen)
            QVERIFY(!QFile::exists(QString::fromUtf8(file->urlFile())));
        QVERIFY(QFile::exists(QString::fromUtf8(dropped->urlFile())));

        // The group of the dropped file is left, and the keyboard goes on from the group list.
        QCOMPARE(f.app->typewindow(), 2);
        QCOMPARE(screen->groupModel()->rowCount(), 1);
        QTRY_VERIFY(QApplication::activeWindow() == f.app->window());
        QCOMPARE(focused(), screen->duplicateListMain());
    }

    // The scan list's pages: its list, the list scan, the result page's lists and check boxes, and
    // the rows of the list again after the scan.
    void theScanListByKeys() {
        TempTree tree;
        tree.sizedFile("target/A/p1.jpg", 120000, 'p');
        tree.sizedFile("target/B/p2.jpg", 120000, 'p');
        tree.sizedFile("target/A/t1.txt", 110000, 't');
        tree.sizedFile("target/B/t2.txt", 110000, 't');
        tree.sizedFile("target/C/t3.txt", 110000, 't');
        tree.sizedFile("target/A/o1.bin", 130000, 'o');
        tree.sizedFile("target/C/o2.bin", 130000, 'o');
        tree.folder("extra");
        AppFixture f;
        QVERIFY(QTest::qWaitForWindowActive(f.app->window()));
        OlderToolbar* bar = f.app->olderPages()->toolbar();
        ResultScreen* page = f.app->ResultScreenObj();

        // Ctrl+L shows the scan list; an empty list starts on Add.
        press(Qt::Key_L, Qt::ControlModifier);
        QVERIFY(f.app->isOlderViewShown());
        QCOMPARE(focused(), bar->Add());
        f.prompter.expectPanel(Prompter::OK, { tree.path("target"), tree.path("extra") });
        press(Qt::Key_Space);
        QTRY_COMPARE(f.app->state().mainArray.size(), 2);
        QTRY_VERIFY(bar->scan()->isEnabled());
        QVERIFY(tabTo(bar->scan()));
        press(Qt::Key_Space);
        QTRY_VERIFY_WITH_TIMEOUT(!f.app->isMainScreen(), kScanTimeoutMs);
        QTRY_VERIFY(!f.app->state().isScanRunning);
        QVERIFY(page->isAncestorOf(focused()));

        // The types, the groups and the files are worked with the arrows; Tab goes from one to the
        // next (not from cell to cell); Return ticks the current file.
        QVERIFY(tabTo(page->typeList()));
        press(Qt::Key_Down);
        QCOMPARE(page->groupModel()->rowCount(), 1);
        press(Qt::Key_Up);
        QCOMPARE(page->groupModel()->rowCount(), 3);
        press(Qt::Key_Tab);
        QCOMPARE(focused(), page->duplicateList());
        press(Qt::Key_Down);
        QCOMPARE(page->duplicateList()->currentIndex().row(), 1);
        QVERIFY(tabTo(page->sameList()));
        press(Qt::Key_Down);
        press(Qt::Key_Return);
        QVERIFY(page->fileModel()->isChosen(1));
        QTRY_VERIFY(bar->Remove()->isEnabled());
        press(Qt::Key_Return);
        QVERIFY(!page->fileModel()->isChosen(1));

        // Back on the list after the scan, Delete still removes the current row.
        QCOMPARE(bar->Add()->text(), QStringLiteral("Back"));
        QVERIFY(tabTo(bar->Add()));
        press(Qt::Key_Space);
        QVERIFY(f.app->isMainScreen());
        QVERIFY(tabTo(f.app->mainScreenObj()->foldersScrollview()));
        press(Qt::Key_Home);
        press(Qt::Key_Delete);
        QCOMPARE(f.app->state().mainArray, QList<QByteArray> { tree.path("extra") });
    }
};

QTEST_MAIN(TestKeyboard)
#include "tst_keyboard.moc"
