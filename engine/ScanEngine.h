#pragma once

#include "detect/Grouping.h"
#include "detect/IgnoredTypes.h"
#include "engine/HashPool.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>
#include <memory>
#include <optional>

class DigestCache;
struct ScanState;
class ScanObserver;

// The enumeration routines and the two grouping routines, working on one ScanState. Every routine
// runs on the calling thread (the scan thread); file digests are spread over a pool of threads and
// the results are folded in the order the one-at-a-time walk would produce them, so the tables and
// groups come out the same.
//
// Targets are absolute byte paths without a trailing slash.
class ScanEngine {
public:
    ScanEngine(ScanState& state, ScanObserver& observer);

    // Folder scan: walk every target (folders fingerprinted from their contents), then group.
    void scannigWithCheckingSubDirectory(const QList<QByteArray>& targets);
    // Folder scan without sub-folders: files by content, folders as one unit, then group.
    void scannigWithoutCheckingSubDirectory(const QList<QByteArray>& targets);
    // True when the item or one of its ancestors is in the ignored-folder list (exact paths).
    bool checkForWhiteList(const QByteArray& path) const;
    bool removeurl(const QByteArray& path) const { return checkForWhiteList(path); }
    // Drops from the folder scan's table every key below each given folder (bundle contents stay).
    void removeSubFromList(const QList<QByteArray>& folders);
    void removeSub(const QList<QByteArray>& folders);

    // List scan: the same per-item rules; folders and bundles go to AllFileFolderDic, files to
    // AllFileFileDic. The recursive routine hands over to grouping on this thread, the flat one
    // through the observer.
    void performScanningSelector(const QList<QByteArray>& targets);
    void performScanning(const QList<QByteArray>& targets);
    // Photo library: pictures and audio-visual files of every folder below each target.
    void performScanningSelectorForPhoto(const QList<QByteArray>& targets);

    void identifyDuplicates();
    void scanAddedFolder();
    void checkDuplicates(DepthOrderedKeys keys);
    void makeDupliucateList(const QList<QByteArray>& paths, qint64 size);

    static qint64 fileSizeOf(const QByteArray& path);

    // Reads every file even when nothing could match it (for checks of the planner's decisions).
    void setReadEverything(bool readEverything) { m_readEverything = readEverything; }
    // How old a file's change time must be before its digests are cached (tests store at once).
    void setCacheSettleNs(qint64 settleNs) { m_cacheSettleNs = settleNs; }

private:
    enum class Flavor { FolderScan, ListScan };
    void walkRecursive(const QList<QByteArray>& targets, Flavor flavor);
    void walkFlat(const QList<QByteArray>& targets, Flavor flavor);
    void rebuildIgnoreSets();
    bool isIgnoredType(const QByteArray& path) const;
    std::unique_ptr<DigestCache> openCache() const;
    HashPool::Options poolOptions(const QList<QByteArray>& targets, DigestCache* cache);

    ScanState& m_state;
    ScanObserver& m_observer;
    IgnoredTypes m_ignoredTypes;
    QSet<QByteArray> m_ignoredFolders;
    bool m_readEverything = false;
    std::optional<qint64> m_cacheSettleNs;
};
