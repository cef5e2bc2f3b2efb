#include "review/resultView.h"

#include "base/PathBytes.h"
#include "review/FileActions.h"
#include "review/FileListModel.h"
#include "review/FileRowDelegate.h"
#include "review/GroupListModel.h"
#include "review/LetGo.h"
#include "review/PreviewView.h"
#include "review/PreviewWindow.h"
#include "review/ResultLists.h"
#include "review/Selection.h"
#include "review/StatusTexts.h"

#include <QAction>
#include <QCheckBox>
#include <QDBusConnection>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMouseEvent>
#include <QPushButton>
#include <QSplitter>
#include <QThreadPool>

namespace {

// A re-sort waits a tenth of a second; the sort menu's check marks follow a fifth of a second later.
constexpr int kSortDelayMs = 100;
constexpr int kCheckMarksDelayMs = 200;
// Typing in the search field filters once the typing pauses.
constexpr int kSearchDelayMs = 250;
constexpr int kSmallIcon = 18;

Qt::CheckState toQt(Selection::CheckState state) {
    switch (state) {
    case Selection::CheckState::On:
        return Qt::Checked;
    case Selection::CheckState::Mixed:
        return Qt::PartiallyChecked;
    case Selection::CheckState::Off:
        break;
    }
    return Qt::Unchecked;
}

// A large choice is let go on another thread.
void dropElsewhere(QList<DuplicateFilePtr> files) {
    if (files.size() >= ResultLists::kBackgroundFrom)
        letGoElsewhere(std::move(files));
}

Selection::CheckState fromQt(Qt::CheckState state) {
    switch (state) {
    case Qt::Checked:
        return Selection::CheckState::On;
    case Qt::PartiallyChecked:
        return Selection::CheckState::Mixed;
    case Qt::Unchecked:
        break;
    }
    return Selection::CheckState::Off;
}

} // namespace

resultView::resultView(ResultLists& lists, Selection& selection, QWidget* parent)
    : QWidget(parent)
    , m_lists(lists)
    , m_selection(selection)
    , m_groupModel(new GroupListModel(lists, selection, this))
    , m_fileModel(new FileListModel(selection, this)) {
    setObjectName(QStringLiteral("resultView"));
    buildLayout();
    m_searchDelay.setSingleShot(true);
    m_searchDelay.setInterval(kSearchDelayMs);
    connect(&m_searchDelay, &QTimer::timeout, this, &resultView::searchFilterAction);
    // A list rebuilt on another thread is shown here once it is in place.
    m_lists.setDisplayListener(this, [this] { reloadMainList(); });
    displayChanges();
}

resultView::~resultView() {
    m_choicePool.waitForDone();
}

QAction* resultView::sortItem(quint64 tag) const {
    return tag < static_cast<quint64>(m_sortItems.size()) ? m_sortItems.at(static_cast<qsizetype>(tag)) : nullptr;
}

QPushButton* resultView::filterButton(quint64 tag) const {
    for (QPushButton* button : m_filterButtons) {
        if (button->property("tag").toULongLong() == tag)
            return button;
    }
    return nullptr;
}

FileActions* resultView::fileActions() {
    // Made on first use: the session bus is only needed once a file is revealed.
    if (!m_fileActions)
        m_fileActions = new FileActions(QDBusConnection::sessionBus(), this);
    return m_fileActions;
}

qsizetype resultView::selectedMain() const {
    return m_lists.selectedMain;
}

DuplicateGroupPtr resultView::currentGroup() const {
    return m_groupModel->groupAt(m_lists.selectedMain);
}

DuplicateFilePtr resultView::currentFile() const {
    return m_fileModel->fileAt(m_rowSubSave);
}

// Lists

void resultView::resetForNewScan() {
    // A choice still being worked out belongs to the result that goes.
    m_choicePool.waitForDone();
    m_pendingChoice.reset();
    m_lists.resetSortAndFilter();
    setSortMenuItemOnstate();
    for (QPushButton* button : std::as_const(m_filterButtons))
        button->setChecked(button->property("tag").toULongLong() == ResultLists::AllTypes);
    // The scan is about to write the groups: nothing may rebuild from them until it is done.
    m_searchDelay.stop();
    const QSignalBlocker quiet(m_searchfieldDuplicate);
    m_searchfieldDuplicate->clear();
    m_lists.searchText.clear();
    m_lists.resultWillChange();
    m_lists.duplicateDisplayArray.clear();
    m_lists.selectedMain = 0;
    reloadMainList();
}

void resultView::getDiplayListAndReloadMainList() {
    // The order by chosen copies counts the choice as it will stand.
    if (m_lists.typesort == ResultLists::DuplicateSelected)
        settleChoice();
    if (m_lists.rebuildDisplayList())
        reloadMainList();
}

void resultView::reloadMainList() {
    m_groupModel->reload();
    displayChanges();
    if (m_groupModel->rowCount() > 0) {
        selectGroupRow(m_lists.selectedMain);
        m_duplicateListMain->scrollToTop();
    }
}

void resultView::sortDuplicatesFor(quint64 tag) {
    if (m_lists.sortDuplicatesFor(tag))
        QTimer::singleShot(kSortDelayMs, this, [this] { getDiplayListAndReloadMainList(); });
    setSortMenuItemOnstate();
}

void resultView::setSortMenuItemOnstate() {
    if (QAction* item = sortItem(m_lists.typesort))
        m_sortingButton->setText(item->text());
    QTimer::singleShot(kCheckMarksDelayMs, this, [this] {
        for (qsizetype tag = 0; tag < m_sortItems.size(); ++tag)
            m_sortItems[tag]->setChecked(m_lists.isSortItemChecked(static_cast<quint64>(tag)));
    });
}

void resultView::filterUsingTypeAction(QPushButton* sender) {
    if (!m_lists.setTypeFilter(sender->property("tag").toULongLong())) {
        sender->setChecked(true);
        return;
    }
    for (QPushButton* button : std::as_const(m_filterButtons))
        button->setChecked(button == sender);
    getDiplayListAndReloadMainList();
}

void resultView::searchFilterAction() {
    m_searchDelay.stop();
    m_lists.searchText = m_searchfieldDuplicate->text();
    getDiplayListAndReloadMainList();
}

// Selection

struct resultView::PendingChoice {
    QList<DuplicateFilePtr> files;
    FileSet chosen;
};

void resultView::AutoSelectAction(const std::optional<QString>& chosenTitle) {
    settleChoice();
    if (!chosenTitle || m_lists.duplicateDisplayArray.size() < ResultLists::kBackgroundFrom) {
        dropElsewhere(std::exchange(m_selection.duplicateSelectedArray, {}));
        m_selection.AutoSelectAction(chosenTitle, m_lists.duplicateDisplayArray);
        selectionReplaced(chosenTitle ? std::nullopt : std::optional<FileSet>(FileSet()));
        return;
    }
    // The rule reads a copy of the selection (its protected folders) and of the displayed list; the
    // choice shown stays as it is until the new one replaces it.
    auto pending = std::make_shared<PendingChoice>();
    m_pendingChoice = pending;
    m_choicePool.start(
        [this, pending, rules = m_selection, groups = m_lists.duplicateDisplayArray, title = *chosenTitle] {
            pending->files = rules.autoSelection(title, groups);
            pending->chosen = FileSet(pending->files);
            QMetaObject::invokeMethod(
                this,
                [this, pending] {
                    if (m_pendingChoice == pending)
                        applyPendingChoice();
                },
                Qt::QueuedConnection);
        });
}

void resultView::settleChoice() {
    if (!m_pendingChoice)
        return;
    m_choicePool.waitForDone();
    applyPendingChoice();
}

void resultView::applyPendingChoice() {
    const std::shared_ptr<PendingChoice> pending = std::exchange(m_pendingChoice, nullptr);
    dropElsewhere(std::exchange(m_selection.duplicateSelectedArray, std::move(pending->files)));
    selectionReplaced(std::move(pending->chosen));
}

void resultView::selectionReplaced(std::optional<FileSet> chosen) {
    if (chosen)
        m_groupModel->selectionReplaced(std::move(*chosen));
    else
        m_groupModel->selectionChanged();
    if (m_groupModel->rowCount() > 0)
        selectGroupRow(m_lists.selectedMain);
    emit selectionChanged();
}

void resultView::keepSegmentAction(int segment) {
    settleChoice();
    const DuplicateGroupPtr group = currentGroup();
    if (!group)
        return;
    m_selection.keepSegmentAction(*group, segment);
    reloadRow();
}

void resultView::checkBoxActionMain() {
    settleChoice();
    const DuplicateGroupPtr group = currentGroup();
    if (!group)
        return;
    const Selection::CheckState shown
        = m_selection.checkBoxActionMain(*group, fromQt(m_checkBoxAllDuplicates->checkState()));
    m_checkBoxAllDuplicates->setCheckState(toQt(shown));
    reloadRow();
}

void resultView::checkBoxActionFromTableRow(qsizetype index) {
    settleChoice();
    const DuplicateGroupPtr group = currentGroup();
    if (!group)
        return;
    m_selection.checkBoxActionFromTableRow(*group, index);
    reloadRow();
}

void resultView::setStateOfCheckBox() {
    const DuplicateGroupPtr group = currentGroup();
    m_checkBoxAllDuplicates->setEnabled(group != nullptr);
    const Selection::CheckState state
        = group ? Selection::setStateOfCheckBox(m_countSelected, group->listAll().size()) : Selection::CheckState::Off;
    m_checkBoxAllDuplicates->setCheckState(toQt(state));
}

void resultView::reloadRow() {
    m_groupModel->selectionChanged(m_lists.selectedMain);
    m_fileModel->selectionChanged();
    const DuplicateGroupPtr group = currentGroup();
    m_countSelected = group ? m_selection.countSelected(*group) : 0;
    setStateOfCheckBox();
    emit selectionChanged();
}

// Rows

void resultView::displayChanges() {
    const bool any = m_groupModel->rowCount() > 0;
    m_DisplayView->setVisible(any);
    m_notfoundText->setVisible(!any);
    m_sortingButton->setEnabled(any);
    m_autoSelectBTN->setEnabled(any);
    m_deselectAllBtn->setEnabled(any);
    if (!any) {
        clearPreview();
        m_fileModel->setGroup(nullptr);
    }
}

void resultView::clearPreview() {
    m_detailsAll->clear();
    m_selectedFileName->clear();
    m_selectedFileImage->clear();
    m_quicklookview->setPath(QByteArrayLiteral("/"));
}

void resultView::selectGroupRow(qsizetype row) {
    const QModelIndex index = m_groupModel->index(static_cast<int>(row));
    if (m_duplicateListMain->currentIndex() == index)
        chooseGroupRow(row);
    else
        m_duplicateListMain->setCurrentIndex(index); // the view reports the change: chooseGroupRow
    m_duplicateListMain->scrollTo(index);
}

void resultView::selectFileRow(qsizetype row) {
    const QModelIndex index = m_fileModel->index(static_cast<int>(row));
    if (m_sameList->currentIndex() == index)
        chooseFileRow(row);
    else
        m_sameList->setCurrentIndex(index);
}

void resultView::chooseGroupRow(qsizetype row) {
    const DuplicateGroupPtr group = m_groupModel->groupAt(row);
    if (!group)
        return;
    m_lists.selectedMain = row;
    m_rowSubSave = 0;
    m_fileModel->setGroup(group);
    m_sameList->scrollToTop();
    m_countSelected = m_selection.countSelected(*group);
    setStateOfCheckBox();
    m_groupName->setText(PathBytes::display(PathBytes::lastPathComponent(group->original())));
    selectFileRow(0);
}

void resultView::chooseFileRow(qsizetype row) {
    const DuplicateGroupPtr group = m_fileModel->group();
    const DuplicateFilePtr file = m_fileModel->fileAt(row);
    if (!group || !file)
        return;
    m_rowSubSave = row;
    m_detailsAll->setText(StatusTexts::groupDetails(group->listAll().size(), group->sizeFile()));
    const QIcon icon = m_fileModel->index(static_cast<int>(row)).data(Qt::DecorationRole).value<QIcon>();
    m_selectedFileImage->setPixmap(icon.pixmap(kSmallIcon, kSmallIcon));
    m_selectedFileName->setText(PathBytes::display(PathBytes::lastPathComponent(file->urlFile())));
    m_quicklookview->setPath(file->urlFile());
    if (m_previewWindow->isVisible())
        m_previewWindow->setPath(file->urlFile());
}

// File actions

void resultView::revealFileInFinder(qsizetype index) {
    if (const DuplicateFilePtr file = m_fileModel->fileAt(index))
        fileActions()->revealInFinder(file->urlFile());
}

void resultView::openInExternalDefaultApp(qsizetype index) {
    if (const DuplicateFilePtr file = m_fileModel->fileAt(index))
        fileActions()->openInExternalDefaultApp(file->urlFile());
}

void resultView::QuickLookIn(const QByteArray& path) {
    m_previewWindow->toggle(path);
}

bool resultView::eventFilter(QObject* watched, QEvent* event) {
    // A double click on a file row, away from its check box and button, opens the file.
    if (watched == m_sameList->viewport() && event->type() == QEvent::MouseButtonDblClick) {
        auto* mouse = static_cast<QMouseEvent*>(event);
        const QModelIndex index = m_sameList->indexAt(mouse->position().toPoint());
        if (mouse->button() == Qt::LeftButton && index.isValid()
            && !FileRowDelegate::isOnControl(m_sameList->visualRect(index), mouse->position().toPoint())) {
            openInExternalDefaultApp(index.row());
            return true;
        }
        return false;
    }
    if ((watched == m_sameList || watched == m_duplicateListMain) && event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier) {
            if (const DuplicateFilePtr file = currentFile())
                QuickLookIn(file->urlFile());
            return true;
        }
        // Return ticks or clears the current copy, as its check box does; in the group list it
        // goes on to the group's copies.
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (enter && (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
            if (watched == m_duplicateListMain)
                m_sameList->setFocus(Qt::TabFocusReason);
            else if (m_sameList->currentIndex().isValid())
                checkBoxActionFromTableRow(m_sameList->currentIndex().row());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
