#include "review/mainTypeCell.h"

#include "review/OlderTypeModel.h"

#include <QPainter>

QSize mainTypeCell::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return { option.rect.width(), kRowHeight };
}

void mainTypeCell::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect.adjusted(6, 3, -6, -3);
    const bool current = option.state & QStyle::State_Selected;
    if (current) {
        // While the list has the focus the current type is ringed as well as filled.
        const bool focused = option.state & QStyle::State_HasFocus;
        painter->setPen(focused ? QPen(QColor(0x12, 0x4a, 0x86), 2) : QPen(Qt::NoPen));
        painter->setBrush(QColor(0x2f, 0x7c, 0xd0));
        painter->drawRoundedRect(QRectF(row).adjusted(1, 1, -1, -1), 6, 6);
    } else if (option.state & QStyle::State_MouseOver) {
        painter->fillRect(row, QColor(0x2f, 0x80, 0xd0, 18));
    }
    const QColor text = current ? Qt::white : QColor(0x1d, 0x21, 0x26);
    const QColor quiet = current ? QColor(0xe6, 0xef, 0xf9) : QColor(0x6b, 0x72, 0x7b);

    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    icon.paint(painter, QRect(row.left() + 8, row.center().y() - 12, 24, 24));
    const int left = row.left() + 40;
    const int width = row.right() - 8 - left;

    QFont nameFont = option.font;
    nameFont.setBold(true);
    const QFontMetrics nameMetrics(nameFont);
    QFont smallFont = option.font;
    smallFont.setPointSizeF(option.font.pointSizeF() * 0.85);
    const QFontMetrics smallMetrics(smallFont);
    const int top = row.center().y() - (nameMetrics.height() + smallMetrics.height() + 2) / 2;

    const QString count = index.data(OlderTypeModel::CountRole).toString();
    painter->setFont(smallFont);
    painter->setPen(quiet);
    const int countWidth = smallMetrics.horizontalAdvance(count);
    painter->drawText(QRect(row.right() - 8 - countWidth, top, countWidth, nameMetrics.height()),
        Qt::AlignRight | Qt::AlignVCenter, count);
    painter->drawText(QRect(left, top + nameMetrics.height() + 2, width, smallMetrics.height()),
        Qt::AlignLeft | Qt::AlignVCenter,
        smallMetrics.elidedText(index.data(OlderTypeModel::SizesRole).toString(), Qt::ElideRight, width));

    painter->setFont(nameFont);
    painter->setPen(text);
    painter->drawText(QRect(left, top, width - countWidth - 6, nameMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
        nameMetrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideRight, width - countWidth - 6));
    painter->restore();
}
