#include "review/DisplayList.h"

DisplayList::DisplayList(const QList<DuplicateGroupPtr>& groups)
    : m_groups(groups)
    , m_all(groups.size()) { }

DisplayList::DisplayList(const QList<DuplicateGroupPtr>& groups, std::vector<quint32> rows)
    : m_groups(groups)
    , m_rows(std::make_shared<const std::vector<quint32>>(std::move(rows))) { }

QList<DuplicateGroupPtr> DisplayList::toList() const {
    QList<DuplicateGroupPtr> out;
    out.reserve(size());
    for (const DuplicateGroupPtr& group : *this)
        out.append(group);
    return out;
}
