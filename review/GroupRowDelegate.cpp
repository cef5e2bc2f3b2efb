#include "review/GroupRowDelegate.h"

#include "review/GroupListModel.h"
#include "review/selectedCountView.h"

#include <QPainter>

namespace {

constexpr int kMargin = 10;

} // namespace

QSize GroupRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return { option.rect.width(), kRowHeight };
}

void GroupRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    const QRect row = option.rect;
    const bool current = option.state & QStyle::State_Selected;
    if (current)
        painter->fillRect(row, QColor(0xd6, 0xe6, 0xfa));
    else if (option.state & QStyle::State_MouseOver)
        painter->fillRect(row, QColor(0x2f, 0x80, 0xd0, 14));
    painter->setPen(QColor(0xe6, 0xe9, 0xed));
    painter->drawLine(row.left() + kMargin, row.bottom(), row.right() - kMargin, row.bottom());
    // The keyboard's row is framed while the list has the focus.
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(QPen(QColor(0x2f, 0x80, 0xd0), 1.5));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(QRectF(row).adjusted(1, 1, -1, -1));
    }

    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    icon.paint(painter, QRect(row.left() + kMargin, row.center().y() - kIconSize / 2 + 1, kIconSize, kIconSize));

    const qsizetype selected = index.data(GroupListModel::SelectedCountRole).toLongLong();
    const qsizetype all = index.data(GroupListModel::FileCountRole).toLongLong();
    const int badgeWidth = selectedCountView::widthFor(selected, all);
    const QRect badge(row.right() - kMargin - badgeWidth + 1, row.top(), badgeWidth, row.height());
    selectedCountView::paint(painter, badge, option.font, selected, all, current);

    const int textLeft = row.left() + kMargin + kIconSize + 10;
    const int textWidth = badge.left() - 8 - textLeft;
    QFont nameFont = option.font;
    nameFont.setBold(true);
    const QFontMetrics nameMetrics(nameFont);
    const QFontMetrics sizeMetrics(option.font);
    const int block = nameMetrics.height() + 2 + sizeMetrics.height();
    const int top = row.center().y() - block / 2 + 1;
    painter->setFont(nameFont);
    painter->setPen(QColor(0x1d, 0x21, 0x26));
    painter->drawText(QRect(textLeft, top, textWidth, nameMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
        nameMetrics.elidedText(index.data(GroupListModel::NameRole).toString(), Qt::ElideMiddle, textWidth));
    painter->setFont(option.font);
    painter->setPen(QColor(0x6b, 0x72, 0x7b));
    painter->drawText(QRect(textLeft, top + nameMetrics.height() + 2, textWidth, sizeMetrics.height()),
        Qt::AlignLeft | Qt::AlignVCenter,
        sizeMetrics.elidedText(index.data(GroupListModel::SizeTextRole).toString(), Qt::ElideRight, textWidth));
    painter->restore();
}
