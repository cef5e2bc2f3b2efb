#pragma once

#include "detect/duplicates.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <atomic>
#include <memory>
#include <unordered_set>
#include <vector>

// What the result lists need of every group of one result, worked out once per result so that no
// change of sort order, type filter or search converts or folds a text again: each group's category,
// the order of the originals' names (folded once each, then sorted), and the folded text of every
// path that is not plain ASCII (a plain ASCII path folds to its lower case, which the search reads
// in place rather than keeping a second copy of every path).
//
// An index is made from one state of the groups and read, never changed, afterwards: any thread may
// read it while the groups it was made from stay as they were.
class ResultIndex {
public:
    // Answers nothing when `stop` turned true on the way.
    static std::shared_ptr<const ResultIndex> make(
        const QList<DuplicateGroupPtr>& groups, const std::atomic<bool>& stop);

    qsizetype size() const { return static_cast<qsizetype>(m_types.size()); }
    // The group's category; unset sorts below every number.
    const std::optional<int>& typeAt(qsizetype group) const { return m_types[static_cast<size_t>(group)]; }

    // The positions of the groups in the order of a sort key (0 to 4 as ResultLists numbers them),
    // ascending or descending, as a stable sort of the groups by that key orders them. `chosen` is
    // what key 4 counts. Answers nothing when `stop` turned true, and for an unknown key.
    std::optional<std::vector<quint32>> order(const QList<DuplicateGroupPtr>& groups, quint64 key, bool descending,
        const std::unordered_set<const duplicateFile*>& chosen, const std::atomic<bool>& stop) const;

    // For each group, whether a file's path contains `foldedNeedle` (as TextCompare::foldedNeedle
    // makes it) ignoring case. With `within`, only the groups it marks are looked at (a longer
    // needle matches within the matches of any text it contains). Answers nothing when `stop`
    // turned true, and for an empty needle.
    std::optional<std::vector<bool>> matching(const QList<DuplicateGroupPtr>& groups, const QString& foldedNeedle,
        const std::vector<bool>* within, const std::atomic<bool>& stop) const;

private:
    std::vector<std::optional<int>> m_types;
    // The groups by the folded name of their original, ascending (ties in the result's order), and
    // for each place whether its name folds to the same key as the one before.
    std::vector<quint32> m_byName;
    std::vector<bool> m_sameNameAsBefore;
    // The folded UTF-8 text of every path that is not plain ASCII, each ended by a zero byte, in the
    // order of the groups and their files; m_foldedAt[k] says whose text the k-th is and where.
    struct Folded {
        quint32 group;
        quint32 file;
        quint64 offset;
    };
    QByteArray m_folded;
    std::vector<Folded> m_foldedAt;
};
