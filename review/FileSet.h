#pragma once

#include "detect/duplicates.h"

#include <QList>
#include <algorithm>
#include <vector>

// A set of file records by identity, kept flat: their addresses, sorted. It is made by one sort of
// one array and freed in one piece, so even a set of a million records costs a few tens of
// milliseconds to make and nothing to drop; a look-up is a binary search.
class FileSet {
public:
    FileSet() = default;
    explicit FileSet(const QList<DuplicateFilePtr>& files) {
        m_sorted.reserve(static_cast<size_t>(files.size()));
        for (const DuplicateFilePtr& file : files)
            m_sorted.push_back(file.get());
        std::sort(m_sorted.begin(), m_sorted.end());
        m_sorted.erase(std::unique(m_sorted.begin(), m_sorted.end()), m_sorted.end());
    }

    bool contains(const duplicateFile* file) const {
        return std::binary_search(m_sorted.begin(), m_sorted.end(), file);
    }
    // How many distinct records of `files` (a group's few) are in the set.
    qsizetype countOf(const QList<DuplicateFilePtr>& files) const {
        if (m_sorted.empty())
            return 0;
        qsizetype count = 0;
        for (qsizetype i = 0; i < files.size(); ++i) {
            const duplicateFile* file = files[i].get();
            const bool repeated = std::any_of(files.begin(), files.begin() + i,
                [file](const DuplicateFilePtr& before) { return before.get() == file; });
            count += !repeated && contains(file);
        }
        return count;
    }
    // Distinct records.
    qsizetype size() const { return static_cast<qsizetype>(m_sorted.size()); }
    bool isEmpty() const { return m_sorted.empty(); }

private:
    std::vector<const duplicateFile*> m_sorted;
};
