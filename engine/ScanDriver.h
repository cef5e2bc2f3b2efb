#pragma once

#include <QByteArray>
#include <QList>
#include <functional>
#include <memory>

class QThread;
class ScanEngine;
class ScanObserver;
struct ScanSettings;
struct ScanState;

// Runs a scan from its start call to its end: resets the state, loads the settings, runs the
// enumeration and grouping on one background thread and ends through the observer. The window and
// the command line drive scans through this same code; only their observers differ.
class ScanDriver {
public:
    ScanDriver(ScanState& state, ScanObserver& observer);
    ~ScanDriver();

    // Loads ScanSettings before each scan, on the thread that starts it, into the state's own copy
    // that only the scan reads until it ends; by default from the user-defaults store, writing back
    // any missing default.
    std::function<void(ScanSettings&)> loadSettings;

    // Folder scan. StartScan logs the targets, marks the scan running, prepares and starts the
    // background thread, and returns at once.
    void StartScan(const QList<QByteArray>& targets);
    void prepareForScannigDirectory();
    void scanInBGThread(const QList<QByteArray>& targets);
    // The ending's own work (the window adds its timers and toolbar around it): empties the table,
    // logs the figures and clears `isScanRunning`.
    void AfterScanningDone();

    // List scan over `mainArray`, or `PhotoDir` when `photoScan` is set.
    void scanStart();
    void PrepareForScan();
    void startScanningwithmultithread();

    // Blocks until the background threads of the last scan have ended, or the time (in
    // milliseconds, -1 for no limit) has passed; answers whether they have ended.
    bool waitForScanThread(int timeoutMs = -1);

    ScanState& state() { return m_state; }

private:
    void startThread(std::function<void()> body);

    ScanState& m_state;
    ScanObserver& m_observer;
    std::unique_ptr<QThread> m_thread;
    std::unique_ptr<QThread> m_flatThread;
};

// "(file:///a/, file:///b/)": a target list on one log line.
QString describeTargets(const QList<QByteArray>& targets);
