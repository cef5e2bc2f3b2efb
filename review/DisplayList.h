#pragma once

#include "detect/duplicates.h"

#include <QList>
#include <memory>
#include <vector>

// The groups a result screen shows, in display order: positions into one result's list of groups.
// Nothing of a group is copied; the list of groups it reads is shared with the result (a QList is
// shared until written), so a list made from an earlier state of the result stays valid while the
// result changes. Copies are cheap: the positions are shared too.
class DisplayList {
public:
    DisplayList() = default;
    // Every group of `groups`, in their order (implicit: a plain list of groups shows as itself).
    DisplayList(const QList<DuplicateGroupPtr>& groups);
    DisplayList(const QList<DuplicateGroupPtr>& groups, std::vector<quint32> rows);

    qsizetype size() const { return m_rows ? static_cast<qsizetype>(m_rows->size()) : m_all; }
    bool isEmpty() const { return size() == 0; }
    const DuplicateGroupPtr& at(qsizetype row) const {
        return m_groups.at(m_rows ? static_cast<qsizetype>((*m_rows)[static_cast<size_t>(row)]) : row);
    }
    const DuplicateGroupPtr& operator[](qsizetype row) const { return at(row); }
    const DuplicateGroupPtr& first() const { return at(0); }
    void clear() { *this = DisplayList(); }
    QList<DuplicateGroupPtr> toList() const;

    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = DuplicateGroupPtr;
        using difference_type = qsizetype;
        using pointer = const DuplicateGroupPtr*;
        using reference = const DuplicateGroupPtr&;
        const_iterator(const DisplayList* list, qsizetype row)
            : m_list(list)
            , m_row(row) { }
        reference operator*() const { return m_list->at(m_row); }
        pointer operator->() const { return &m_list->at(m_row); }
        const_iterator& operator++() {
            ++m_row;
            return *this;
        }
        bool operator==(const const_iterator& other) const { return m_row == other.m_row; }
        bool operator!=(const const_iterator& other) const { return m_row != other.m_row; }

    private:
        const DisplayList* m_list;
        qsizetype m_row;
    };
    const_iterator begin() const { return { this, 0 }; }
    const_iterator end() const { return { this, size() }; }

private:
    QList<DuplicateGroupPtr> m_groups;
    // Without positions the list shows all of m_groups (m_all of them) in order.
    std::shared_ptr<const std::vector<quint32>> m_rows;
    qsizetype m_all = 0;
};
