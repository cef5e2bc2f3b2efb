#pragma once

#include <QStyledItemDelegate>

// Draws one row of the review list: the file's icon at 18 points, 8 from the left and 3 from the
// top; its full path from 30 points on, cut at the end when too long; its status, if any, at the
// right; and a round remove button of 16 points, 8 from the right, whose click is reported with
// the row. Rows are 24 high and parted by dashed lines.
class RemovalRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kRowHeight = 24;
    static QRect removeButtonRect(const QRect& rowRect);
    // Rows of files still to be removed have the button; rows of what a removal did have none.
    static bool hasRemoveButton(const QModelIndex& index);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;

signals:
    void removeClicked(int row);
};
