#pragma once

#include "detect/duplicates.h"
#include "review/FileSet.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <atomic>
#include <memory>
#include <vector>

// What the result lists need of every group of one result to sort and filter it, worked out once
// per result so that no change of sort order or type filter converts or folds a text again: each
// group's category and the order of the originals' names (each folded once, then sorted). The
// search has an index of its own (SearchIndex), which the first list does not wait for.
//
// An index is made from one state of the groups and read, never changed, afterwards: any thread may
// read it while the groups it was made from stay as they were.
class ResultIndex {
public:
    // Answers nothing when `stop` turned true on the way. A large result is worked on by every core.
    static std::shared_ptr<const ResultIndex> make(
        const QList<DuplicateGroupPtr>& groups, const std::atomic<bool>& stop);

    qsizetype size() const { return static_cast<qsizetype>(m_types.size()); }
    // The group's category; unset sorts below every number.
    const std::optional<int>& typeAt(qsizetype group) const { return m_types[static_cast<size_t>(group)]; }

    // The positions of the groups in the order of a sort key (0 to 4 as ResultLists numbers them),
    // ascending or descending, as a stable sort of the groups by that key orders them. `chosen` is
    // what key 4 counts. Answers nothing when `stop` turned true, and for an unknown key.
    std::optional<std::vector<quint32>> order(const QList<DuplicateGroupPtr>& groups, quint64 key, bool descending,
        const FileSet& chosen, const std::atomic<bool>& stop) const;

private:
    std::vector<std::optional<int>> m_types;
    // The groups by the folded name of their original, ascending (ties in the result's order), and
    // for each place whether its name folds to the same key as the one before.
    std::vector<quint32> m_byName;
    std::vector<bool> m_sameNameAsBefore;
};
