#include "detect/Grouping.h"

#include "base/PathBytes.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <tuple>

DepthOrderedKeys DepthOrderedKeys::fromTable(FingerprintTable& table) {
    DepthOrderedKeys keys;
    std::vector<FingerprintTable::Entry>& entries = keys.entries;
    entries = table.takeDistinct(&keys.byPath);
    const size_t n = entries.size();
    // A stable counting sort by depth: where each entry goes.
    std::vector<uint32_t> target(n);
    std::vector<uint32_t> start;
    for (size_t i = 0; i < n; ++i) {
        const auto depth = static_cast<size_t>(PathBytes::depth(entries[i].path));
        if (depth + 1 >= start.size())
            start.resize(depth + 2, 0);
        ++start[depth + 1];
        target[i] = static_cast<uint32_t>(depth);
    }
    for (size_t d = 1; d < start.size(); ++d)
        start[d] += start[d - 1];
    for (size_t i = 0; i < n; ++i)
        target[i] = start[target[i]]++;
    // Moved in place, one cycle of the permutation at a time, so the table is never held twice.
    for (auto& index : keys.byPath)
        index = target[index];
    for (size_t i = 0; i < n; ++i) {
        while (target[i] != i) {
            const uint32_t j = target[i];
            std::swap(entries[i], entries[j]);
            std::swap(target[i], target[j]);
        }
    }
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

    // Inverted index: positions grouped by fingerprint, each run in visiting order. Sorted as a
    // compact copy of the fingerprints compared as integers: only runs of equal values matter, not
    // the order between them.
    std::vector<uint32_t> byFingerprint(n);
    {
        struct Keyed {
            quint64 high;
            quint64 low;
            uint32_t kind;
            uint32_t index;
        };
        std::vector<Keyed> keyed(n);
        for (uint32_t i = 0; i < n; ++i) {
            const Fingerprint& fingerprint = entries[i].fingerprint;
            Keyed& key = keyed[i];
            std::memcpy(&key.high, fingerprint.digest().data(), sizeof key.high);
            std::memcpy(&key.low, fingerprint.digest().data() + sizeof key.high, sizeof key.low);
            key.kind = static_cast<uint32_t>(fingerprint.kind());
            key.index = i;
        }
        std::sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) {
            return std::tie(a.high, a.low, a.kind, a.index) < std::tie(b.high, b.low, b.kind, b.index);
        });
        for (uint32_t i = 0; i < n; ++i)
            byFingerprint[i] = keyed[i].index;
    }
    std::vector<uint32_t> slotOf(n);
    for (uint32_t i = 0; i < n; ++i)
        slotOf[byFingerprint[i]] = i;

    // Paths in byte order, to find everything below a folder as one contiguous range.
    std::vector<uint32_t>& byPath = keys.byPath;
    if (byPath.size() != n) {
        byPath.resize(n);
        std::iota(byPath.begin(), byPath.end(), 0u);
        std::sort(
            byPath.begin(), byPath.end(), [&](uint32_t a, uint32_t b) { return entries[a].path < entries[b].path; });
    }

    auto pruneBelow = [&](const QByteArray& top) {
        const QByteArray prefix = top == "/" ? top : top + '/';
        auto it = std::lower_bound(byPath.begin(), byPath.end(), prefix,
            [&](uint32_t index, const QByteArray& value) { return entries[index].path < value; });
        for (; it != byPath.end() && entries[*it].path.startsWith(prefix); ++it) {
            if (!removed[*it] && !insideBundleBelow(top, entries[*it].path))
                removed[*it] = true;
        }
    };

    std::vector<uint32_t> members;
    for (uint32_t k = 0; k < n; ++k) {
        if (removed[k]) {
            callbacks.keyExamined();
            continue;
        }
        // Every key visited earlier has been removed, so the live members of this fingerprint's run
        // start at this key's own slot.
        const Fingerprint& fingerprint = entries[k].fingerprint;
        members.clear();
        for (uint32_t slot = slotOf[k]; slot < n && entries[byFingerprint[slot]].fingerprint == fingerprint; ++slot) {
            const uint32_t member = byFingerprint[slot];
            if (!removed[member])
                members.push_back(member);
        }
        // Unreadable items are alike only in that nobody read them: they never form a group.
        if (members.size() < 2 || !fingerprint.canMatch()) {
            removed[k] = true;
            callbacks.keyExamined();
            continue;
        }
        QList<QByteArray> paths;
        paths.reserve(static_cast<qsizetype>(members.size()));
        for (uint32_t member : members)
            paths.append(entries[member].path);
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
