// The result screen on groups made in memory: the group check box, the row controls, the preview
// window, and a result of 100,000 groups.
#include "engine/ScanState.h"
#include "review/FileActions.h"
#include "review/FileListModel.h"
#include "review/FileRowDelegate.h"
#include "review/GroupListModel.h"
#include "review/PreviewWindow.h"
#include "review/ResultFixture.h"
#include "review/ResultLists.h"
#include "review/Selection.h"
#include "review/resultView.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QtTest>

namespace {

struct Screen {
    ScanState state;
    Selection selection;
    ResultLists lists { state, selection };
    resultView view { lists, selection };

    explicit Screen(const QList<DuplicateGroupPtr>& groups) {
        state.duplicateMainArray = groups;
        view.resize(900, 600);
        view.show();
        view.getDiplayListAndReloadMainList();
    }
    qsizetype chosenIn(qsizetype row) const {
        return view.groupModel()->index(static_cast<int>(row)).data(GroupListModel::SelectedCountRole).toLongLong();
    }
};

void clickInFileRow(Screen& s, int row, QRect (*part)(const QRect&), bool twice = false) {
    QListView* list = s.view.sameList();
    const QRect rect = list->visualRect(s.view.fileModel()->index(row));
    const QPoint at = part ? part(rect).center() : rect.center();
    if (twice)
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
    else
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
}

} // namespace

class TestResultView : public QObject {
    Q_OBJECT

private slots:
    void theGroupCheckBoxHasThreeStates() {
        Screen s({ makeGroup({ "/t/a1", "/t/a2", "/t/a3" }, 10), makeGroup({ "/t/b1", "/t/b2" }, 10) });
        QVERIFY(QTest::qWaitForWindowExposed(&s.view));
        QSignalSpy changes(&s.view, &resultView::selectionChanged);
        const DuplicateGroupPtr a = s.view.currentGroup();
        QCOMPARE(originalNames({ a }), QStringList { "a1" });
        QCheckBox* box = s.view.checkBoxAllDuplicates();
        QCOMPARE(box->checkState(), Qt::Unchecked);

        s.view.keepSegment(resultView::KeepNewest)->click();
        QCOMPARE(box->checkState(), Qt::PartiallyChecked);
        QCOMPARE(s.chosenIn(0), 2);
        box->click(); // from mixed: every copy, the original included
        QCOMPARE(box->checkState(), Qt::Checked);
        QCOMPARE(s.selection.countSelected(*a), 3);
        box->click();
        QCOMPARE(box->checkState(), Qt::Unchecked);
        QVERIFY(s.selection.isEmpty());
        box->click(); // the click's own step leads through mixed, which chooses all
        QCOMPARE(box->checkState(), Qt::Checked);
        QCOMPARE(s.view.countSelected(), 3);

        // A file's check box takes one copy away: mixed again, and the row's badge follows.
        clickInFileRow(s, 0, &FileRowDelegate::checkBoxRect);
        QCOMPARE(box->checkState(), Qt::PartiallyChecked);
        QVERIFY(!s.selection.contains(a->listAll()[0]));
        QVERIFY(!s.view.fileModel()->index(0).data(FileListModel::CheckedRole).toBool());
        QCOMPARE(s.chosenIn(0), 2);
        s.view.keepSegment(resultView::KeepAll)->click();
        QCOMPARE(box->checkState(), Qt::Unchecked);
        s.view.keepSegment(resultView::KeepOldest)->click();
        QCOMPARE(s.selection.duplicateSelectedArray, a->listAll().sliced(1));

        // The other group was never touched; deselect-all empties everything.
        QCOMPARE(s.chosenIn(1), 0);
        QCOMPARE(changes.count(), 7);
        QTest::mouseClick(s.view.deselectAllBtn(), Qt::LeftButton);
        QVERIFY(s.selection.isEmpty());
        QCOMPARE(box->checkState(), Qt::Unchecked);
        QCOMPARE(s.selection.toolbarState(), 5);
    }

    void spaceTogglesThePreviewWindowAndRowsRevealAndOpen() {
        Screen s({ makeGroup({ "/t/x/one.txt", "/t/y/two.txt" }, 10) });
        QVERIFY(QTest::qWaitForWindowExposed(&s.view));
        QList<QUrl> opened;
        s.view.fileActions()->openUrl = [&opened](const QUrl& url) {
            opened.append(url);
            return true;
        };
        s.view.sameList()->setCurrentIndex(s.view.fileModel()->index(1));
        PreviewWindow* window = s.view.previewWindow();
        QVERIFY(!window->isVisible());
        QTest::keyClick(s.view.sameList(), Qt::Key_Space);
        QVERIFY(window->isVisible());
        QCOMPARE(window->path(), QByteArray("/t/y/two.txt"));
        // While open it follows the current file.
        s.view.sameList()->setCurrentIndex(s.view.fileModel()->index(0));
        QCOMPARE(window->path(), QByteArray("/t/x/one.txt"));
        QTest::keyClick(s.view.sameList(), Qt::Key_Space);
        QVERIFY(!window->isVisible());

        // A double click opens the file; the reveal button asks the file manager, or opens the folder.
        clickInFileRow(s, 1, nullptr, true);
        QCOMPARE(opened, QList<QUrl> { QUrl(QStringLiteral("file:///t/y/two.txt")) });
        QSignalSpy revealed(s.view.fileActions(), &FileActions::revealed);
        clickInFileRow(s, 0, &FileRowDelegate::revealButtonRect);
        QVERIFY(revealed.count() == 1 || revealed.wait(FileActions::revealTimeoutMs + 3000));
        QCOMPARE(revealed.first().first().toByteArray(), QByteArray("/t/x/one.txt"));
        QVERIFY(s.selection.isEmpty()); // neither click touched the check box
    }

    void aHundredThousandGroupsSortFilterAndDraw() {
        QList<DuplicateGroupPtr> groups;
        constexpr int count = 100000;
        groups.reserve(count);
        for (int i = 0; i < count; ++i) {
            const QByteArray folder = "/big/g" + QByteArray::number(i) + '/';
            groups.append(makeGroup(
                { folder + "p" + QByteArray::number((i * 7919) % count) + ".jpg", folder + "copy", folder + "copy 2" },
                (static_cast<qint64>(i) * 104729) % 5000 + 1, i % 2 ? 50 : 70));
            if (i % 3 == 0)
                groups.last()->setListAll(groups.last()->listAll().first(2));
        }
        Screen s(groups);
        QTRY_COMPARE(s.view.groupModel()->rowCount(), count);
        for (quint64 key = ResultLists::OriginalFilename; key <= ResultLists::DuplicateSelected; ++key) {
            if (key == ResultLists::DuplicateSelected) {
                // A choice this large is worked out on another thread and replaces the shown one in
                // one step; a click meanwhile lands on the new choice, after it.
                s.view.AutoSelectAction(Selection::keepNewestTitle());
                QVERIFY(s.view.isChoosing());
                QVERIFY(s.selection.isEmpty());
                const qsizetype newest = s.view.currentGroup()->listAll().size() - 1;
                s.view.checkBoxActionFromTableRow(newest);
                QVERIFY(!s.view.isChoosing());
                QCOMPARE(s.selection.duplicateSelectedArray.size(), count * 2 - count / 3);
                QCOMPARE(s.chosenIn(0), s.view.currentGroup()->listAll().size());
                s.view.checkBoxActionFromTableRow(newest);
            }
            for (quint64 direction : { ResultLists::Descending, ResultLists::Ascending }) {
                s.lists.typesort = key;
                s.lists.typesortorder = direction;
                s.view.getDiplayListAndReloadMainList();
                // A result this large is sorted on another thread; the table follows once.
                QTRY_VERIFY(!s.lists.isBusy());
                QCOMPARE(s.view.groupModel()->rowCount(), count);
                QCOMPARE(s.view.selectedMain(), 0);
                QCOMPARE(s.view.currentGroup(), s.lists.duplicateDisplayArray.first());
            }
        }
        const DisplayList& shown = s.lists.duplicateDisplayArray;
        const auto chosen = s.selection.chosenSet();
        for (qsizetype i = 1; i < shown.size(); ++i)
            QVERIFY(chosen.countOf(shown[i - 1]->listAll()) <= chosen.countOf(shown[i]->listAll()));

        QTest::mouseClick(s.view.filterButton(50), Qt::LeftButton);
        QTRY_COMPARE(s.view.groupModel()->rowCount(), count / 2);
        s.view.searchALL()->setText(QStringLiteral("/G99999/"));
        s.view.searchFilterAction();
        QTRY_COMPARE(s.view.groupModel()->rowCount(), 1);
        s.view.searchALL()->clear();
        s.view.searchFilterAction();
        QTRY_COMPARE(s.view.groupModel()->rowCount(), count / 2);
        s.view.duplicateListMain()->scrollToBottom();
        QVERIFY(!s.view.grab().isNull());
        QCOMPARE(s.selection.duplicateSelectedArray.size(), count * 2 - count / 3 - 1);
        s.view.AutoSelectAction(std::nullopt);
        QVERIFY(s.selection.isEmpty());
        QCOMPARE(s.chosenIn(0), 0);
    }
};

QTEST_MAIN(TestResultView)
#include "tst_resultview.moc"
