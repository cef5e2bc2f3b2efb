#include "detect/FingerprintTable.h"

#include <algorithm>
#include <numeric>

std::vector<FingerprintTable::Entry> FingerprintTable::takeDistinct(std::vector<uint32_t>* byPathOut) {
    std::vector<Entry> entries;
    entries.swap(m_entries);
    const size_t n = entries.size();
    std::vector<uint32_t> byPath(n);
    std::iota(byPath.begin(), byPath.end(), 0u);
    std::stable_sort(
        byPath.begin(), byPath.end(), [&](uint32_t a, uint32_t b) { return entries[a].path < entries[b].path; });

    bool repeats = false;
    std::vector<bool> dropped(n, false);
    for (size_t i = 0; i < n;) {
        size_t j = i + 1;
        while (j < n && entries[byPath[j]].path == entries[byPath[i]].path)
            ++j;
        if (j - i > 1) {
            repeats = true;
            entries[byPath[i]].fingerprint = entries[byPath[j - 1]].fingerprint;
            for (size_t k = i + 1; k < j; ++k)
                dropped[byPath[k]] = true;
        }
        i = j;
    }
    if (!repeats) {
        if (byPathOut)
            *byPathOut = std::move(byPath);
        return entries;
    }
    std::vector<Entry> distinct;
    distinct.reserve(n);
    std::vector<uint32_t> position(n, 0);
    for (size_t i = 0; i < n; ++i) {
        if (!dropped[i]) {
            position[i] = static_cast<uint32_t>(distinct.size());
            distinct.push_back(std::move(entries[i]));
        }
    }
    if (byPathOut) {
        byPathOut->clear();
        byPathOut->reserve(distinct.size());
        for (uint32_t index : byPath) {
            if (!dropped[index])
                byPathOut->push_back(position[index]);
        }
    }
    return distinct;
}

std::optional<Fingerprint> FingerprintTable::value(const QByteArray& path) const {
    for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
        if (it->path == path)
            return it->fingerprint;
    }
    return std::nullopt;
}

QHash<QByteArray, QByteArray> FingerprintTable::toTextMap() const {
    QHash<QByteArray, QByteArray> map;
    for (const Entry& entry : m_entries)
        map.insert(entry.path, entry.fingerprint.text());
    return map;
}
