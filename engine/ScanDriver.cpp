#include "engine/ScanDriver.h"

#include "base/ByteCountFormatter.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "base/SettingsStore.h"
#include "engine/ScanEngine.h"
#include "engine/ScanObserver.h"
#include "engine/ScanState.h"

#include <QElapsedTimer>
#include <QStringList>
#include <QThread>

namespace {

// Deep folder trees are folded by recursion: give the scan thread room for it.
constexpr uint kScanThreadStack = 64u * 1024u * 1024u;

} // namespace

QString describeTargets(const QList<QByteArray>& targets) {
    QStringList urls;
    for (const QByteArray& target : targets)
        urls.append(QString::fromUtf8(PathBytes::fileUrl(target)));
    return QLatin1Char('(') + urls.join(QStringLiteral(", ")) + QLatin1Char(')');
}

ScanDriver::ScanDriver(ScanState& state, ScanObserver& observer)
    : loadSettings([](ScanSettings& settings) {
        SettingsStore store;
        getAppSetting(settings, store);
    })
    , m_state(state)
    , m_observer(observer) { }

ScanDriver::~ScanDriver() {
    waitForScanThread();
}

void ScanDriver::startThread(std::function<void()> body) {
    waitForScanThread();
    m_thread.reset(QThread::create(std::move(body)));
    m_thread->setStackSize(kScanThreadStack);
    m_thread->start();
}

bool ScanDriver::waitForScanThread(int timeoutMs) {
    const QDeadlineTimer deadline = timeoutMs < 0 ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(timeoutMs);
    if (m_thread && !m_thread->wait(deadline))
        return false;
    // The flat list scan's thread is started by the first one, so it is looked at only afterwards.
    if (m_flatThread && !m_flatThread->wait(deadline))
        return false;
    return true;
}

void ScanDriver::StartScan(const QList<QByteArray>& targets) {
    Log::line(describeTargets(targets));
    ++m_state.scanGeneration;
    m_state.isScanRunning = true;
    prepareForScannigDirectory();
    m_observer.folderScanWillStart();
    startThread([this, targets] { scanInBGThread(targets); });
}

void ScanDriver::prepareForScannigDirectory() {
    loadSettings(m_state.settings);
    m_state.hashDic.clear();
    m_state.duplicateMainArray.clear();
    m_state.totalCount = 0;
    m_state.contentBytesRead = 0;
    m_state.totalDuplicateCount = 0;
    m_state.totalDuplicateCountTemp = 0;
    m_state.totalDuplicateCountFiles = 0;
    m_state.wastedSpaceDuplicates = 0;
}

void ScanDriver::scanInBGThread(const QList<QByteArray>& targets) {
    Log::line(QStringLiteral("scanInBGThread"));
    QElapsedTimer timer;
    timer.start();
    ScanEngine engine(m_state, m_observer);
    if (m_state.settings.checkSubDir == QLatin1String("n"))
        engine.scannigWithoutCheckingSubDirectory(targets);
    else
        engine.scannigWithCheckingSubDirectory(targets);
    Log::line(QString::asprintf("All Scan time %f", static_cast<double>(timer.nsecsElapsed()) / 1e9));
}

void ScanDriver::AfterScanningDone() {
    m_state.hashDic.clear();
    m_state.totalDuplicateCountFiles = 0;
    Log::line(QStringLiteral("AfterScanningDone"));
    // The list scan's figures, logged on this path too: that is how these lines are defined.
    Log::line(QStringLiteral("size ") + ByteCountFormatter::decimal(m_state.DuplicateWastedSpace));
    Log::line(QStringLiteral("total %1").arg(m_state.totalCount.load()));
    Log::line(QStringLiteral("dup %1").arg(m_state.totalDuplicateCountFolder.load()));
    m_state.isScanRunning = false;
}

void ScanDriver::scanStart() {
    ++m_state.scanGeneration;
    m_state.isScanRunning = true;
    PrepareForScan();
    m_observer.listScanWillStart();
    startThread([this] { startScanningwithmultithread(); });
}

void ScanDriver::PrepareForScan() {
    loadSettings(m_state.settings);
    m_state.AllFileFolderDic.clear();
    m_state.DuplicateFileFolderArray.clear();
    m_state.totalCount = 0;
    m_state.contentBytesRead = 0;
    m_state.totalDuplicateCountFolder = 0;
    m_state.totalDuplicateCountFiles = 0;
    m_state.totalDuplicateCountFolderTemp = 0;
    m_state.DuplicateWastedSpace = 0;
    m_state.filterSegmentItem.clear();
}

void ScanDriver::startScanningwithmultithread() {
    QElapsedTimer timer;
    timer.start();
    m_observer.setFlo(1);
    m_observer.listScanWillWalk();
    if (!m_state.photoScan) {
        if (m_state.settings.checkSubDir == QLatin1String("n")) {
            // The flat routine runs on a further thread; this one goes on at once.
            const QList<QByteArray> targets = m_state.mainArray;
            m_flatThread.reset(QThread::create([this, targets] {
                ScanEngine engine(m_state, m_observer);
                engine.performScanning(targets);
            }));
            m_flatThread->start();
        } else {
            ScanEngine engine(m_state, m_observer);
            engine.performScanningSelector(m_state.mainArray);
        }
    } else {
        m_state.mainArray.clear();
        ScanEngine engine(m_state, m_observer);
        engine.performScanningSelectorForPhoto(m_state.PhotoDir);
    }
    Log::line(QString::asprintf("All time %f", static_cast<double>(timer.nsecsElapsed()) / 1e9));
}
