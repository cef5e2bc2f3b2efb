#pragma once

#include "detect/duplicates.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

// What the search needs of every path of one result, worked out once per result: the folded text
// of every path that is not plain ASCII. A plain ASCII path folds to its lower case, which the
// search reads in place rather than keeping a second copy of every path.
//
// Made from one state of the groups and read, never changed, afterwards: any thread may read it
// while the groups it was made from stay as they were.
class SearchIndex {
public:
    // Answers nothing when `stop` turned true on the way. A large result is worked on by every core.
    static std::shared_ptr<const SearchIndex> make(
        const QList<DuplicateGroupPtr>& groups, const std::atomic<bool>& stop);

    // For each group, whether a file's path contains `foldedNeedle` (as TextCompare::foldedNeedle
    // makes it) ignoring case. With `within`, only the groups it marks are looked at (a longer
    // needle matches within the matches of any text it contains). Answers nothing when `stop`
    // turned true, and for an empty needle.
    std::optional<std::vector<bool>> matching(const QList<DuplicateGroupPtr>& groups, const QString& foldedNeedle,
        const std::vector<bool>* within, const std::atomic<bool>& stop) const;

private:
    qsizetype m_groups = 0;
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
