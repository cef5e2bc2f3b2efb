// AppDelegate's part of a scan: starting both scan paths, the two timers, the live figures, the
// hand-overs from the scan thread and both endings.
#include "app/AppDelegate.h"

#include "app/DesktopNotifier.h"
#include "app/FolderListModel.h"
#include "app/MainToolbar.h"
#include "app/OlderPages.h"
#include "app/OlderToolbar.h"
#include "app/mainScreen.h"
#include "app/mainView.h"
#include "app/progressView.h"
#include "base/ByteCountFormatter.h"
#include "base/Log.h"
#include "controls/StripedProgressBar.h"
#include "engine/ScanDriver.h"
#include "removal/DeletingPanel.h"
#include "review/StatusTexts.h"
#include "review/StatusWindow.h"
#include "review/resultView.h"

#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <algorithm>

namespace {

// The "Scanning." animation's counter: shared by all scans and never reset, so a new scan goes on
// from the text the last one stopped at.
int s_scanningCounter = 0;

constexpr qreal kDoneScanningInset = 8.0;
constexpr qreal kScanningInset = 106.0;
// Delays of the list scan's ending, as the older screens expect them.
constexpr int kRunningFlagDelayMs = 1500;
constexpr int kMainScreenDelayMs = 1000;

} // namespace

int AppDelegate::scanningAnimationCounter() {
    return s_scanningCounter;
}

// Folder scan

void AppDelegate::StartScan(const QList<QByteArray>& targets) {
    m_mainViewObj->model()->stopSizeWalks();
    m_driver->StartScan(targets);
}

void AppDelegate::folderScanWillStart() {
    // prepareForScannigDirectory's part on the screens; the driver has reset the state. Copies
    // chosen in an earlier result belong to it: a new scan starts with none chosen, in both lists.
    m_selection.duplicateSelectedArray.clear();
    m_listSelection.SelectedFileFolderArray.clear();
    resetResultScreenForNewScan();
    StripedProgressBar* indicator = toolbar()->progressIndicator();
    indicator->setIndeterminate(true);
    indicator->startAnimation();
    m_refreshStatusTimer.start();
    m_scanTimer.start();
    validateMenus();
}

void AppDelegate::detectionWillStart() {
    onInterfaceThread(
        [this] {
            StripedProgressBar* indicator = toolbar()->progressIndicator();
            indicator->setIndeterminate(false);
            indicator->stopAnimation();
        },
        true);
}

void AppDelegate::detectionDidFinish() {
    onInterfaceThread(
        [this] {
            m_scanTimer.stop();
            toolbar()->setStatusLine(QStringLiteral("Done Scanning"), kDoneScanningInset);
        },
        true);
}

void AppDelegate::afterScanningDone() {
    onInterfaceThread([this] { AfterScanningDone(); }, true);
}

void AppDelegate::AfterScanningDone() {
    m_refreshStatusTimer.stop();
    m_selection.setProtectedFolders(m_state.settings.protectedFolderList);
    setProgressData();
    setProgressScanning(1.0);
    m_driver->AfterScanningDone();
    // What the first list needs is worked out while the user reads the scan's figures.
    m_lists.prepare();
    makeToolbarItem(m_state.duplicateMainArray.isEmpty() ? 3 : 4);
}

void AppDelegate::setProgressData() {
    m_progressViewObj->scannCount()->setText(StatusTexts::scannedCount(m_state.totalCount, QLocale().name()));
    m_progressViewObj->duplicateSize()->setText(
        StatusTexts::convertNumberToString(static_cast<qint64>(m_state.wastedSpaceDuplicates.load())));
    m_progressViewObj->duplicateCount()->setText(QString::number(m_state.totalDuplicateCount.load()));
    const qint64 files = m_state.totalDuplicateCountFiles;
    const quint64 done = m_state.totalDuplicateCountTemp;
    if (files != 0 && done != 0)
        setProgressScanning(static_cast<float>(done) / static_cast<float>(files));
    else
        setProgressScanning(0.0);
    if (m_listScanRunning) {
        // The list scan shows its figures on the scan-list pages and in the popover while it is open.
        const bool grouping = files != 0 && m_flo == 0;
        m_olderPages->toolbar()->setProgress(
            true, grouping, StatusTexts::popoverProgress(m_state.totalDuplicateCountFolderTemp, files));
        if (m_StatusWindowObj->isVisible())
            m_StatusWindowObj->set();
    }
}

void AppDelegate::setProgressScanning(double fraction) {
    toolbar()->progressIndicator()->setValue(std::clamp(fraction, 0.0, 1.0));
}

void AppDelegate::setScanningAnimated() {
    if (!m_state.isScanRunning)
        return;
    static const QString texts[]
        = { QStringLiteral("Scanning."), QStringLiteral("Scanning.."), QStringLiteral("Scanning...") };
    toolbar()->setStatusLine(texts[s_scanningCounter], kScanningInset);
    if (m_listScanRunning) {
        m_older.statusText = texts[s_scanningCounter];
        applyOlderItems();
    }
    s_scanningCounter = (s_scanningCounter + 1) % 3;
}

// List scan

void AppDelegate::scanStart() {
    // One scan at a time: a second would wait for the first on this thread, which the first needs.
    if (m_state.isScanRunning) {
        Log::line(QStringLiteral("scan running"));
        return;
    }
    m_mainViewObj->model()->stopSizeWalks();
    m_driver->scanStart();
}

void AppDelegate::listScanWillStart() {
    // PrepareForScan's part on the screens; the driver has reset the tables and counters. The scan
    // shows on the scan list's main page.
    m_listScanRunning = true;
    if (!isOlderViewShown() || !m_isMainScreen)
        setViewsFor(QStringLiteral("Main"));
    m_listSelection.ReloadRow = 0;
    m_ReloadRowMain = 0;
    m_selRowRightClick = -1;
    SetToolBarBTNFor(QStringLiteral("Pscan"));
    m_older.StatusWindowBTN.enabled = true;
    m_older.showDuplicate.enabled = false;
    m_older.Remove.enabled = false;
    m_older.bottomStatus = QString();
    m_older.selectDuplicateTitle = QStringLiteral("Select Duplicates");
    m_listModel.saveResultArray.clear();
    m_listModel.segmentType = QStringLiteral("All");
    m_listSelection.SelectedFileFolderArray.clear();
    m_selection.duplicateSelectedArray.clear();
    reloadOlderResult(true);
    m_olderPages->toolbar()->setProgress(true, false, 0.0);
    m_refreshStatusTimer.start();
    applyOlderItems();
}

void AppDelegate::listScanWillWalk() {
    onInterfaceThread(
        [this] {
            setScanningAnimated();
            m_StatusWindowObj->setINFIProcessBarShow(false);
            if (m_state.photoScan) {
                // The photo scan walks the library alone: the target list is emptied before it starts.
                m_state.mainArray.clear();
                m_mainScreenObj->reload();
            }
        },
        true);
}

void AppDelegate::setFlo(int flo) {
    m_flo = flo;
    m_StatusWindowObj->setFlo(flo);
}

void AppDelegate::listGroupingDidFinish() {
    onInterfaceThread(
        [this] {
            m_StatusWindowObj->setINFIProcessBarHide(true);
            if (m_refreshStatusTimer.isActive()) {
                m_refreshStatusTimer.stop();
                m_StatusWindowObj->set();
            }
        },
        false);
}

void AppDelegate::afterScan() {
    onInterfaceThread([this] { AfterScan(); }, true);
}

void AppDelegate::runScanAddedFolderLater(const std::function<void()>& run) {
    onInterfaceThread(run, false);
}

void AppDelegate::AfterScan() {
    // The delayed steps below run even if another scan has started meanwhile; the running flag is
    // cleared only when no scan has started since this one.
    const quint64 generation = m_state.scanGeneration;
    QTimer::singleShot(kRunningFlagDelayMs, this, [this, generation] {
        if (m_state.scanGeneration == generation)
            m_state.isScanRunning = false;
        applyOlderItems();
    });
    m_listScanRunning = false;
    m_refreshStatusTimer.stop();
    m_olderPages->toolbar()->setProgress(false, false, 0.0);
    m_StatusWindowObj->closein();
    m_listModel.saveResult();
    if (m_listModel.saveResultArray.isEmpty()) {
        m_state.isScanRunning = false;
        setViewsFor(QStringLiteral("Main"));
        QTimer::singleShot(kMainScreenDelayMs, this, [this] { SetToolBarBTNFor(QStringLiteral("main")); });
        m_mainScreenObj->reload();
        const QString nothing = QStringLiteral("Scan completed and no duplicate found");
        Log::line(nothing);
        m_older.bottomStatus = nothing;
        m_older.statusText = QStringLiteral("No duplicates found.");
        m_older.scan.enabled = false;
        QTimer::singleShot(kMainScreenDelayMs, this, [this] {
            m_older.showDuplicate.enabled = false;
            m_older.StatusWindowBTN.enabled = true;
            applyOlderItems();
        });
    } else {
        m_listModel.makeListOfTypes();
        m_older.ResetNewScanBTN.enabled = true;
        m_older.showDuplicate.enabled = true;
        m_older.statusText = QString();
        reloadOlderResult(true);
        // The scan ends on its result.
        showDuplicatelist();
    }
    applyOlderItems();

    const qint64 count = m_state.totalDuplicateCountFolder;
    const QString text = count != 0 ? QStringLiteral("%1 %2(%3) found")
                                          .arg(count)
                                          .arg(count == 1 ? QStringLiteral("duplicate") : QStringLiteral("duplicates"),
                                              ByteCountFormatter::decimal(m_state.DuplicateWastedSpace))
                                    : QStringLiteral("No duplicate files found in selected directory");
    setUserNotificationWithTitle(QStringLiteral("Scan completed"), QString(), text);
    validateMenus();
}

void AppDelegate::setUserNotificationWithTitle(
    const QString& title, const QString& subTitle, const QString& informativeText) {
    m_notifier->notifyLater(title, subTitle, informativeText);
}
