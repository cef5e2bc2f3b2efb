#include "engine/ContentPlanner.h"

#include "base/PathBytes.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace {

quint64 mix(quint64 seed, quint64 value) {
    // splitmix64 over the running value: cheap and well spread.
    quint64 z = seed + 0x9E3779B97F4A7C15ull + value;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

// Files at least this long that tie on their first block are compared by their last before a whole
// read.
constexpr qint64 kLastBlockMinimum = 64 * 1024;

// Jobs the walk may queue ahead of the readers.
constexpr size_t kWalkQueueLimit = 16384;
// Jobs handed to the pool at once (and at the end of each folder), so that it is woken seldom.
constexpr size_t kBatch = 256;

enum Tag : quint64 { FileTag = 1, UnreadableTag = 2, UnitTag = 3, FolderTag = 4, EmptyTag = 5 };

} // namespace

DigestCache::Key cacheKeyOf(const FileSystem::ItemInfo& info) {
    DigestCache::Key key;
    key.size = info.size;
    if (info.kind == FileSystem::Kind::Regular) {
        key.device = static_cast<quint64>(info.device);
        key.inode = static_cast<quint64>(info.inode);
        key.modifiedNs = info.modifiedNs;
        key.changedNs = info.changedNs;
    }
    return key;
}

ContentPlanner::ContentPlanner(HashPool& pool, std::atomic<qint64>& totalCount, bool readEverything)
    : m_pool(pool)
    , m_totalCount(totalCount)
    , m_readEverything(readEverything) { }

HashPool::Job ContentPlanner::jobFor(const File& file, const FolderTree* tree, HashPool::Part part) const {
    HashPool::Job job;
    if (file.node < 0) {
        job.path = file.path;
    } else {
        // Named by its folder and place: the path is put together only if the file is opened.
        job.folder = &tree->nodes[static_cast<size_t>(file.node)];
        job.child = file.child;
    }
    job.key = file.key;
    job.part = part;
    return job;
}

void ContentPlanner::queue(HashPool::Job&& job) {
    m_batch.push_back(std::move(job));
    if (m_batch.size() >= kBatch)
        flush();
}

void ContentPlanner::flush() {
    if (m_batch.empty())
        return;
    m_pool.submit(std::move(m_batch));
    m_batch.clear();
    m_pool.waitForRoom(kWalkQueueLimit);
}

void ContentPlanner::drain() {
    flush();
    m_pool.waitForAll();
}

bool ContentPlanner::isNeeded(const File& file, const FolderTree* tree) {
    return file.node >= 0 && tree->nodes[static_cast<size_t>(file.node)].needsFingerprint;
}

void ContentPlanner::submit(const File& file, const FolderTree* tree, quint64 order, HashPool::Part part) {
    // Every file of one block or less takes the fast digest, whether or not a folder takes it in:
    // the choice depends on the length alone, so equal files, and so equal folders, still get equal
    // fingerprints. A full read keeps MD5 throughout.
    if (!m_readEverything && file.size() <= HashPool::kBlock)
        part = HashPool::Part::WholeFast;
    HashPool::Job job = jobFor(file, tree, part);
    job.slot = file.slot;
    job.order = order;
    queue(std::move(job));
}

// A file that shares its length with another candidate: a short one is read whole at once, a
// longer one first has its first block looked at.
void ContentPlanner::start(File file, const FolderTree* tree) {
    if (file.size() <= HashPool::kBlock) {
        submit(file, tree);
        return;
    }
    Probe& probe = m_probes.emplace_back(Probe { std::move(file), {} });
    HashPool::Job job = jobFor(probe.file, tree, HashPool::Part::FirstBlock);
    job.probe = &probe.blocks;
    queue(std::move(job));
}

void ContentPlanner::settleUnread(const File& file, const FolderTree* tree) {
    if (isNeeded(file, tree)) {
        submit(file, tree);
    } else {
        *file.slot = Fingerprint::unread();
        m_totalCount.fetch_add(1, std::memory_order_relaxed);
    }
}

void ContentPlanner::addFile(File file, bool published, const FolderTree* tree) {
    if (m_readEverything) {
        submit(file, tree);
        return;
    }
    if (!published) {
        m_waiting.push_back(std::move(file));
        return;
    }
    SizeBucket& bucket = m_bySize[file.size()];
    ++bucket.published;
    if (bucket.published == 1) {
        bucket.first = std::move(file);
        return;
    }
    if (bucket.first) {
        start(std::move(*bucket.first), tree);
        bucket.first.reset();
    }
    start(std::move(file), tree);
}

void ContentPlanner::markNeededFolders(
    FolderTree& tree, const IgnoredTypes& ignoredTypes, const QHash<const Fingerprint*, quint64>* blocks) {
    const size_t n = tree.nodes.size();
    std::vector<quint64> shape(n, 0);
    std::vector<bool> unique(n, false);
    std::vector<quint64> parts;
    // Children come after their parent, so going backwards meets every folder after its children.
    for (size_t i = n; i-- > 0;) {
        const FolderTreeNode& folder = tree.nodes[i];
        parts.clear();
        bool isUnique = !folder.listedInFull; // its fingerprint is a fresh time-stamp
        for (const FolderChild& child : folder.children) {
            if (child.excluded) {
                isUnique = true; // a fresh time-stamp is part of this folder's fingerprint
                break;
            }
            switch (child.marker) {
            case ChildMarker::F: {
                quint64 part = mix(FileTag, static_cast<quint64>(child.size));
                if (blocks) {
                    const auto block = blocks->constFind(&child.fingerprint);
                    if (block != blocks->cend())
                        part = mix(part, *block);
                }
                parts.push_back(part);
                break;
            }
            case ChildMarker::FD: {
                quint64 word;
                std::memcpy(&word, child.fingerprint.digest().data(), sizeof word);
                parts.push_back(mix(UnitTag, word));
                break;
            }
            case ChildMarker::D:
                if (unique[static_cast<size_t>(child.node)])
                    isUnique = true;
                else
                    parts.push_back(mix(FolderTag, shape[static_cast<size_t>(child.node)]));
                break;
            }
            if (isUnique)
                break;
        }
        unique[i] = isUnique;
        if (isUnique)
            continue;
        std::sort(parts.begin(), parts.end());
        quint64 value = mix(EmptyTag, parts.size());
        for (quint64 part : parts)
            value = mix(value, part);
        shape[i] = value;
    }

    // A folder is published unless its own extension is an ignored type; targets always are.
    auto published = [&](size_t i) {
        const FolderTreeNode& folder = tree.nodes[i];
        return folder.parent < 0 || !ignoredTypes.matches(folder.path);
    };
    QHash<quint64, int> folders;
    for (size_t i = 0; i < n; ++i) {
        if (!unique[i] && published(i))
            ++folders[shape[i]];
    }
    for (size_t i = 0; i < n; ++i) {
        FolderTreeNode& folder = tree.nodes[i];
        const bool shared = !unique[i] && published(i) && folders.value(shape[i]) > 1;
        const bool insideNeeded = folder.parent >= 0 && tree.nodes[static_cast<size_t>(folder.parent)].needsFingerprint;
        folder.needsFingerprint = shared || insideNeeded;
    }
}

void ContentPlanner::splitProbes(const FolderTree* tree) {
    // Reads a probe's file whole when its folder needs it, in disk order like the files that tie.
    auto alone = [&](const Probe& probe) {
        const bool needed = probe.file.node >= 0 && tree->nodes[static_cast<size_t>(probe.file.node)].needsFingerprint;
        if (needed) {
            submit(probe.file, tree, probe.blocks.location);
        } else {
            *probe.file.slot = Fingerprint::unread();
            m_totalCount.fetch_add(1, std::memory_order_relaxed);
        }
    };
    // Files that could not be looked at are "NOHash", as reading them whole would make them; the
    // others are sorted by the given key, and those alone in their run are settled.
    auto split = [&](std::vector<Probe*>& probes, auto key) {
        std::vector<Probe*> tied;
        std::erase_if(probes, [&](Probe* probe) {
            if (!probe->blocks.failed)
                return false;
            *probe->file.slot = probe->blocks.failure;
            m_totalCount.fetch_add(1, std::memory_order_relaxed);
            return true;
        });
        std::sort(probes.begin(), probes.end(), [&](const Probe* a, const Probe* b) { return key(a) < key(b); });
        for (size_t i = 0, j; i < probes.size(); i = j) {
            for (j = i + 1; j < probes.size() && key(probes[j]) == key(probes[i]);)
                ++j;
            if (j - i == 1)
                alone(*probes[i]);
            else
                tied.insert(tied.end(), probes.begin() + static_cast<std::ptrdiff_t>(i),
                    probes.begin() + static_cast<std::ptrdiff_t>(j));
        }
        probes = std::move(tied);
    };

    std::vector<Probe*> probes;
    probes.reserve(m_probes.size());
    for (Probe& probe : m_probes)
        probes.push_back(&probe);
    split(probes, [](const Probe* p) { return std::pair(p->file.size(), p->blocks.first); });

    // Large files that tie on their first block (a shared header, say) often differ at the end.
    std::vector<Probe*> whole;
    std::vector<Probe*> lastStage;
    for (Probe* probe : probes)
        (probe->file.size() >= kLastBlockMinimum ? lastStage : whole).push_back(probe);
    for (Probe* probe : lastStage) {
        HashPool::Job job = jobFor(probe->file, tree, HashPool::Part::LastBlock);
        job.probe = &probe->blocks;
        job.order = probe->blocks.location;
        queue(std::move(job));
    }
    drain();
    split(lastStage, [](const Probe* p) { return std::tuple(p->file.size(), p->blocks.first, p->blocks.last); });
    whole.insert(whole.end(), lastStage.begin(), lastStage.end());

    // Files that still tie are read whole. Where no folder takes in any of their digests, the
    // digest only decides which of them match, and the faster one does.
    auto key = [](const Probe* p) { return std::tuple(p->file.size(), p->blocks.first, p->blocks.last); };
    std::sort(whole.begin(), whole.end(), [&](const Probe* a, const Probe* b) { return key(a) < key(b); });
    std::vector<std::pair<const Probe*, HashPool::Part>> reads;
    reads.reserve(whole.size());
    for (size_t i = 0, j; i < whole.size(); i = j) {
        bool needed = false;
        for (j = i; j < whole.size() && key(whole[j]) == key(whole[i]); ++j)
            needed = needed || isNeeded(whole[j]->file, tree);
        for (size_t k = i; k < j; ++k)
            reads.emplace_back(whole[k], needed ? HashPool::Part::Whole : HashPool::Part::WholeFast);
    }
    std::sort(reads.begin(), reads.end(),
        [](const auto& a, const auto& b) { return a.first->blocks.location < b.first->blocks.location; });
    for (const auto& [probe, part] : reads)
        submit(probe->file, tree, probe->blocks.location, part);
    std::deque<Probe>().swap(m_probes);
}

void ContentPlanner::finish(FolderTree* tree, const IgnoredTypes& ignoredTypes) {
    flush();
    if (m_readEverything)
        return;
    for (auto it = m_bySize.begin(); it != m_bySize.end(); ++it) {
        if (it->first)
            m_waiting.push_back(std::move(*it->first));
    }
    m_bySize.clear();
    std::deque<Probe> folderProbes; // files that are no candidates, looked at for their folders
    if (tree) {
        markNeededFolders(*tree, ignoredTypes, nullptr);
        // Folders that share a shape are told apart by their files' first blocks as well, so every
        // longer file in them has its first block looked at; equal folders have equal blocks.
        std::erase_if(m_waiting, [&](const File& file) {
            if (!isNeeded(file, tree) || file.size() <= HashPool::kBlock)
                return false;
            Probe& probe = folderProbes.emplace_back(Probe { file, {} });
            HashPool::Job job = jobFor(file, tree, HashPool::Part::FirstBlock);
            job.probe = &probe.blocks;
            queue(std::move(job));
            return true;
        });
        drain();
        QHash<const Fingerprint*, quint64> blocks;
        blocks.reserve(static_cast<qsizetype>(m_probes.size() + folderProbes.size()));
        for (const std::deque<Probe>* probes : { &m_probes, &folderProbes }) {
            for (const Probe& probe : *probes) {
                if (isNeeded(probe.file, tree))
                    blocks.insert(probe.file.slot, probe.blocks.failed ? mix(UnreadableTag, 1) : probe.blocks.first);
            }
        }
        markNeededFolders(*tree, ignoredTypes, &blocks);
    }
    for (const File& file : m_waiting)
        settleUnread(file, tree);
    std::vector<File>().swap(m_waiting);
    for (const Probe& probe : folderProbes) {
        if (isNeeded(probe.file, tree)) {
            submit(probe.file, tree, probe.blocks.location);
        } else {
            *probe.file.slot = Fingerprint::unread();
            m_totalCount.fetch_add(1, std::memory_order_relaxed);
        }
    }
    drain(); // every candidate's first block is known
    splitProbes(tree);
    flush();
}
