#pragma once

#include <QStyledItemDelegate>

// Draws one row of the group table (`duplicateListRow`): the original's icon at 40 points, its name
// over the group's size, and the badge of chosen and all files at the right end. The current row is
// tinted.
class GroupRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kRowHeight = 56;
    static constexpr int kIconSize = 40;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
