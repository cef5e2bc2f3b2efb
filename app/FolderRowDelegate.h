#pragma once

#include <QStyledItemDelegate>

// Draws one row of the setup screen's folder list: the folder's icon, its name over its full path,
// its size text and a round remove button, whose click is reported with the row (the row is the
// button's tag).
class FolderRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kRowHeight = 54;
    // Where the remove button of a row drawn in `rowRect` lies.
    static QRect removeButtonRect(const QRect& rowRect);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;

signals:
    void removeClicked(int row);
};
