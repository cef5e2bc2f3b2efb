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

enum Tag : quint64 { FileTag = 1, UnreadableTag = 2, UnitTag = 3, FolderTag = 4, EmptyTag = 5 };

} // namespace

ContentPlanner::ContentPlanner(HashPool& pool, std::atomic<qint64>& totalCount, bool readEverything)
    : m_pool(pool)
    , m_totalCount(totalCount)
    , m_readEverything(readEverything) { }

QByteArray ContentPlanner::pathOf(const File& file, const FolderTree* tree) const {
    if (file.node < 0)
        return file.path;
    const FolderTreeNode& folder = tree->nodes[static_cast<size_t>(file.node)];
    return PathBytes::appendingComponent(folder.path, folder.children[static_cast<size_t>(file.child)].name);
}

void ContentPlanner::submit(const File& file, const FolderTree* tree, quint64 order) {
    HashPool::Job job;
    job.path = pathOf(file, tree);
    job.slot = file.slot;
    job.size = file.size;
    job.order = order;
    m_pool.submit(std::move(job));
}

// A file that shares its length with another candidate: a short one is read whole at once, a
// longer one first has its first block looked at.
void ContentPlanner::start(File file, const FolderTree* tree) {
    if (file.size <= HashPool::kBlock) {
        submit(file, tree);
        return;
    }
    Probe& probe = m_probes.emplace_back(Probe { std::move(file), {} });
    HashPool::Job job;
    job.path = pathOf(probe.file, tree);
    job.probe = &probe.blocks;
    job.size = probe.file.size;
    job.part = HashPool::Part::FirstBlock;
    m_pool.submit(std::move(job));
}

void ContentPlanner::settleUnread(const File& file, const FolderTree* tree) {
    const bool needed = file.node >= 0 && tree->nodes[static_cast<size_t>(file.node)].needsFingerprint;
    if (needed) {
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
    SizeBucket& bucket = m_bySize[file.size];
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

void ContentPlanner::markNeededFolders(FolderTree& tree, const QSet<QString>& ignoredTypes) {
    const size_t n = tree.nodes.size();
    std::vector<quint64> shape(n, 0);
    std::vector<bool> unique(n, false);
    std::vector<quint64> parts;
    // Children come after their parent, so going backwards meets every folder after its children.
    for (size_t i = n; i-- > 0;) {
        const FolderTreeNode& folder = tree.nodes[i];
        parts.clear();
        bool isUnique = false;
        for (const FolderChild& child : folder.children) {
            if (child.excluded) {
                isUnique = true; // a fresh time-stamp is part of this folder's fingerprint
                break;
            }
            switch (child.marker) {
            case ChildMarker::F:
                parts.push_back(
                    child.unreadable ? mix(UnreadableTag, 0) : mix(FileTag, static_cast<quint64>(child.size)));
                break;
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
        return folder.parent < 0 || !ignoredTypes.contains(PathBytes::lowerExtension(folder.path));
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
            *probe->file.slot = Fingerprint::noHash();
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
    split(probes, [](const Probe* p) { return std::pair(p->file.size, p->blocks.first); });

    // Large files that tie on their first block (a shared header, say) often differ at the end.
    std::vector<Probe*> whole;
    std::vector<Probe*> lastStage;
    for (Probe* probe : probes)
        (probe->file.size >= kLastBlockMinimum ? lastStage : whole).push_back(probe);
    for (Probe* probe : lastStage) {
        HashPool::Job job;
        job.path = pathOf(probe->file, tree);
        job.probe = &probe->blocks;
        job.size = probe->file.size;
        job.order = probe->blocks.location;
        job.part = HashPool::Part::LastBlock;
        m_pool.submit(std::move(job));
    }
    m_pool.waitForAll();
    split(lastStage, [](const Probe* p) { return std::tuple(p->file.size, p->blocks.first, p->blocks.last); });
    whole.insert(whole.end(), lastStage.begin(), lastStage.end());

    for (const Probe* probe : whole)
        submit(probe->file, tree, probe->blocks.location);
    std::deque<Probe>().swap(m_probes);
}

void ContentPlanner::finish(FolderTree* tree, const QSet<QString>& ignoredTypes) {
    if (m_readEverything)
        return;
    for (auto it = m_bySize.begin(); it != m_bySize.end(); ++it) {
        if (it->first)
            m_waiting.push_back(std::move(*it->first));
    }
    m_bySize.clear();
    if (tree)
        markNeededFolders(*tree, ignoredTypes);
    for (const File& file : m_waiting)
        settleUnread(file, tree);
    std::vector<File>().swap(m_waiting);
    m_pool.waitForAll(); // every first block is known
    splitProbes(tree);
}
