// AppDelegate's part of the result screen and the removal: the screen's resets and first list, the
// removal review sheet with its way back to a screen, the completion panel's follow-ups and the
// rating prompt.
#include "app/AppDelegate.h"

#include "app/MainWindow.h"
#include "app/mainView.h"
#include "base/Log.h"
#include "removal/DeletingPanel.h"
#include "removal/RemovalTexts.h"
#include "review/Prompter.h"
#include "review/resultView.h"

#include <QLineEdit>
#include <QListView>

namespace {

// The list scan of a rescan starts a second after the main view is back.
constexpr int kRescanDelayMs = 1000;

} // namespace

void AppDelegate::resetResultScreenForNewScan() {
    m_listSelection.ReloadRow = 0;
    m_ReloadRowMain = 0;
    m_resultViewObj->resetForNewScan();
    m_resultViewObj->searchALL()->setEnabled(false);
}

void AppDelegate::showResultList() {
    m_resultViewObj->searchALL()->setEnabled(true);
    m_resultViewObj->getDiplayListAndReloadMainList();
}

qsizetype AppDelegate::selectedDuplicateCount() const {
    return m_selection.duplicateSelectedArray.size();
}

void AppDelegate::DeleteSelecteditem() {
    // The sheet lists the choice as it stands, an automatic one still being worked out included.
    m_resultViewObj->settleChoice();
    if (!m_deleteingWindow) {
        m_deleteingWindow = std::make_unique<DeletingPanel>(
            m_state, m_selection, m_lists, m_listSelection.SelectedFileFolderArray, m_prompter, m_window.get());
        m_deleteingWindow->openUrl = openUrl;
        connect(m_deleteingWindow.get(), &DeletingPanel::closed, this, &AppDelegate::returnFromReview);
        connect(
            m_deleteingWindow.get(), &DeletingPanel::closeDeleteWindowRequested, this, &AppDelegate::closeDeleteWindow);
        connect(m_deleteingWindow.get(), &DeletingPanel::newScanBackRequested, this, &AppDelegate::NewScanBack);
        connect(m_deleteingWindow.get(), &DeletingPanel::rescanRequested, this, &AppDelegate::rescan);
    } else {
        m_deleteingWindow->loadAllData();
    }
    m_deleteingWindow->open();
}

void AppDelegate::removeSelectedFiles() {
    DeleteSelecteditem();
}

void AppDelegate::ShowSelected() {
    if (!validateMenuItem(MenuRules::ShowSelected))
        return;
    // On the scan list's pages the command reviews the scan list's chosen copies.
    if (isOlderViewShown())
        openRemovalReviewFromScanList();
    else
        DeleteSelecteditem();
}

void AppDelegate::closeDeleteWindow() {
    if (m_deleteingWindow)
        m_deleteingWindow->done(DeletingPanel::returnCode);
}

void AppDelegate::returnFromReview(const RemovalReview::CloseDecision& decision) {
    if (decision.allRemoved) {
        m_mainViewObj->emptyFolderList();
        makeToolbarItem(0);
        makeWindowFor(0);
        Prompter::Alert alert;
        alert.messageText = RemovalTexts::allRemovedMessage();
        alert.informativeText = RemovalTexts::allRemovedInformative();
        m_prompter.runAlert(alert);
        return;
    }
    // After a removal the review has rebuilt the displayed list and the tables follow it; with
    // nothing removed only the chosen marks may have changed, and the user keeps their place.
    // A list still being rebuilt in the background reloads the table when it is in place.
    if (decision.listChanged && !m_lists.isBusy())
        m_resultViewObj->reloadMainList();
    else
        m_resultViewObj->reloadRow();
    makeToolbarItem(decision.typetoolbar);
    // After a removal the keyboard goes on from the groups that are left.
    if (decision.listChanged)
        m_resultViewObj->duplicateListMain()->setFocus(Qt::OtherFocusReason);
}

void AppDelegate::rescan() {
    setViewsFor(QStringLiteral("Main"));
    QTimer::singleShot(kRescanDelayMs, this, [this] { scanStart(); });
}

void AppDelegate::rateAppApptentive() {
    Prompter::Alert alert;
    alert.messageText = QStringLiteral("Do you enjoy using Twinsift?");
    alert.informativeText = QStringLiteral("A rating on its web page helps others find it.");
    alert.buttons = { QStringLiteral("Yes"), QStringLiteral("No") };
    if (m_prompter.runAlert(alert).response != Prompter::FirstButton)
        return;
    if (!openUrl(QUrl(RemovalTexts::shareLink())))
        Log::line(QStringLiteral("could not open %1").arg(RemovalTexts::shareLink()));
}
