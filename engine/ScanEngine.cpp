#include "engine/ScanEngine.h"

#include "base/DigestCache.h"
#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "detect/FileHash.h"
#include "detect/FileType.h"
#include "detect/FolderNode.h"
#include "engine/ContentPlanner.h"
#include "engine/HashPool.h"
#include "engine/ScanObserver.h"
#include "engine/ScanState.h"
#include "engine/TreeWalker.h"

#include <QElapsedTimer>
#include <algorithm>

namespace {

// One target of a walk as it will be recorded once the digests are known.
struct TargetStep {
    enum Action : uint8_t { None, Record, RecordTimeStamp, Node };
    QByteArray path;
    Action action = None;
    bool fileTable = false; // list scan: regular files go to the file table
    qint32 node = -1;
    Fingerprint fingerprint;
};

void planFile(ContentPlanner& planner, TargetStep& step, const FileSystem::ItemInfo& info, bool published) {
    planner.addFile({ &step.fingerprint, cacheKeyOf(info), -1, -1, step.path }, published, nullptr);
}

// The targets as they are walked: a symbolic link given as a target stands for the item it names,
// and a folder met again (the same path, or a folder inside another target) is walked once, where
// the other target reaches it. Targets that name nothing are kept for the walk to report.
QList<QByteArray> walkedTargets(const QList<QByteArray>& targets) {
    QList<QByteArray> resolved;
    QList<bool> isFolder;
    resolved.reserve(targets.size());
    for (const QByteArray& target : targets) {
        const QByteArray real = FileSystem::resolveTarget(target);
        resolved.append(real.isEmpty() ? target : real);
        FileSystem::ItemInfo info;
        isFolder.append(FileSystem::stat(resolved.last(), info) && info.kind == FileSystem::Kind::Directory);
    }
    QList<QByteArray> out;
    for (qsizetype i = 0; i < resolved.size(); ++i) {
        const QByteArray& path = resolved[i];
        bool repeated = false;
        for (qsizetype j = 0; j < resolved.size() && !repeated; ++j)
            repeated = (j < i && resolved[j] == path) || (isFolder[i] && PathBytes::isDescendant(path, resolved[j]));
        if (repeated)
            Log::line(QStringLiteral("already scanned as part of another target: %1").arg(PathBytes::display(path)));
        else
            out.append(path);
    }
    return out;
}

// Records a target whose read is settled; a file that was gone by then is left out.
void record(FingerprintTable& table, const QByteArray& path, const Fingerprint& fingerprint) {
    if (fingerprint.kind() == Fingerprint::Kind::Vanished) {
        Log::line(QStringLiteral("gone before it was read: %1").arg(PathBytes::display(path)));
        return;
    }
    table.insert(path, fingerprint);
}

QString seconds(const QElapsedTimer& timer) {
    return QString::asprintf("%f", static_cast<double>(timer.nsecsElapsed()) / 1e9);
}

} // namespace

ScanEngine::ScanEngine(ScanState& state, ScanObserver& observer)
    : m_state(state)
    , m_observer(observer) {
    rebuildIgnoreSets();
}

void ScanEngine::rebuildIgnoreSets() {
    m_ignoredTypes = IgnoredTypes(
        QSet<QString>(m_state.settings.ignoreFileTypeList.cbegin(), m_state.settings.ignoreFileTypeList.cend()));
    m_ignoredFolders
        = QSet<QByteArray>(m_state.settings.ignoreFolderList.cbegin(), m_state.settings.ignoreFolderList.cend());
}

std::unique_ptr<DigestCache> ScanEngine::openCache() const {
    if (m_state.digestCacheFolder.isEmpty())
        return nullptr;
    std::unique_ptr<DigestCache> cache = DigestCache::open(m_state.digestCacheFolder);
    if (cache && m_cacheSettleNs)
        cache->setSettleNs(*m_cacheSettleNs);
    return cache;
}

HashPool::Options ScanEngine::poolOptions(const QList<QByteArray>& targets, DigestCache* cache) {
    HashPool::Options options = HashPool::optionsForTargets(targets);
    options.cache = cache;
    options.bytesRead = &m_state.contentBytesRead;
    return options;
}

bool ScanEngine::isIgnoredType(const QByteArray& path) const {
    return m_ignoredTypes.matches(path);
}

qint64 ScanEngine::fileSizeOf(const QByteArray& path) {
    return FileSystem::fileSizeOf(path);
}

bool ScanEngine::checkForWhiteList(const QByteArray& path) const {
    if (path.isEmpty())
        return true;
    QByteArray current = path;
    for (;;) {
        if (current == "/")
            return false;
        if (m_ignoredFolders.contains(current))
            return true;
        current = PathBytes::deletingLastPathComponent(current);
        if (current.isEmpty())
            return false;
    }
}

void ScanEngine::walkRecursive(const QList<QByteArray>& givenTargets, Flavor flavor) {
    rebuildIgnoreSets();
    const QList<QByteArray> targets = walkedTargets(givenTargets);
    m_state.scanRoots = targets;
    const ScanSettings& settings = m_state.settings;
    FingerprintTable& unitTable = flavor == Flavor::FolderScan ? m_state.hashDic : m_state.AllFileFolderDic;
    FingerprintTable& fileTable = flavor == Flavor::FolderScan ? m_state.hashDic : m_state.AllFileFileDic;
    std::atomic<qint64>& totalCount = m_state.totalCount;

    FolderTree tree;
    std::vector<TargetStep> steps(static_cast<size_t>(targets.size()));
    {
        const std::unique_ptr<DigestCache> cache = openCache();
        HashPool pool(totalCount, poolOptions(targets, cache.get()));
        ContentPlanner planner(pool, totalCount, m_readEverything);
        const WalkRules rules { settings, m_ignoredTypes, m_ignoredFolders };
        TreeWalker walker(rules, tree, planner, totalCount);
        for (qsizetype i = 0; i < targets.size(); ++i) {
            TargetStep& step = steps[static_cast<size_t>(i)];
            step.path = targets[i];
            if (checkForWhiteList(step.path)) {
                ++totalCount;
                continue;
            }
            FileSystem::ItemInfo info;
            if (!FileSystem::stat(step.path, info)) {
                Log::line(QStringLiteral("no such item %1").arg(PathBytes::display(step.path)));
                continue;
            }
            const QByteArray extension = PathBytes::pathExtension(step.path);
            const bool isFolder = info.kind == FileSystem::Kind::Directory;
            if (isFolder && PathBytes::isPackageExtension(extension)) {
                // Bundles are never tested for a leading dot: hidden ones are fingerprinted too.
                if (isIgnoredType(step.path)) {
                    step.action = TargetStep::RecordTimeStamp;
                } else {
                    step.fingerprint = measuredUnitFingerprint(step.path, FileSystem::SizeKey::Logical, extension);
                    step.action = TargetStep::Record;
                }
                ++totalCount;
            } else if (info.kind == FileSystem::Kind::Regular) {
                if (PathBytes::isHidden(step.path))
                    continue;
                step.fileTable = true;
                if (isIgnoredType(step.path)) {
                    step.action = TargetStep::RecordTimeStamp;
                    ++totalCount;
                } else if (info.allocated >= settings.nub) {
                    step.action = TargetStep::Record;
                    // The list scan's file table is not grouped: its entries are never candidates.
                    planFile(planner, step, info, flavor == Flavor::FolderScan);
                }
            } else if (isFolder) {
                if (m_ignoredFolders.contains(step.path)) {
                    ++totalCount;
                } else if (PathBytes::isHidden(step.path)) {
                    // A hidden target folder is one unit whatever the hidden-files setting says.
                    step.fingerprint = measuredUnitFingerprint(step.path, FileSystem::SizeKey::Allocated, extension);
                    step.action = TargetStep::Record;
                    ++totalCount;
                } else if (extension == "framework") {
                    step.fingerprint = measuredUnitFingerprint(step.path, FileSystem::SizeKey::Logical, extension);
                    step.action = TargetStep::Record;
                    ++totalCount;
                } else {
                    step.node = walker.walkFolder(step.path);
                    if (step.node >= 0)
                        step.action = TargetStep::Node;
                }
            }
        }
        planner.finish(&tree, m_ignoredTypes);
        pool.waitForAll();
    }

    // Fold in target order: the table receives what the one-at-a-time walk would have recorded.
    qsizetype items = static_cast<qsizetype>(steps.size() + tree.nodes.size());
    for (const FolderTreeNode& folder : tree.nodes)
        items += static_cast<qsizetype>(folder.children.size());
    unitTable.reserveMore(items);
    for (const TargetStep& step : steps) {
        FingerprintTable& table = step.fileTable ? fileTable : unitTable;
        switch (step.action) {
        case TargetStep::None:
            break;
        case TargetStep::Record:
            record(table, step.path, step.fingerprint);
            break;
        case TargetStep::RecordTimeStamp:
            table.insert(step.path, createRandomBytes());
            break;
        case TargetStep::Node: {
            FolderNodeContext context { settings, m_ignoredTypes, unitTable, tree };
            if (flavor == Flavor::FolderScan) {
                scanDirectory::initWithURL(context, step.node);
            } else {
                ScanDetail node(context);
                node.initself(step.node);
            }
            break;
        }
        }
    }
}

void ScanEngine::walkFlat(const QList<QByteArray>& givenTargets, Flavor flavor) {
    rebuildIgnoreSets();
    const QList<QByteArray> targets = walkedTargets(givenTargets);
    m_state.scanRoots = targets;
    FingerprintTable& unitTable = flavor == Flavor::FolderScan ? m_state.hashDic : m_state.AllFileFolderDic;
    FingerprintTable& fileTable = flavor == Flavor::FolderScan ? m_state.hashDic : m_state.AllFileFileDic;
    std::atomic<qint64>& totalCount = m_state.totalCount;

    std::vector<TargetStep> steps(static_cast<size_t>(targets.size()));
    {
        const std::unique_ptr<DigestCache> cache = openCache();
        HashPool pool(totalCount, poolOptions(targets, cache.get()));
        ContentPlanner planner(pool, totalCount, m_readEverything);
        for (qsizetype i = 0; i < targets.size(); ++i) {
            TargetStep& step = steps[static_cast<size_t>(i)];
            step.path = targets[i];
            // Only the folder scan's flat routine tests the ignored folders.
            if (flavor == Flavor::FolderScan && checkForWhiteList(step.path)) {
                ++totalCount;
                continue;
            }
            FileSystem::ItemInfo info;
            if (!FileSystem::stat(step.path, info)) {
                Log::line(QStringLiteral("no such item %1").arg(PathBytes::display(step.path)));
                continue;
            }
            if (info.kind == FileSystem::Kind::Regular) {
                // Neither the ignored types nor the minimum size apply here.
                if (PathBytes::isHidden(step.path))
                    continue;
                step.fileTable = true;
                step.action = TargetStep::Record;
                planFile(planner, step, info, flavor == Flavor::FolderScan);
            } else if (info.kind == FileSystem::Kind::Directory) {
                step.fingerprint = measuredUnitFingerprint(
                    step.path, FileSystem::SizeKey::Allocated, PathBytes::pathExtension(step.path));
                step.action = TargetStep::Record;
                ++totalCount;
            }
        }
        planner.finish(nullptr, m_ignoredTypes);
        pool.waitForAll();
    }
    for (const TargetStep& step : steps) {
        if (step.action == TargetStep::Record)
            record(step.fileTable ? fileTable : unitTable, step.path, step.fingerprint);
    }
}

void ScanEngine::scannigWithCheckingSubDirectory(const QList<QByteArray>& targets) {
    Log::line(QStringLiteral("scannigWithCheckingSubDirectory"));
    QElapsedTimer timer;
    timer.start();
    walkRecursive(targets, Flavor::FolderScan);
    Log::line(QStringLiteral("scannig time ") + seconds(timer));
    identifyDuplicates();
}

void ScanEngine::scannigWithoutCheckingSubDirectory(const QList<QByteArray>& targets) {
    walkFlat(targets, Flavor::FolderScan);
    identifyDuplicates();
}

void ScanEngine::performScanningSelector(const QList<QByteArray>& targets) {
    QElapsedTimer timer;
    timer.start();
    walkRecursive(targets, Flavor::ListScan);
    Log::line(QStringLiteral("scannig time ") + seconds(timer));
    scanAddedFolder();
}

void ScanEngine::performScanning(const QList<QByteArray>& targets) {
    walkFlat(targets, Flavor::ListScan);
    // The hand-off may run after this engine is gone (the flat thread ends at once), so it brings
    // its own engine over the same state.
    m_observer.runScanAddedFolderLater(
        [&state = m_state, &observer = m_observer] { ScanEngine(state, observer).scanAddedFolder(); });
}

void ScanEngine::performScanningSelectorForPhoto(const QList<QByteArray>& targets) {
    m_state.scanRoots = targets;
    rebuildIgnoreSets();
    QElapsedTimer timer;
    timer.start();
    const qint64 nub = m_state.settings.nub;
    std::atomic<qint64>& totalCount = m_state.totalCount;

    auto admitted = [&](const QByteArray& path) {
        const FileType::Class kind = FileType::classOfPath(path);
        return FileType::isImage(kind) || FileType::isAudioVisual(kind);
    };

    std::deque<TargetStep> steps; // addresses stay put while the pool writes into them
    {
        const std::unique_ptr<DigestCache> cache = openCache();
        HashPool pool(totalCount, poolOptions(targets, cache.get()));
        ContentPlanner planner(pool, totalCount, m_readEverything);
        auto take = [&](const QByteArray& path, const FileSystem::ItemInfo& info) {
            steps.push_back(TargetStep { path, TargetStep::Record, false, -1, Fingerprint() });
            planFile(planner, steps.back(), info, true);
        };
        for (const QByteArray& target : walkedTargets(targets)) {
            FileSystem::ItemInfo info;
            if (!FileSystem::stat(target, info)) {
                Log::line(QStringLiteral("no such item %1").arg(PathBytes::display(target)));
                continue;
            }
            if (info.kind == FileSystem::Kind::Directory) {
                FileSystem::enumerateTree(target, [&](const QByteArray& path, const FileSystem::ItemInfo& item) {
                    // Links are neither files nor folders, and pipes or devices are never opened.
                    if (item.kind != FileSystem::Kind::Regular && item.kind != FileSystem::Kind::Directory)
                        return;
                    if (isIgnoredType(path) || !admitted(path))
                        return;
                    const qint64 size = item.kind == FileSystem::Kind::Directory
                        ? FileSystem::sumUnit(path, FileSystem::SizeKey::Allocated).bytes
                        : item.allocated;
                    if (size < nub)
                        return;
                    take(path, item);
                });
            } else if (info.kind == FileSystem::Kind::Regular) {
                if (PathBytes::isHidden(target) || isIgnoredType(target) || info.allocated < nub)
                    continue;
                take(target, info);
            }
        }
        planner.finish(nullptr, m_ignoredTypes);
        pool.waitForAll();
    }
    for (const TargetStep& step : steps)
        record(m_state.AllFileFolderDic, step.path, step.fingerprint);
    Log::line(QStringLiteral("scannig time ") + seconds(timer));
    scanAddedFolder();
}

namespace {

void removeBelow(FingerprintTable& table, const QList<QByteArray>& folders) {
    std::vector<FingerprintTable::Entry> entries = table.takeDistinct();
    for (FingerprintTable::Entry& entry : entries) {
        const bool below = std::any_of(folders.cbegin(), folders.cend(),
            [&](const QByteArray& folder) { return prunedBelow(folder, entry.path); });
        if (!below)
            table.insert(entry.path, entry.fingerprint);
    }
}

} // namespace

void ScanEngine::removeSubFromList(const QList<QByteArray>& folders) {
    removeBelow(m_state.hashDic, folders);
}

void ScanEngine::removeSub(const QList<QByteArray>& folders) {
    removeBelow(m_state.AllFileFolderDic, folders);
}

void ScanEngine::identifyDuplicates() {
    QElapsedTimer timer;
    timer.start();
    m_observer.detectionWillStart();

    DepthOrderedKeys keys = DepthOrderedKeys::fromTable(m_state.hashDic);
    m_state.totalDuplicateCountFiles = keys.count();
    // The look at a group's first path that gives its size serves its member record as well.
    QByteArray measured;
    FileSystem::ItemInfo measuredInfo;
    GroupingCallbacks callbacks;
    callbacks.sizeOf = [&](const QByteArray& path) {
        measured = path;
        if (!FileSystem::stat(path, measuredInfo))
            return qint64(0);
        if (measuredInfo.kind == FileSystem::Kind::Directory)
            return FileSystem::sumUnit(path, FileSystem::SizeKey::Allocated).bytes;
        return measuredInfo.allocated;
    };
    callbacks.keyExamined = [this] { m_state.totalDuplicateCountTemp.fetch_add(1, std::memory_order_relaxed); };
    callbacks.groupFound = [&](const QList<QByteArray>& paths, qint64 size) {
        const auto count = static_cast<quint64>(paths.size());
        m_state.totalDuplicateCount += count;
        m_state.wastedSpaceDuplicates += static_cast<quint64>(size) * count;
        const bool known = !paths.isEmpty() && paths.first() == measured;
        m_state.duplicateMainArray.append(duplicates::initWithURL(paths, size, known ? &measuredInfo : nullptr));
    };
    groupByFingerprint(std::move(keys), m_state.settings.nub, callbacks);

    m_observer.detectionDidFinish();
    m_state.totalDuplicateCountFiles = 0;
    m_state.filterButtonNameList = { 10, 20, 30, 40, 50, 60, 70 };
    Log::line(QStringLiteral("duplicate time ") + seconds(timer));
    m_observer.afterScanningDone();
}

void ScanEngine::scanAddedFolder() {
    m_observer.setFlo(1);
    m_state.AllFileFileDic.clear(); // file fingerprints of this path are not grouped
    DepthOrderedKeys keys = DepthOrderedKeys::fromTable(m_state.AllFileFolderDic);
    m_state.totalDuplicateCountFiles = keys.count();
    m_observer.setFlo(0);
    checkDuplicates(std::move(keys));
    m_state.AllFileFolderDic.clear();
    m_observer.listGroupingDidFinish();

    QStringList types { QStringLiteral("All") };
    for (const GroupDictionary& group : m_state.DuplicateFileFolderArray) {
        if (types.size() > 6)
            break;
        const QString type = group.original.type.value_or(QString());
        if (!types.contains(type))
            types.append(type);
    }
    m_state.filterSegmentItem = types;
    m_observer.afterScan();
}

void ScanEngine::checkDuplicates(DepthOrderedKeys keys) {
    QElapsedTimer timer;
    timer.start();
    GroupingCallbacks callbacks;
    callbacks.sizeOf = &ScanEngine::fileSizeOf;
    callbacks.keyExamined = [this] { m_state.totalDuplicateCountFolderTemp.fetch_add(1, std::memory_order_relaxed); };
    callbacks.groupFound = [this](const QList<QByteArray>& paths, qint64 size) {
        m_state.totalDuplicateCountFolder += paths.size();
        m_state.DuplicateWastedSpace += size * paths.size();
        makeDupliucateList(paths, size);
    };
    groupByFingerprint(std::move(keys), m_state.settings.nub, callbacks);
    Log::line(QStringLiteral("duplicate time ") + seconds(timer));
}

void ScanEngine::makeDupliucateList(const QList<QByteArray>& paths, qint64 size) {
    const qint64 now = currentTimeNs();
    QList<FileDictionary> members;
    members.reserve(paths.size());
    for (const QByteArray& path : paths) {
        FileSystem::ItemInfo info;
        FileDictionary member;
        member.url = path;
        member.dateNs = FileSystem::stat(path, info) ? info.creationNs() : now;
        member.FileSize = size;
        member.type = typeTextOfItem(path);
        members.append(member);
    }
    std::stable_sort(members.begin(), members.end(),
        [](const FileDictionary& a, const FileDictionary& b) { return a.dateNs < b.dateNs; });
    GroupDictionary group;
    group.SameFileList = members;
    group.original = members.first();
    m_state.DuplicateFileFolderArray.append(group);
}
