// What a screen reader finds in the window: the rows of the hand-drawn lists with their names and
// check states, and the names and roles of the buttons, read through QAccessible as a reader does.
#include "AppFixture.h"

#include "controls/StripedProgressBar.h"
#include "removal/DeletingPanel.h"
#include "removal/RemovalListModel.h"
#include "review/FileListModel.h"
#include "review/GroupListModel.h"
#include "review/resultView.h"

#include <QAccessible>
#include <QCheckBox>
#include <QListView>
#include <QPushButton>
#include <QtTest>

namespace {

QAccessibleInterface* readerOf(QObject* object) {
    return QAccessible::queryAccessibleInterface(object);
}

// A row of a one-column list as a reader finds it when it reads the list again. With no screen
// reader attached the lists do not announce their changes, so the rows a reader was given earlier
// are set aside first, as the announcement would.
QAccessibleInterface* rowOf(QAbstractItemView* list, int row) {
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(readerOf(list)));
    QAccessibleInterface* view = readerOf(list);
    return view && view->tableInterface() ? view->tableInterface()->cellAt(row, 0) : nullptr;
}

} // namespace

class TestAccessibility : public QObject {
    Q_OBJECT

private slots:
    void theResultScreenReadsAsItShows() {
        TempTree tree;
        tree.sizedFile("data/a.jpg", 150000, 'a');
        tree.sizedFile("data/backup/a.jpg", 150000, 'a');
        tree.sizedFile("data/old/a copy.jpg", 150000, 'a');
        tree.sizedFile("data/b.txt", 150000, 'b');
        tree.sizedFile("data/backup/b.txt", 150000, 'b');
        AppFixture f;
        resultView* screen = f.app->resultViewObj();

        // The setup list's rows: the folder's name and its size (or that it is being measured).
        f.setup()->checkAndReloadTableView({ tree.path("data") });
        QAccessibleInterface* folders = readerOf(f.setup()->mainScanList());
        QCOMPARE(folders->text(QAccessible::Name), QStringLiteral("Folders to scan"));
        QCOMPARE(folders->tableInterface()->rowCount(), 1);
        QVERIFY(rowOf(f.setup()->mainScanList(), 0)->text(QAccessible::Name).startsWith(QStringLiteral("data, ")));
        QCOMPARE(
            rowOf(f.setup()->mainScanList(), 0)->text(QAccessible::Description), QString::fromUtf8(tree.path("data")));
        QCOMPARE(readerOf(f.app->nextButton())->text(QAccessible::Name), QStringLiteral("Start Scan"));

        f.app->nextButton()->click();
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 4, kScanTimeoutMs);
        // The image buttons say what they do.
        QAccessibleInterface* next = readerOf(f.app->nextButton());
        QCOMPARE(next->role(), QAccessible::Button);
        QCOMPARE(next->text(QAccessible::Name), QStringLiteral("Show duplicates"));
        f.app->nextButton()->click();
        QCOMPARE(f.app->typewindow(), 2);
        QCOMPARE(next->text(QAccessible::Name), QStringLiteral("Review and remove the selected duplicates"));
        QVERIFY(next->state().disabled);
        QCOMPARE(readerOf(f.app->backButton())->text(QAccessible::Name), QStringLiteral("New scan"));

        // A group row reads as it is drawn: the original's name, the group's size and its badge.
        QAccessibleInterface* groups = readerOf(screen->duplicateListMain());
        QCOMPARE(groups->role(), QAccessible::List);
        QCOMPARE(groups->text(QAccessible::Name), QStringLiteral("Duplicate groups"));
        QCOMPARE(groups->tableInterface()->rowCount(), 2);
        QAccessibleInterface* first = rowOf(screen->duplicateListMain(), 0);
        QCOMPARE(first->role(), QAccessible::ListItem);
        const QString size = screen->groupModel()->index(0).data(GroupListModel::SizeTextRole).toString();
        QCOMPARE(first->text(QAccessible::Name), QStringLiteral("a.jpg, %1, 0 of 3 chosen").arg(size));
        QCOMPARE(first->text(QAccessible::Description), QString::fromUtf8(tree.path("data/a.jpg")));
        QVERIFY(first->state().selected);

        // A copy's row: its name (the original says so), a check box the reader can see, the size and path.
        QAccessibleInterface* copies = readerOf(screen->sameList());
        QCOMPARE(copies->text(QAccessible::Name), QStringLiteral("Copies of the group"));
        QCOMPARE(copies->tableInterface()->rowCount(), 3);
        QAccessibleInterface* original = rowOf(screen->sameList(), 0);
        QCOMPARE(original->text(QAccessible::Name), QStringLiteral("a.jpg, original"));
        QVERIFY(original->text(QAccessible::Description).endsWith(QString::fromUtf8(tree.path("data/a.jpg"))));
        QVERIFY(original->state().checkable);
        QVERIFY(!original->state().checked);
        screen->autoSelectItem(Selection::keepNewestTitle())->trigger();
        QVERIFY(rowOf(screen->sameList(), 0)->state().checked);
        QVERIFY(rowOf(screen->sameList(), 1)->state().checked);
        QVERIFY(!rowOf(screen->sameList(), 2)->state().checked);
        QCOMPARE(rowOf(screen->duplicateListMain(), 0)->text(QAccessible::Name),
            QStringLiteral("a.jpg, %1, 2 of 3 chosen").arg(size));
        QVERIFY(!next->state().disabled);

        // The controls beside the lists.
        QAccessibleInterface* box = readerOf(screen->checkBoxAllDuplicates());
        QCOMPARE(box->role(), QAccessible::CheckBox);
        QCOMPARE(box->text(QAccessible::Name), QStringLiteral("Choose every copy of this group"));
        QVERIFY(box->state().checkStateMixed);
        QAccessibleInterface* all = readerOf(screen->filterButton(10));
        QVERIFY(all->state().checkable && all->state().checked);
        QVERIFY(!readerOf(screen->filterButton(40))->state().checked);
        QCOMPARE(readerOf(screen->keepSegment(resultView::KeepOldest))->text(QAccessible::Name),
            QStringLiteral("Keep Oldest"));
        QCOMPARE(readerOf(screen->sortingButton())->text(QAccessible::Name), QStringLiteral("Sort by"));
        QCOMPARE(readerOf(screen->searchALL())->text(QAccessible::Name), QStringLiteral("Search the paths"));

        // The review sheet: the chosen files by path, and the progress bar of a removal.
        f.app->nextButton()->click();
        DeletingPanel* sheet = f.app->deleteingWindow();
        QVERIFY(sheet && QTest::qWaitForWindowExposed(sheet));
        QAccessibleInterface* review = readerOf(sheet->tableDeletefileList());
        QCOMPARE(review->text(QAccessible::Name), QStringLiteral("Files chosen for removal"));
        QCOMPARE(review->tableInterface()->rowCount(), 3);
        QCOMPARE(rowOf(sheet->tableDeletefileList(), 0)->text(QAccessible::Name),
            sheet->listModel()->index(0).data(Qt::DisplayRole).toString());
        QAccessibleInterface* progress = readerOf(sheet->progressBar());
        QCOMPARE(progress->role(), QAccessible::ProgressBar);
        QCOMPARE(progress->text(QAccessible::Name), QStringLiteral("Removal progress"));
        sheet->closewindow();
    }
};

QTEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
