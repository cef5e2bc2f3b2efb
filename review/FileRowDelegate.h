#pragma once

#include <QStyledItemDelegate>

// Draws one row of the file table (`sameListRow`): the check box (its tag is the row, the file's
// index in the group), the file's name over its full path, the size of one copy and the reveal
// button. Clicks on the check box and the button are reported with the row.
class FileRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kRowHeight = 44;

    static QRect checkBoxRect(const QRect& rowRect);
    static QRect revealButtonRect(const QRect& rowRect);
    // Whether a point of a row falls on its check box (with a margin around it) or its button.
    static bool isOnCheckBox(const QRect& rowRect, const QPoint& point);
    static bool isOnControl(const QRect& rowRect, const QPoint& point);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;

signals:
    void checkBoxClicked(int row);
    void revealClicked(int row);
};
