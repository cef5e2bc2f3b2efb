#include "engine/ContentPlanner.h"

#include "base/PathBytes.h"
#include "engine/HashPool.h"

#include <algorithm>
#include <cstring>

namespace {

quint64 mix(quint64 seed, quint64 value) {
    // splitmix64 over the running value: cheap and well spread.
    quint64 z = seed + 0x9E3779B97F4A7C15ull + value;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

enum Tag : quint64 { FileTag = 1, UnitTag = 3, FolderTag = 4, EmptyTag = 5 };

} // namespace

ContentPlanner::ContentPlanner(HashPool& pool, std::atomic<qint64>& totalCount, bool readEverything)
    : m_pool(pool)
    , m_totalCount(totalCount)
    , m_readEverything(readEverything) { }

void ContentPlanner::submit(const File& file, const FolderTree* tree) {
    QByteArray path = file.path;
    if (file.node >= 0) {
        const FolderTreeNode& folder = tree->nodes[static_cast<size_t>(file.node)];
        path = PathBytes::appendingComponent(folder.path, folder.children[static_cast<size_t>(file.child)].name);
    }
    m_pool.submit({ std::move(path), file.slot, file.size });
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
        submit(*bucket.first, tree);
        bucket.first.reset();
    }
    submit(file, tree);
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
        bool isUnique = !folder.listedInFull; // its fingerprint is a fresh time-stamp
        for (const FolderChild& child : folder.children) {
            if (child.excluded) {
                isUnique = true; // a fresh time-stamp is part of this folder's fingerprint
                break;
            }
            switch (child.marker) {
            case ChildMarker::F:
                parts.push_back(mix(FileTag, static_cast<quint64>(child.size)));
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
    for (const File& file : m_waiting) {
        const bool needed = file.node >= 0 && tree->nodes[static_cast<size_t>(file.node)].needsFingerprint;
        if (needed) {
            submit(file, tree);
        } else {
            *file.slot = Fingerprint::unread();
            m_totalCount.fetch_add(1, std::memory_order_relaxed);
        }
    }
    std::vector<File>().swap(m_waiting);
}
