#include "engine/TreeWalker.h"

#include "base/Log.h"
#include "base/PathBytes.h"
#include "base/ScanSettings.h"
#include "detect/FileHash.h"
#include "engine/ContentPlanner.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

// Kernel and process information presented as files; reading them is meaningless and can block.
bool isVirtualFileSystem(const QByteArray& path) {
    struct statfs info;
    FileSystem::Fd fd(FileSystem::openPath(path, O_RDONLY | O_DIRECTORY));
    if (!fd.isValid() || ::fstatfs(fd.get(), &info) != 0)
        return false;
    switch (static_cast<unsigned long>(info.f_type)) {
    case PROC_SUPER_MAGIC:
    case SYSFS_MAGIC:
    case DEBUGFS_MAGIC:
    case TRACEFS_MAGIC:
    case SECURITYFS_MAGIC:
    case CGROUP_SUPER_MAGIC:
    case CGROUP2_SUPER_MAGIC:
    case DEVPTS_SUPER_MAGIC:
    case PSTOREFS_MAGIC:
    case BPF_FS_MAGIC:
    case 0x62656570: // configfs
    case 0x65735543: // fusectl
        return true;
    default:
        return false;
    }
}

} // namespace

FolderListing FolderListing::of(const QByteArray& path) {
    FolderListing listing;
    const int fd = FileSystem::openPath(path, O_RDONLY | O_DIRECTORY);
    DIR* dir = fd >= 0 ? ::fdopendir(fd) : nullptr;
    if (!dir) {
        if (fd >= 0)
            ::close(fd);
        return listing;
    }
    listing.opened = true;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(dir);
        if (!entry) {
            listing.complete = listing.complete && errno == 0;
            break;
        }
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        FileSystem::ItemInfo info;
        if (FileSystem::statAt(::dirfd(dir), name, info))
            listing.entries.emplace_back(QByteArray(name), info);
        else if (errno != ENOENT)
            listing.complete = false; // there, but not to be looked at (a folder without search right)
    }
    ::closedir(dir);
    std::sort(
        listing.entries.begin(), listing.entries.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return listing;
}

FolderLister::FolderLister(int threads) {
    for (int i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { work(); });
}

FolderLister::~FolderLister() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_hasWork.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void FolderLister::expect(const std::vector<std::pair<qint32, QByteArray>>& folders) {
    if (m_threads.empty() || folders.empty())
        return;
    {
        std::lock_guard lock(m_mutex);
        for (const auto& [node, path] : folders) {
            m_waiting.push_back(node);
            m_slots.emplace(node, Slot { path, Slot::Waiting, {} });
        }
    }
    m_hasWork.notify_all();
}

FolderListing FolderLister::take(qint32 node, const QByteArray& path) {
    {
        std::unique_lock lock(m_mutex);
        const auto slot = m_slots.find(node);
        if (slot != m_slots.end()) {
            if (slot->second.state == Slot::Waiting) {
                // Nobody has started on it: listed here, as the walk needs it now.
                m_waiting.erase(std::find(m_waiting.rbegin(), m_waiting.rend(), node).base() - 1);
                m_slots.erase(slot);
            } else {
                // Nothing is added to the map while the walk waits here, so the entry stays put.
                Slot& listed = slot->second;
                m_done.wait(lock, [&] { return listed.state == Slot::Listed; });
                FolderListing listing = std::move(listed.listing);
                m_slots.erase(node);
                m_ready -= listing.entries.size();
                lock.unlock();
                m_hasWork.notify_one();
                return listing;
            }
        }
    }
    return FolderListing::of(path);
}

void FolderLister::work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_hasWork.wait(lock, [this] { return m_stopping || (!m_waiting.empty() && m_ready < kAhead); });
        if (m_stopping)
            return;
        const qint32 node = m_waiting.back();
        m_waiting.pop_back();
        Slot& slot = m_slots.at(node);
        slot.state = Slot::Listing;
        const QByteArray path = slot.path;
        lock.unlock();
        FolderListing listing = FolderListing::of(path);
        lock.lock();
        // The slot's address is stable: the walk erases it only once it is listed.
        Slot& listed = m_slots.at(node);
        m_ready += listing.entries.size();
        listed.listing = std::move(listing);
        listed.state = Slot::Listed;
        m_done.notify_all();
    }
}

Fingerprint unitFingerprint(qint64 totalSize, const QByteArray& extension) {
    return Fingerprint::fromDigest(md5Digest(QByteArray::number(totalSize) + extension));
}

Fingerprint measuredUnitFingerprint(
    const QByteArray& path, FileSystem::SizeKey key, const QByteArray& extension, qint64* items) {
    const FileSystem::UnitSum sum = FileSystem::sumUnit(path, key);
    if (items)
        *items = sum.items;
    if (!sum.complete) {
        Log::line(QStringLiteral("folder could not be listed in full, compared with nothing: %1")
                      .arg(PathBytes::display(path)));
        return createRandomBytes();
    }
    return unitFingerprint(sum.bytes, extension);
}

TreeWalker::TreeWalker(
    const WalkRules& rules, FolderTree& tree, ContentPlanner& planner, std::atomic<qint64>& totalCount)
    : m_rules(rules)
    , m_tree(tree)
    , m_planner(planner)
    , m_totalCount(totalCount)
    // The walk's own thread lists too when a lister has not started on the folder it needs.
    , m_lister(static_cast<int>(std::max(1u, std::thread::hardware_concurrency())) - 1) { }

qint32 TreeWalker::addNode(const QByteArray& path, qint32 parent, const FileSystem::ItemInfo& info, bool enter) {
    const auto index = static_cast<qint32>(m_tree.nodes.size());
    m_tree.nodes.push_back(FolderTreeNode { path, {}, parent, true, true });
    const int depth = parent < 0 ? 0 : m_origins[static_cast<size_t>(parent)].depth + 1;
    m_origins.push_back({ info.device, depth, enter });
    if (enter)
        m_entered.insert({ static_cast<quint64>(info.device), static_cast<quint64>(info.inode) });
    return index;
}

void TreeWalker::markIncomplete(qint32 index, const QString& reason) {
    FolderTreeNode& folder = m_tree.nodes[static_cast<size_t>(index)];
    folder.listedInFull = false;
    Log::line(QStringLiteral("%1, compared with nothing: %2").arg(reason, PathBytes::display(folder.path)));
}

qint32 TreeWalker::walkFolder(const QByteArray& path) {
    FileSystem::ItemInfo info;
    FileSystem::stat(path, info);
    if (m_entered.contains({ static_cast<quint64>(info.device), static_cast<quint64>(info.inode) })) {
        Log::line(QStringLiteral("already scanned through another path: %1").arg(PathBytes::display(path)));
        return -1;
    }
    const qint32 root = addNode(path, -1, info, !isVirtualFileSystem(path));
    std::vector<qint32> pending { root };
    while (!pending.empty()) {
        const qint32 index = pending.back();
        pending.pop_back();
        listFolder(index, pending);
    }
    m_totalCount.fetch_add(1, std::memory_order_relaxed); // the root records itself
    return root;
}

void TreeWalker::listFolder(qint32 index, std::vector<qint32>& pending) {
    const Origin origin = m_origins[static_cast<size_t>(index)];
    if (!origin.enter) {
        markIncomplete(index,
            origin.depth > kMaxDepth
                ? QStringLiteral("deeper than %1 folders below its target, not walked").arg(kMaxDepth)
                : QStringLiteral("kernel file system, not walked"));
        return;
    }
    FolderTreeNode& folder = m_tree.nodes[static_cast<size_t>(index)];

    FolderListing listing = m_lister.take(index, folder.path);
    if (!listing.opened) {
        markIncomplete(index, QStringLiteral("folder could not be listed"));
        return;
    }
    if (!listing.complete)
        markIncomplete(index, QStringLiteral("folder could not be listed in full"));
    std::vector<std::pair<QByteArray, FileSystem::ItemInfo>>& entries = listing.entries;

    const ScanSettings& settings = m_rules.settings;
    const bool scanBundles = settings.checkPKG == QLatin1String("y");
    std::vector<FolderChild> children;
    children.reserve(entries.size());
    std::vector<DigestCache::Key> keys; // the files' cache keys, by child index
    keys.reserve(entries.size());
    std::vector<qint32> subfolders;
    for (auto& [name, info] : entries) {
        FolderChild child;
        if (info.kind == FileSystem::Kind::Directory) {
            const QByteArray extension = PathBytes::pathExtension(name);
            const bool opaque
                = PathBytes::isPackageExtension(extension) || PathBytes::isHiddenName(name) || extension == "framework";
            const QByteArray childPath = PathBytes::appendingComponent(folder.path, name);
            const bool entered
                = m_entered.contains({ static_cast<quint64>(info.device), static_cast<quint64>(info.inode) });
            if (m_rules.ignoredFolders.contains(childPath) || entered) {
                // Ignored folders are skipped whatever kind of folder they are; a folder already
                // walked (a bind mount of it, say) is not walked again.
                if (entered)
                    Log::line(
                        QStringLiteral("already scanned through another path: %1").arg(PathBytes::display(childPath)));
                child.marker = ChildMarker::D;
                child.excluded = true;
                m_totalCount.fetch_add(1, std::memory_order_relaxed);
            } else if (opaque) {
                child.marker = ChildMarker::FD;
                if (!scanBundles) {
                    child.fingerprint = Fingerprint::fromDigest(md5Digest(childPath));
                } else if (m_rules.ignoredTypes.matches(name)) {
                    child.excluded = true;
                    m_totalCount.fetch_add(1, std::memory_order_relaxed);
                } else {
                    qint64 items = 0;
                    child.fingerprint
                        = measuredUnitFingerprint(childPath, FileSystem::SizeKey::Logical, extension, &items);
                    m_totalCount.fetch_add(items, std::memory_order_relaxed);
                }
            } else {
                child.marker = ChildMarker::D;
                bool enter = origin.depth + 1 <= kMaxDepth;
                if (enter && info.device != origin.device)
                    enter = !isVirtualFileSystem(childPath);
                child.node = addNode(childPath, index, info, enter);
                subfolders.push_back(child.node);
                m_totalCount.fetch_add(1, std::memory_order_relaxed);
            }
        } else if (info.kind == FileSystem::Kind::Regular) {
            if (PathBytes::isHiddenName(name))
                continue;
            child.marker = ChildMarker::F;
            child.allocated = info.allocated;
            child.size = info.size;
            if (m_rules.ignoredTypes.matches(name)) {
                child.excluded = true;
                m_totalCount.fetch_add(1, std::memory_order_relaxed);
            }
        } else {
            continue; // links, devices, pipes and sockets are not children
        }
        child.name = std::move(name);
        children.push_back(std::move(child));
        keys.push_back(children.back().marker == ChildMarker::F ? cacheKeyOf(info) : DigestCache::Key {});
    }

    // Only now, with the list final, may the planner be given addresses inside it.
    FolderTreeNode& node = m_tree.nodes[static_cast<size_t>(index)];
    node.children = std::move(children);
    const qint64 nub = settings.nub;
    for (size_t i = 0; i < node.children.size(); ++i) {
        FolderChild& child = node.children[i];
        if (child.marker != ChildMarker::F || child.excluded)
            continue;
        // Files under the minimum size are not candidates themselves, only parts of their folder.
        m_planner.addFile(
            { &child.fingerprint, keys[i], index, static_cast<qint32>(i), {} }, child.allocated >= nub, &m_tree);
    }
    m_planner.endFolder();
    // Depth first, in name order, so that hashing follows the folders as they were listed. The
    // listers take them in the same order, ahead of the walk.
    std::vector<std::pair<qint32, QByteArray>> ahead;
    for (auto it = subfolders.rbegin(); it != subfolders.rend(); ++it) {
        pending.push_back(*it);
        if (m_origins[static_cast<size_t>(*it)].enter)
            ahead.emplace_back(*it, m_tree.nodes[static_cast<size_t>(*it)].path);
    }
    m_lister.expect(ahead);
}
