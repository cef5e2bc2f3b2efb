#pragma once

#include <QStyledItemDelegate>

// Draws one row of the review list: the file's icon at 18 points, 8 from the left and 3 from the
// top; its full path from 30 points on, cut at the end when too long; and a round remove button
// of 16 points, 8 from the right, whose click is reported with the row. Rows are 24 high, parted
// by dashed lines, and never highlighted.
class RemovalRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kRowHeight = 24;
    static QRect removeButtonRect(const QRect& rowRect);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;

signals:
    void removeClicked(int row);
};
