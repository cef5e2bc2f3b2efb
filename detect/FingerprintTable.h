#pragma once

#include "detect/Fingerprint.h"

#include <QByteArray>
#include <QHash>
#include <optional>
#include <vector>

// A fingerprint table (path to fingerprint), filled by a scan and consumed by grouping. Entries are
// kept in the order they were recorded; writing a path again replaces its value, which grouping
// applies when it takes the table (the first position is kept, the last value wins).
class FingerprintTable {
public:
    struct Entry {
        QByteArray path;
        Fingerprint fingerprint;
    };

    void insert(const QByteArray& path, const Fingerprint& fingerprint) { m_entries.push_back({ path, fingerprint }); }
    bool isEmpty() const { return m_entries.empty(); }
    // Room for this many more entries, so that a table of known size is not grown twice over.
    void reserveMore(qsizetype count) { m_entries.reserve(m_entries.size() + static_cast<size_t>(count)); }
    // Entries recorded, repeats of one path included.
    qsizetype recordedCount() const { return static_cast<qsizetype>(m_entries.size()); }
    void clear() { std::vector<Entry>().swap(m_entries); }

    // Hands over every distinct path with its last value, in first-recorded order, and empties
    // the table. `byPath`, when given, receives the positions of the result in byte order of paths.
    std::vector<Entry> takeDistinct(std::vector<uint32_t>* byPath = nullptr);

    // The value last written for a path; a linear search meant for tests and diagnostics.
    std::optional<Fingerprint> value(const QByteArray& path) const;
    QHash<QByteArray, QByteArray> toTextMap() const;

private:
    std::vector<Entry> m_entries;
};
