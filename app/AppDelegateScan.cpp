// AppDelegate's part of a scan: starting both scan paths, the two timers, the live figures, the
// hand-overs from the scan thread and both endings; and the older list's state that the list scan
// reads and writes.
#include "app/AppDelegate.h"

#include "app/DesktopNotifier.h"
#include "app/MainToolbar.h"
#include "app/progressView.h"
#include "controls/StripedProgressBar.h"
#include "engine/Log.h"
#include "engine/ScanDriver.h"
#include "removal/DeletingPanel.h"
#include "review/ByteCountFormatter.h"
#include "review/StatusTexts.h"
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
constexpr int kMainToolbarDelayMs = 200;

} // namespace

int AppDelegate::scanningAnimationCounter() {
    return s_scanningCounter;
}

// Folder scan

void AppDelegate::StartScan(const QList<QByteArray>& targets) {
    m_driver->StartScan(targets);
}

void AppDelegate::folderScanWillStart() {
    // prepareForScannigDirectory's part on the screens; the driver has reset the state.
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
    setProgressData();
    setProgressScanning(1.0);
    m_driver->AfterScanningDone();
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
    s_scanningCounter = (s_scanningCounter + 1) % 3;
}

// List scan

void AppDelegate::scanStart() {
    m_driver->scanStart();
}

void AppDelegate::listScanWillStart() {
    // PrepareForScan's part on the screens; the driver has reset the tables and counters.
    m_ReloadRow = 0;
    m_ReloadRowMain = 0;
    SetToolBarBTNFor(QStringLiteral("Pscan"));
    m_older.StatusWindowBTN.enabled = true;
    m_saveResultArray.clear();
    m_refreshStatusTimer.start();
    validateMenus();
}

void AppDelegate::listScanWillWalk() {
    onInterfaceThread([this] { setScanningAnimated(); }, true);
}

void AppDelegate::setFlo(int flo) {
    m_flo = flo;
}

void AppDelegate::listGroupingDidFinish() {
    onInterfaceThread([this] { m_refreshStatusTimer.stop(); }, false);
}

void AppDelegate::afterScan() {
    onInterfaceThread([this] { AfterScan(); }, true);
}

void AppDelegate::runScanAddedFolderLater(const std::function<void()>& run) {
    onInterfaceThread(run, false);
}

void AppDelegate::AfterScan() {
    // These delayed steps run even if another scan has started meanwhile.
    QTimer::singleShot(kRunningFlagDelayMs, this, [this] {
        m_state.isScanRunning = false;
        validateMenus();
    });
    m_saveResultArray = m_state.DuplicateFileFolderArray;
    if (m_saveResultArray.isEmpty()) {
        m_state.isScanRunning = false;
        m_isMainScreen = true;
        QTimer::singleShot(kMainScreenDelayMs, this, [this] { SetToolBarBTNFor(QStringLiteral("main")); });
        const QString nothing = QStringLiteral("Scan completed and no duplicate found");
        Log::line(nothing);
        m_older.bottomStatus = nothing;
        m_older.scan.enabled = false;
        QTimer::singleShot(kMainScreenDelayMs, this, [this] {
            m_older.showDuplicate.enabled = false;
            m_older.StatusWindowBTN.enabled = true;
        });
    } else {
        // The older result screen's type list is rebuilt here once that screen exists.
        m_older.ResetNewScanBTN.enabled = true;
        m_older.showDuplicate.enabled = true;
    }

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

// The older list

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
    QTimer::singleShot(kMainToolbarDelayMs, this, [this] { SetToolBarBTNFor(QStringLiteral("main")); });
}

void AppDelegate::setViewsFor(const QString& view) {
    const bool result = view == QLatin1String("Result");
    m_isMainScreen = !result;
    m_older.Remove.hidden = !result;
    m_older.showDuplicate.hidden = result;
    validateMenus();
}

void AppDelegate::SetToolBarBTNFor(const QString& mode) {
    if (mode == QLatin1String("Pscan")) {
        m_older.Add = { false, false, QStringLiteral("NSAddTemplate") };
        m_older.scan.enabled = false;
        m_older.iPhoto.enabled = false;
        m_older.ResetNewScanBTN.enabled = false;
    } else if (mode == QLatin1String("Cscan")) {
        m_older.Add = { !m_state.DuplicateFileFolderArray.isEmpty(), false, QStringLiteral("NSGoLeftTemplate") };
    } else if (mode == QLatin1String("main")) {
        m_older.Add = { true, false, QStringLiteral("NSAddTemplate") };
        m_older.iPhoto.enabled = true;
        m_older.scan.enabled = !m_state.mainArray.isEmpty();
        m_older.hintShown = m_state.mainArray.isEmpty();
    }
    validateMenus();
}

void AppDelegate::NewScanBack() {
    if (m_state.isScanRunning)
        return;
    m_state.mainArray.clear();
    m_state.DuplicateFileFolderArray.clear();
    m_saveResultArray.clear();
    m_older.ResetNewScanBTN.enabled = false;
    m_resultViewObj->searchALL()->clear();
    setViewsFor(QStringLiteral("Main"));
    SetToolBarBTNFor(QStringLiteral("main"));
    if (m_deleteingWindow)
        m_deleteingWindow->closewindow();
}
