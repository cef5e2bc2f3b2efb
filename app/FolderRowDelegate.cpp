#include "app/FolderRowDelegate.h"

#include "app/FolderListModel.h"
#include "controls/RowButtons.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int kMargin = 14;
constexpr int kIcon = 32;
constexpr int kButton = 18;
constexpr int kSizeWidth = 96;

} // namespace

QRect FolderRowDelegate::removeButtonRect(const QRect& rowRect) {
    return { rowRect.right() - kMargin - kButton + 1, rowRect.center().y() - kButton / 2 + 1, kButton, kButton };
}

QSize FolderRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return { option.rect.width(), kRowHeight };
}

void FolderRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect;
    const bool hovered = option.state & QStyle::State_MouseOver;
    if (hovered)
        painter->fillRect(row, QColor(0x2f, 0x80, 0xd0, 18));
    // The keyboard's row: tinted, and framed while the list has the focus.
    if (option.state & QStyle::State_Selected)
        painter->fillRect(row, QColor(0x2f, 0x80, 0xd0, 36));
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(QPen(QColor(0x2f, 0x80, 0xd0), 1.5));
        painter->drawRect(QRectF(row).adjusted(1, 1, -1, -1));
    }
    painter->setPen(QColor(0xe3, 0xe6, 0xea));
    painter->drawLine(row.left() + kMargin, row.bottom(), row.right() - kMargin, row.bottom());

    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    icon.paint(painter, QRect(row.left() + kMargin, row.center().y() - kIcon / 2 + 1, kIcon, kIcon));

    const QRect button = removeButtonRect(row);
    const int textLeft = row.left() + kMargin + kIcon + 12;
    const QRect sizeRect(button.left() - 10 - kSizeWidth, row.top(), kSizeWidth, row.height());
    const int textWidth = sizeRect.left() - 10 - textLeft;

    QFont nameFont = option.font;
    nameFont.setBold(true);
    const QFontMetrics nameMetrics(nameFont);
    const QFontMetrics pathMetrics(option.font);
    const int block = nameMetrics.height() + 2 + pathMetrics.height();
    const int top = row.center().y() - block / 2 + 1;

    painter->setFont(nameFont);
    painter->setPen(QColor(0x1d, 0x21, 0x26));
    painter->drawText(QRect(textLeft, top, textWidth, nameMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
        nameMetrics.elidedText(index.data(FolderListModel::NameRole).toString(), Qt::ElideRight, textWidth));
    painter->setFont(option.font);
    painter->setPen(QColor(0x6b, 0x72, 0x7b));
    painter->drawText(QRect(textLeft, top + nameMetrics.height() + 2, textWidth, pathMetrics.height()),
        Qt::AlignLeft | Qt::AlignVCenter,
        pathMetrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideMiddle, textWidth));

    painter->setPen(QColor(0x3a, 0x40, 0x47));
    painter->drawText(sizeRect, Qt::AlignRight | Qt::AlignVCenter,
        pathMetrics.elidedText(index.data(FolderListModel::SizeRole).toString(), Qt::ElideRight, kSizeWidth));

    RowButtons::paintRemove(*painter, button, RowButtons::isUnderPointer(option, button));
    painter->restore();
}

bool FolderRowDelegate::editorEvent(
    QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() == QEvent::MouseButtonRelease) {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton && removeButtonRect(option.rect).contains(mouse->position().toPoint())) {
            emit removeClicked(index.row());
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}
