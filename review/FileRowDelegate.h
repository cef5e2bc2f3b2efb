#pragma once

#include <QStyledItemDelegate>

// Draws one row of the file table (`sameListRow`): the check box (its tag is the row, the file's
// index in the group), the file's name over its full path, the size of one copy and the reveal
// button. Clicks on the check box and the button are reported with the row; a double click
// elsewhere asks to open the file.
class FileRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kRowHeight = 44;

    static QRect checkBoxRect(const QRect& rowRect);
    static QRect revealButtonRect(const QRect& rowRect);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;

signals:
    void checkBoxClicked(int row);
    void revealClicked(int row);
    void openRequested(int row);
};
