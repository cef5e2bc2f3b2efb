#pragma once

#include <QStyledItemDelegate>

// Draws a row of the type list: the type's icon and name with its "%lu of %lu" count on the first
// line and "%@ of %@ selected" beneath, the chosen row on a blue ground.
class mainTypeCell : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kRowHeight = 50;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
