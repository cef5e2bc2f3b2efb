#pragma once

#include "detect/FingerprintTable.h"

#include <QList>
#include <atomic>
#include <functional>

// Keys of a fingerprint table in the order grouping visits them: by depth (number of "/"), shallow
// first, so a folder is examined before anything inside it; equal depths keep the recorded order.
struct DepthOrderedKeys {
    std::vector<FingerprintTable::Entry> entries;
    // Positions in `entries` in byte order of their paths; worked out by grouping when empty.
    std::vector<uint32_t> byPath;

    static DepthOrderedKeys fromTable(FingerprintTable& table);
    qsizetype count() const { return static_cast<qsizetype>(entries.size()); }
};

// True when `path` lies below `folder` and pruning a grouped `folder` removes it: everything below,
// except what lies inside a bundle below it (the pruning walk does not descend into bundles).
bool prunedBelow(const QByteArray& folder, const QByteArray& path);

struct GroupingCallbacks {
    // Size of a group, taken from its first path (the allocated size; a folder's is its content's).
    std::function<qint64(const QByteArray&)> sizeOf;
    // A group whose size reaches the minimum, with its paths in visiting order.
    std::function<void(const QList<QByteArray>& paths, qint64 size)> groupFound;
    // One call per key examined, found or not.
    std::function<void()> keyExamined;
};

// Gathers the paths of equal fingerprint into groups. For each key in order: a fingerprint held by
// one path only drops that path; two or more make a group, whose members' contents are pruned from
// the remaining keys (so the inside of duplicate folders is not reported again), and the group is
// reported when the minimum size is less than or equal to its size. An inverted index (fingerprint
// to keys) keeps this O(n log n).
void groupByFingerprint(DepthOrderedKeys keys, qint64 minimumSize, const GroupingCallbacks& callbacks);
