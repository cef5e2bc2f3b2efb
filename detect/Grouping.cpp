#include "detect/Grouping.h"

#include "base/PathBytes.h"

#include <algorithm>
#include <numeric>

DepthOrderedKeys DepthOrderedKeys::fromTable(FingerprintTable& table) {
    DepthOrderedKeys keys;
    keys.entries = table.takeDistinct();
    std::vector<int> depth(keys.entries.size());
    for (size_t i = 0; i < keys.entries.size(); ++i)
        depth[i] = PathBytes::depth(keys.entries[i].path);
    std::vector<uint32_t> order(keys.entries.size());
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) { return depth[a] < depth[b]; });
    std::vector<FingerprintTable::Entry> sorted;
    sorted.reserve(order.size());
    for (uint32_t i : order)
        sorted.push_back(std::move(keys.entries[i]));
    keys.entries.swap(sorted);
    return keys;
}

namespace {

// True when some folder strictly between `top` and `path` is a bundle: the pruning walk does not
// descend into bundles, so what lies inside one stays.
bool insideBundleBelow(const QByteArray& top, const QByteArray& path) {
    qsizetype start = top == "/" ? 1 : top.size() + 1;
    for (;;) {
        const qsizetype slash = path.indexOf('/', start);
        if (slash < 0)
            return false;
        const QByteArray component = path.mid(start, slash - start);
        if (PathBytes::isPackageExtension(PathBytes::pathExtension(component)))
            return true;
        start = slash + 1;
    }
}

} // namespace

bool prunedBelow(const QByteArray& folder, const QByteArray& path) {
    return PathBytes::isDescendant(path, folder) && !insideBundleBelow(folder, path);
}

void groupByFingerprint(DepthOrderedKeys keys, qint64 minimumSize, const GroupingCallbacks& callbacks) {
    std::vector<FingerprintTable::Entry>& entries = keys.entries;
    const uint32_t n = static_cast<uint32_t>(entries.size());
    std::vector<bool> removed(n, false);

    // Inverted index: positions grouped by fingerprint, each run in visiting order.
    std::vector<uint32_t> byFingerprint(n);
    std::iota(byFingerprint.begin(), byFingerprint.end(), 0u);
    std::sort(byFingerprint.begin(), byFingerprint.end(), [&](uint32_t a, uint32_t b) {
        if (entries[a].fingerprint == entries[b].fingerprint)
            return a < b;
        return entries[a].fingerprint < entries[b].fingerprint;
    });
    std::vector<uint32_t> slotOf(n);
    for (uint32_t i = 0; i < n; ++i)
        slotOf[byFingerprint[i]] = i;

    // Paths in byte order, to find everything below a folder as one contiguous range.
    std::vector<uint32_t> byPath(n);
    std::iota(byPath.begin(), byPath.end(), 0u);
    std::sort(byPath.begin(), byPath.end(), [&](uint32_t a, uint32_t b) { return entries[a].path < entries[b].path; });

    auto pruneBelow = [&](const QByteArray& top) {
        const QByteArray prefix = top == "/" ? top : top + '/';
        auto it = std::lower_bound(byPath.begin(), byPath.end(), prefix,
            [&](uint32_t index, const QByteArray& value) { return entries[index].path < value; });
        for (; it != byPath.end() && entries[*it].path.startsWith(prefix); ++it) {
            if (!removed[*it] && !insideBundleBelow(top, entries[*it].path))
                removed[*it] = true;
        }
    };

    for (uint32_t k = 0; k < n; ++k) {
        if (removed[k]) {
            callbacks.keyExamined();
            continue;
        }
        // Every key visited earlier has been removed, so the live members of this fingerprint's run
        // start at this key's own slot.
        QList<QByteArray> paths;
        std::vector<uint32_t> members;
        for (uint32_t slot = slotOf[k]; slot < n && entries[byFingerprint[slot]].fingerprint == entries[k].fingerprint;
             ++slot) {
            const uint32_t member = byFingerprint[slot];
            if (!removed[member]) {
                members.push_back(member);
                paths.append(entries[member].path);
            }
        }
        // Unreadable items are alike only in that nobody read them: they never form a group.
        if (members.size() < 2 || !entries[k].fingerprint.canMatch()) {
            removed[k] = true;
            callbacks.keyExamined();
            continue;
        }
        const qint64 size = callbacks.sizeOf(paths.first());
        for (const QByteArray& path : paths)
            pruneBelow(path);
        for (uint32_t member : members)
            removed[member] = true;
        if (minimumSize <= size)
            callbacks.groupFound(paths, size);
        callbacks.keyExamined();
    }
}
