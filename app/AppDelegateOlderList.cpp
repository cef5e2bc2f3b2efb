// AppDelegate's part of the scan list's result page: sorting, the type list and the search, the
// selection through check boxes, keep segments and the selection menu, and the file row's context
// menu (Quick Look, reveal, open, set as original).
#include "app/AppDelegate.h"

#include "app/MainWindow.h"
#include "base/PathBytes.h"
#include "review/FileActions.h"
#include "review/OlderFileModel.h"
#include "review/OlderGroupModel.h"
#include "review/OlderTypeModel.h"
#include "review/PreviewWindow.h"
#include "review/ResultScreen.h"

#include <QAction>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>

namespace {

QString groupTitle(const GroupDictionary* group) {
    return group ? PathBytes::display(PathBytes::lastPathComponent(group->original.url)) : QString();
}

} // namespace

QSet<QByteArray> AppDelegate::selectedUrls() const {
    QSet<QByteArray> urls;
    urls.reserve(m_listSelection.SelectedFileFolderArray.size());
    for (const FileDictionary& file : m_listSelection.SelectedFileFolderArray)
        urls.insert(file.url);
    return urls;
}

bool AppDelegate::rightClickedIsOriginal() const {
    // While a list scan runs its thread writes the groups; nothing here reads them then.
    if (m_listScanRunning || m_selRowRightClick < 0)
        return false;
    const QList<GroupDictionary>& groups = m_state.DuplicateFileFolderArray;
    const qsizetype row = m_listSelection.ReloadRow;
    if (row < 0 || row >= groups.size() || m_selRowRightClick >= groups[row].SameFileList.size())
        return false;
    return groups[row].SameFileList.at(m_selRowRightClick) == groups[row].original;
}

void AppDelegate::reloadOlderResult(bool rebuild) {
    ResultScreen* page = m_ResultScreenObj;
    if (m_listScanRunning) {
        page->typeModel()->reload({}, {}, {});
        page->groupModel()->reload({}, {});
        page->fileModel()->reload(nullptr, {});
        page->setCurrentGroupTitle(QString());
        return;
    }
    const QSet<QByteArray> chosen = selectedUrls();
    const QList<GroupDictionary>& groups = m_state.DuplicateFileFolderArray;
    qsizetype& row = m_listSelection.ReloadRow;
    row = groups.isEmpty() ? 0 : std::clamp<qsizetype>(row, 0, groups.size() - 1);
    const GroupDictionary* current = groups.isEmpty() ? nullptr : &groups[row];

    page->typeModel()->reload(m_state.filterSegmentItem, m_listModel.saveResultArray, chosen);
    page->setCurrentTypeRow(m_ReloadRowMain);
    if (rebuild) {
        page->groupModel()->reload(groups, chosen);
        page->fileModel()->reload(current, chosen);
    } else {
        page->groupModel()->refresh(groups, chosen);
        page->fileModel()->refresh(current, chosen);
    }
    page->setCurrentGroupRow(static_cast<int>(row));
    page->setCurrentGroupTitle(groupTitle(current));
    page->setNothingShown(groups.isEmpty());
    const QString direction = m_listModel.a2z ? QStringLiteral(" ↑") : QStringLiteral(" ↓");
    page->setSortItems(m_listModel.sortItemTitles, m_listModel.sortItemChecked, m_listModel.typeSort + direction);
}

void AppDelegate::showCurrentGroup() {
    const QList<GroupDictionary>& groups = m_state.DuplicateFileFolderArray;
    const qsizetype row = m_listSelection.ReloadRow;
    const GroupDictionary* current = row >= 0 && row < groups.size() ? &groups[row] : nullptr;
    m_ResultScreenObj->fileModel()->reload(current, selectedUrls());
    m_ResultScreenObj->setCurrentGroupTitle(groupTitle(current));
}

void AppDelegate::selectionDidChange() {
    reloadOlderResult(false);
    setBottomStatus();
}

// Sorting, types and search

void AppDelegate::SortItemList(int index) {
    m_listModel.SortItemList(index);
    m_listSelection.ReloadRow = 0;
    reloadOlderResult(true);
    m_ResultScreenObj->duplicateList()->scrollToTop();
}

void AppDelegate::FilterItemList() {
    if (m_listScanRunning)
        return;
    m_listModel.searchForEnteredString(m_ResultScreenObj->searchALL()->text());
    m_listSelection.ReloadRow = 0;
    m_selRowRightClick = -1;
    reloadOlderResult(true);
    m_ResultScreenObj->duplicateList()->scrollToTop();
}

void AppDelegate::FilterItemListFromSearchField() {
    FilterItemList();
}

void AppDelegate::chooseTypeRow(int row) {
    const QStringList& types = m_state.filterSegmentItem;
    if (m_listScanRunning || row < 0 || row >= types.size())
        return;
    m_ReloadRowMain = row;
    m_listModel.segmentType = types.at(row);
    FilterItemList();
}

void AppDelegate::chooseGroupRow(int row) {
    if (m_listScanRunning || row < 0 || row >= m_state.DuplicateFileFolderArray.size())
        return;
    // Only the file list follows: the group list stays as it is under the click.
    m_listSelection.ReloadRow = row;
    m_selRowRightClick = -1;
    showCurrentGroup();
    m_ResultScreenObj->sameList()->scrollToTop();
}

// Selection

void AppDelegate::SegmentKeepAction(int segment) {
    if (!m_listScanRunning && m_listSelection.SegmentKeepAction(segment))
        selectionDidChange();
}

bool AppDelegate::addInSelectedDuplicateList(qsizetype index) {
    if (m_listScanRunning)
        return false;
    const bool on = m_listSelection.addInSelectedDuplicateList(index);
    selectionDidChange();
    return on;
}

void AppDelegate::keepNewestAction() {
    if (m_listScanRunning)
        return;
    m_listSelection.keepNewestAction();
    m_older.selectDuplicateTitle = QStringLiteral("Keep Newest");
    selectionDidChange();
}

void AppDelegate::keepOldestAction() {
    if (m_listScanRunning)
        return;
    m_listSelection.keepOldestAction();
    m_older.selectDuplicateTitle = QStringLiteral("Keep Oldest");
    selectionDidChange();
}

void AppDelegate::keepNoneAction() {
    if (m_listScanRunning)
        return;
    if (m_listSelection.keepNoneAction())
        m_older.selectDuplicateTitle = QStringLiteral("Select All");
    selectionDidChange();
}

void AppDelegate::DeselectAllFromDuplicateList() {
    if (m_listScanRunning)
        return;
    m_listSelection.DeselectAllFromDuplicateList();
    m_older.selectDuplicateTitle = QStringLiteral("Select Duplicates");
    selectionDidChange();
}

void AppDelegate::AddAllInDuplicateList() {
    if (m_listScanRunning || !isOlderViewShown() || m_isMainScreen)
        return;
    // The menu's items refresh the lists and the status line themselves once one is chosen.
    QPushButton* button = m_ResultScreenObj->Select_Duplicate_();
    m_ResultScreenObj->select_menu()->popup(button->mapToGlobal(QPoint(0, button->height())));
}

// The file row's context menu

void AppDelegate::RightClickOnItem(int row, const QPoint& globalPos) {
    if (m_listScanRunning)
        return;
    m_selRowRightClick = row;
    for (QAction* item : m_rightClickMenu->actions()) {
        if (!item->isSeparator())
            item->setEnabled(validateMenuItem(0, item->objectName() == QLatin1String("SetAsOriginal")));
    }
    validateMenus();
    m_rightClickMenu->popup(globalPos);
}

void AppDelegate::QuickLookIn(const QByteArray& path) {
    if (path.isEmpty())
        return;
    if (!m_previewWindow)
        m_previewWindow = new PreviewWindow(m_window.get());
    m_previewWindow->toggle(path);
}

void AppDelegate::QuickLookInIB() {
    QuickLookIn(m_ResultScreenObj->fileModel()->pathAt(m_selRowRightClick));
}

void AppDelegate::revealInFinderIB() {
    const QByteArray path = m_ResultScreenObj->fileModel()->pathAt(m_selRowRightClick);
    if (!path.isEmpty())
        fileActions().revealInFinder(path);
}

void AppDelegate::openInExternalDefaultAppIB() {
    const QByteArray path = m_ResultScreenObj->fileModel()->pathAt(m_selRowRightClick);
    if (!path.isEmpty())
        fileActions().openInExternalDefaultApp(path);
}

void AppDelegate::SetAsOriginal() {
    if (m_listScanRunning || !validateMenuItem(0, true))
        return;
    const qsizetype row = m_listSelection.ReloadRow;
    m_listSelection.SetAsOriginal(m_selRowRightClick);
    // The whole result keeps the new original too, so a later search or type shows it.
    const GroupDictionary& changed = m_state.DuplicateFileFolderArray.at(row);
    for (GroupDictionary& saved : m_listModel.saveResultArray) {
        if (saved.SameFileList == changed.SameFileList)
            saved.original = changed.original;
    }
    selectionDidChange();
}
