// AppDelegate's scan-list pages: their construction, the toolbar states, the flow between the two
// pages and back to the folder scan, the target list and the status line and popover.
#include "app/AppDelegate.h"

#include "app/MainWindow.h"
#include "app/OlderPages.h"
#include "app/OlderToolbar.h"
#include "app/mainScreen.h"
#include "app/mainView.h"
#include "app/progressView.h"
#include "base/Log.h"
#include "removal/DeletingPanel.h"
#include "removal/RemovalTexts.h"
#include "review/FileActions.h"
#include "review/OlderFileModel.h"
#include "review/ResultScreen.h"
#include "review/Selection.h"
#include "review/StatusTexts.h"
#include "review/StatusWindow.h"
#include "review/resultView.h"

#include <QAction>
#include <QDBusConnection>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>

namespace {

// The result page filters its list a moment after it is shown.
constexpr int kFilterDelayMs = 980;
constexpr int kMainToolbarDelayMs = 200;

} // namespace

void AppDelegate::buildOlderViews() {
    m_listSelection.alertSelectAll = [this] { return ::alertSelectAll(m_prompter, m_settingsStore); };
    m_mainScreenObj = new mainScreen(*this);
    m_ResultScreenObj = new ResultScreen;
    m_olderPages = new OlderPages(m_mainScreenObj, m_ResultScreenObj);
    m_window->addScreen(m_olderPages);
    m_StatusWindowObj = new StatusWindow(m_state, m_window.get());

    OlderToolbar* bar = m_olderPages->toolbar();
    connect(bar->folderScanButton(), &QToolButton::clicked, this, &AppDelegate::leaveOlderViews);
    connect(bar->Add(), &QToolButton::clicked, m_mainScreenObj, &mainScreen::openPanelForAddFolder);
    connect(bar->scan(), &QToolButton::clicked, this, &AppDelegate::Scan_Menubar);
    connect(bar->iPhoto(), &QToolButton::clicked, this, &AppDelegate::ScanIphotoPictures);
    connect(bar->showDuplicate(), &QToolButton::clicked, this, &AppDelegate::showDuplicatelist);
    connect(bar->Remove(), &QToolButton::clicked, this, &AppDelegate::openRemovalReviewFromScanList);
    connect(bar->ResetNewScanBTN(), &QToolButton::clicked, this, &AppDelegate::NewScan_Menubar);
    connect(m_olderPages->StatusWindowBTN(), &QToolButton::clicked, this, &AppDelegate::showStatusWindow);
    // Tab follows the pages from the top: the toolbar, the page shown, the status line's button.
    QList<QWidget*> tabOrder = bar->tabOrder();
    tabOrder << m_mainScreenObj->foldersScrollview() << m_ResultScreenObj->tabOrder()
             << m_olderPages->StatusWindowBTN();
    for (qsizetype i = 1; i < tabOrder.size(); ++i)
        QWidget::setTabOrder(tabOrder[i - 1], tabOrder[i]);

    ResultScreen* page = m_ResultScreenObj;
    connect(page, &ResultScreen::sortItemChosen, this, &AppDelegate::SortItemList);
    connect(page, &ResultScreen::searchTextChanged, this, &AppDelegate::FilterItemListFromSearchField);
    connect(page, &ResultScreen::typeRowChosen, this, &AppDelegate::chooseTypeRow);
    connect(page, &ResultScreen::groupRowChosen, this, &AppDelegate::chooseGroupRow);
    connect(page, &ResultScreen::keepSegmentClicked, this, &AppDelegate::SegmentKeepAction);
    connect(page, &ResultScreen::selectButtonClicked, this, &AppDelegate::AddAllInDuplicateList);
    connect(page, &ResultScreen::fileRowRightClicked, this, &AppDelegate::RightClickOnItem);
    connect(page, &ResultScreen::quickLookRequested, this,
        [this](int row) { QuickLookIn(m_ResultScreenObj->fileModel()->pathAt(row)); });
    connect(page->sameList(), &QTableView::doubleClicked, this,
        [this](const QModelIndex& index) { QuickLookIn(m_ResultScreenObj->fileModel()->pathAt(index.row())); });
    page->fileModel()->toggle = [this](int row) { addInSelectedDuplicateList(row); };
    connect(page->keepNewestItem(), &QAction::triggered, this, &AppDelegate::keepNewestAction);
    connect(page->keepOldestItem(), &QAction::triggered, this, &AppDelegate::keepOldestAction);
    connect(page->keepNoneItem(), &QAction::triggered, this, &AppDelegate::keepNoneAction);
    connect(page->deselectAllItem(), &QAction::triggered, this, &AppDelegate::DeselectAllFromDuplicateList);

    m_rightClickMenu = new QMenu(m_window.get());
    m_rightClickMenu->setObjectName(QStringLiteral("RightClickOnItem"));
    connect(m_rightClickMenu->addAction(QStringLiteral("Quick Look")), &QAction::triggered, this,
        &AppDelegate::QuickLookInIB);
    connect(m_rightClickMenu->addAction(QStringLiteral("Show in File Manager")), &QAction::triggered, this,
        &AppDelegate::revealInFinderIB);
    connect(m_rightClickMenu->addAction(QStringLiteral("Open")), &QAction::triggered, this,
        &AppDelegate::openInExternalDefaultAppIB);
    m_rightClickMenu->addSeparator();
    QAction* original = m_rightClickMenu->addAction(QStringLiteral("Set as Original"));
    original->setObjectName(QStringLiteral("SetAsOriginal"));
    connect(original, &QAction::triggered, this, &AppDelegate::SetAsOriginal);

    m_mainScreenObj->reload();
    reloadOlderResult(true);
    applyOlderItems();
}

FileActions& AppDelegate::fileActions() {
    if (!m_fileActions)
        m_fileActions = std::make_unique<FileActions>(QDBusConnection::sessionBus());
    return *m_fileActions;
}

bool AppDelegate::isOlderViewShown() const {
    return m_olderPages && !m_olderPages->isHidden();
}

QLineEdit* AppDelegate::searchField() const {
    if (isOlderViewShown() && !m_isMainScreen)
        return m_ResultScreenObj->searchALL();
    return m_resultViewObj->searchALL();
}

void AppDelegate::applyOlderItems() {
    OlderToolbar* bar = m_olderPages->toolbar();
    bar->apply(m_older, m_state.isScanRunning);
    // A folder scan may go on while the pages show; only the list scan keeps the user on them.
    bar->folderScanButton()->setEnabled(!m_listScanRunning);
    m_olderPages->bottomStatus()->setText(m_older.bottomStatus);
    m_olderPages->StatusWindowBTN()->setEnabled(m_older.StatusWindowBTN.enabled);
    m_ResultScreenObj->setSelectTitle(m_older.selectDuplicateTitle);
    validateMenus();
}

void AppDelegate::setViewsFor(const QString& view) {
    const bool result = view == QLatin1String("Result");
    m_isMainScreen = !result;
    m_older.Add.hidden = false;
    m_older.scan.hidden = result;
    m_older.iPhoto.hidden = result;
    m_older.showDuplicate.hidden = result;
    m_older.Remove.hidden = !result;
    if (!m_listScanRunning) {
        const qsizetype groups = m_listModel.saveResultArray.size();
        m_older.statusText = !result ? QString()
            : groups == 1            ? QStringLiteral("1 group of duplicates")
                                     : QStringLiteral("%1 groups of duplicates").arg(groups);
    }
    m_olderPages->showPage(result ? static_cast<QWidget*>(m_ResultScreenObj) : m_mainScreenObj);
    m_window->showScreen(m_olderPages, MainWindow::olderFrameFor(result), false, OlderPages::kFadeMs);
    if (!result)
        m_mainScreenObj->reload();
    applyOlderItems();
    // The keyboard starts on the page's list (Add while the scan list is empty), unless it is
    // already on a control of the pages.
    QWidget* first = result           ? static_cast<QWidget*>(m_ResultScreenObj->typeList())
        : m_state.mainArray.isEmpty() ? static_cast<QWidget*>(m_olderPages->toolbar()->Add())
                                      : m_mainScreenObj->foldersScrollview();
    m_window->keepFocusIn(m_olderPages, first);
}

void AppDelegate::SetToolBarBTNFor(const QString& mode) {
    if (mode == QLatin1String("Pscan")) {
        m_older.Add = { false, m_older.Add.hidden, QStringLiteral("NSAddTemplate") };
        m_older.scan.enabled = false;
        m_older.iPhoto.enabled = false;
        m_older.ResetNewScanBTN.enabled = false;
    } else if (mode == QLatin1String("Cscan")) {
        m_older.Add
            = { !m_listModel.saveResultArray.isEmpty(), m_older.Add.hidden, QStringLiteral("NSGoLeftTemplate") };
    } else if (mode == QLatin1String("main")) {
        m_older.Add = { true, m_older.Add.hidden, QStringLiteral("NSAddTemplate") };
        m_older.iPhoto.enabled = true;
        m_older.scan.enabled = !m_state.mainArray.isEmpty();
        m_older.hintShown = m_state.mainArray.isEmpty();
        if (m_older.hintShown)
            m_older.bottomStatus = StatusTexts::addOrDragText();
        else if (m_older.bottomStatus == StatusTexts::addOrDragText())
            m_older.bottomStatus.clear();
    }
    applyOlderItems();
}

void AppDelegate::leaveOlderViews() {
    if (m_listScanRunning)
        return;
    m_StatusWindowObj->closein();
    makeWindowFor(m_typewindow);
    makeToolbarItem(m_typetoolbar);
}

void AppDelegate::NewScanBack() {
    if (m_state.isScanRunning)
        return;
    m_listModel.NewScanBack();
    m_listModel.segmentType = QStringLiteral("All");
    m_state.filterSegmentItem.clear();
    {
        const QSignalBlocker quiet(m_ResultScreenObj->searchALL());
        m_ResultScreenObj->searchALL()->clear();
    }
    closeRemovalReview();
    m_listSelection.ReloadRow = 0;
    m_ReloadRowMain = 0;
    m_selRowRightClick = -1;
    m_older.ResetNewScanBTN.enabled = false;
    m_older.showDuplicate.enabled = false;
    m_older.Remove.enabled = false;
    m_older.statusText.clear();
    m_older.selectDuplicateTitle = QStringLiteral("Select Duplicates");
    m_mainScreenObj->reload();
    reloadOlderResult(true);
    // The pages are left on their main page, ready for the next visit; the window goes back to the
    // folder scan's setup screen.
    m_isMainScreen = true;
    m_older.scan.hidden = m_older.iPhoto.hidden = m_older.showDuplicate.hidden = false;
    m_older.Remove.hidden = true;
    m_olderPages->showPage(m_mainScreenObj);
    SetToolBarBTNFor(QStringLiteral("main"));
    m_StatusWindowObj->closein();
    // A new scan starts over as the new-scan button of the result screen does: empty setup screen.
    m_mainViewObj->emptyFolderList();
    m_progressViewObj->resetFigures();
    makeWindowFor(0);
    makeToolbarItem(0);
}

void AppDelegate::closeRemovalReview() {
    if (m_deleteingWindow)
        m_deleteingWindow->closewindow();
    if (m_scanListReview)
        m_scanListReview->close();
}

void AppDelegate::openRemovalReviewFromScanList() {
    if (m_listScanRunning || m_listSelection.SelectedFileFolderArray.isEmpty())
        return;
    if (!m_scanListReview) {
        m_scanListReview = std::make_unique<ScanListReview>(m_prompter, m_window.get());
        connect(m_scanListReview.get(), &ScanListReview::finished, this, &AppDelegate::scanListReviewDidFinish);
    }
    m_scanListReview->open(m_listModel.saveResultArray, m_listSelection.SelectedFileFolderArray);
}

void AppDelegate::scanListReviewDidFinish(const ScanListReview::Outcome& outcome) {
    m_listModel.saveResultArray = outcome.groups;
    m_listSelection.SelectedFileFolderArray = outcome.chosen;
    qint64 count = 0;
    qint64 wasted = 0;
    QStringList types { QStringLiteral("All") };
    for (const GroupDictionary& group : outcome.groups) {
        count += group.SameFileList.size();
        wasted += group.SameFileList.isEmpty() ? 0 : group.SameFileList.first().FileSize * group.SameFileList.size();
        const QString type = group.original.type.value_or(QString());
        if (types.size() <= 6 && !types.contains(type))
            types.append(type);
    }
    m_state.totalDuplicateCountFolder = count;
    m_state.DuplicateWastedSpace = wasted;
    m_state.filterSegmentItem = types;
    m_listModel.makeListOfTypes();
    m_ReloadRowMain
        = static_cast<int>(std::max<qsizetype>(0, m_state.filterSegmentItem.indexOf(m_listModel.segmentType)));
    m_listModel.segmentType = m_state.filterSegmentItem.value(m_ReloadRowMain, QStringLiteral("All"));
    if (outcome.chosen.isEmpty())
        m_older.selectDuplicateTitle = QStringLiteral("Select Duplicates");

    if (!outcome.groups.isEmpty()) {
        FilterItemList();
        setBottomStatus();
        return;
    }
    // Every group is gone: the scan list's main page, with the message of a finished removal.
    m_state.DuplicateFileFolderArray.clear();
    m_older.showDuplicate.enabled = false;
    reloadOlderResult(true);
    setViewsFor(QStringLiteral("Main"));
    SetToolBarBTNFor(QStringLiteral("main"));
    m_older.bottomStatus = RemovalTexts::allRemovedInformative();
    applyOlderItems();
    Prompter::Alert alert;
    alert.messageText = RemovalTexts::allRemovedMessage();
    alert.informativeText = RemovalTexts::allRemovedInformative();
    m_prompter.runAlert(alert);
}

void AppDelegate::addDragFile(const QList<QByteArray>& paths, int row) {
    if (m_state.isScanRunning)
        return;
    QList<QByteArray> fresh;
    for (const QByteArray& path : paths) {
        if (!m_state.mainArray.contains(path) && !fresh.contains(path))
            fresh.append(path);
    }
    const qsizetype at = row < 0 || row > m_state.mainArray.size() ? m_state.mainArray.size() : row;
    for (qsizetype i = 0; i < fresh.size(); ++i)
        m_state.mainArray.insert(at + i, fresh[i]);
    m_mainScreenObj->reload();
    QTimer::singleShot(kMainToolbarDelayMs, this, [this] { SetToolBarBTNFor(QStringLiteral("main")); });
}

void AppDelegate::removeRowFromMain(int row) {
    if (m_state.isScanRunning || row < 0 || row >= m_state.mainArray.size())
        return;
    m_state.mainArray.removeAt(row);
    m_mainScreenObj->reload();
    SetToolBarBTNFor(QStringLiteral("main"));
}

void AppDelegate::showDuplicatelist() {
    m_older.Add.enabled = false;
    if (!m_listModel.saveResultArray.isEmpty()) {
        reloadOlderResult(true);
        setViewsFor(QStringLiteral("Result"));
        SetToolBarBTNFor(QStringLiteral("Cscan"));
        setBottomStatus();
        QTimer::singleShot(kFilterDelayMs, this, &AppDelegate::FilterItemList);
    }
    applyOlderItems();
}

void AppDelegate::setBottomStatus() {
    m_older.bottomStatus
        = StatusTexts::bottomStatus(m_listSelection.SelectedFileFolderArray.size(), m_listSelection.selectedBytes(),
            m_state.totalDuplicateCountFolder, m_state.totalDuplicateCountFiles, m_state.DuplicateWastedSpace);
    m_older.Remove.enabled = m_listSelection.removeEnabled();
    applyOlderItems();
}

void AppDelegate::showStatusWindow() {
    if (m_StatusWindowObj->isVisible() || m_older.bottomStatus == StatusTexts::addOrDragText())
        return;
    m_StatusWindowObj->showAgainst(m_olderPages->StatusWindowBTN());
}

// Menu actions of the scan list

void AppDelegate::ScaniPhoto_Menubar() {
    if (validateMenuItem(MenuRules::ScaniPhoto))
        ScanIphotoPictures();
}

void AppDelegate::ShowScanList_Menubar() {
    setViewsFor(QStringLiteral("Main"));
    if (!m_state.isScanRunning)
        SetToolBarBTNFor(QStringLiteral("main"));
}

void AppDelegate::SelectAllDuplicate() {
    if (!validateMenuItem(MenuRules::SelectAllDuplicate))
        return;
    // On the folder scan's result screen the command opens that screen's automatic choice.
    if (!isOlderViewShown() && m_typewindow == 2) {
        QPushButton* autoSelect = m_resultViewObj->autoSelectBTN();
        if (autoSelect->isEnabled() && autoSelect->menu())
            autoSelect->menu()->popup(autoSelect->mapToGlobal(QPoint(0, autoSelect->height())));
        return;
    }
    AddAllInDuplicateList();
}

void AppDelegate::DeselectAll_Menubar() {
    if (validateMenuItem(MenuRules::DeselectAllDuplicate))
        DeselectAllFromDuplicateList();
}
