#pragma once

#include "base/ScanSettings.h"
#include "detect/FingerprintTable.h"
#include "detect/GroupDictionary.h"
#include "detect/duplicates.h"

#include <QList>
#include <QStringList>
#include <atomic>

// Everything a scan fills: the settings it ran with, the fingerprint tables, the groups of both
// grouping routines and the live counters. The application controller owns one; the command line
// makes its own. The scan thread writes the tables and groups while `isScanRunning` is set; other
// threads only read the counters, which are atomic for that reason.
struct ScanState {
    ScanSettings settings;
    // The targets of the last scan, as walked: a removal reaches every item again from these.
    QList<QByteArray> scanRoots;
    // The folder of the digest cache kept across runs; empty for none.
    QString digestCacheFolder;

    // Folder scan.
    FingerprintTable hashDic;
    QList<DuplicateGroupPtr> duplicateMainArray;
    QList<int> filterButtonNameList;

    // List scan (the older path, also used by the photo-library scan).
    FingerprintTable AllFileFolderDic;
    FingerprintTable AllFileFileDic;
    QList<GroupDictionary> DuplicateFileFolderArray;
    QStringList filterSegmentItem;
    QList<QByteArray> mainArray;
    QList<QByteArray> PhotoDir;
    bool photoScan = false;

    std::atomic<bool> isScanRunning { false };
    // Counts the scans started: a delayed step of one scan compares it to know whether another
    // scan has started since.
    std::atomic<quint64> scanGeneration { 0 };

    std::atomic<qint64> totalCount { 0 };
    std::atomic<qint64> contentBytesRead { 0 }; // file content read for digests
    std::atomic<qint64> totalDuplicateCountFiles { 0 };
    std::atomic<quint64> totalDuplicateCountTemp { 0 };
    std::atomic<quint64> totalDuplicateCount { 0 };
    std::atomic<quint64> wastedSpaceDuplicates { 0 };
    std::atomic<qint64> totalDuplicateCountFolder { 0 };
    std::atomic<qint64> DuplicateWastedSpace { 0 };
    std::atomic<qint64> totalDuplicateCountFolderTemp { 0 };
};
