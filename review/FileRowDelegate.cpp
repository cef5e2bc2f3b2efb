#include "review/FileRowDelegate.h"

#include "controls/RowButtons.h"
#include "review/FileListModel.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

namespace {

constexpr int kMargin = 12;
constexpr int kCheck = 16;
constexpr int kButton = 20;
constexpr int kSizeWidth = 84;

} // namespace

QRect FileRowDelegate::checkBoxRect(const QRect& rowRect) {
    return { rowRect.left() + kMargin, rowRect.center().y() - kCheck / 2 + 1, kCheck, kCheck };
}

QRect FileRowDelegate::revealButtonRect(const QRect& rowRect) {
    return { rowRect.right() - kMargin - kButton + 1, rowRect.center().y() - kButton / 2 + 1, kButton, kButton };
}

bool FileRowDelegate::isOnControl(const QRect& rowRect, const QPoint& point) {
    return isOnCheckBox(rowRect, point) || revealButtonRect(rowRect).contains(point);
}

bool FileRowDelegate::isOnCheckBox(const QRect& rowRect, const QPoint& point) {
    // The check box takes a little margin around it, as a click target.
    return checkBoxRect(rowRect).adjusted(-6, -8, 6, 8).contains(point);
}

QSize FileRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return { option.rect.width(), kRowHeight };
}

void FileRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect;
    const bool current = option.state & QStyle::State_Selected;
    const bool hovered = option.state & QStyle::State_MouseOver;
    if (current)
        painter->fillRect(row, QColor(0xd6, 0xe6, 0xfa));
    else if (hovered)
        painter->fillRect(row, QColor(0x2f, 0x80, 0xd0, 14));
    painter->setPen(QColor(0xe6, 0xe9, 0xed));
    painter->drawLine(row.left() + kMargin, row.bottom(), row.right() - kMargin, row.bottom());
    // The keyboard's row is framed while the list has the focus.
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(QPen(QColor(0x2f, 0x80, 0xd0), 1.5));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(QRectF(row).adjusted(1, 1, -1, -1));
    }

    const bool checked = index.data(FileListModel::CheckedRole).toBool();
    QStyleOptionButton box;
    box.rect = checkBoxRect(row);
    box.state = QStyle::State_Enabled | (checked ? QStyle::State_On : QStyle::State_Off);
    const QWidget* widget = option.widget;
    QStyle* style = widget ? widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, painter, widget);

    const QRect button = revealButtonRect(row);
    const QRect sizeRect(button.left() - 10 - kSizeWidth, row.top(), kSizeWidth, row.height());
    const int textLeft = box.rect.right() + 12;
    const int textWidth = sizeRect.left() - 10 - textLeft;

    QFont nameFont = option.font;
    nameFont.setBold(true);
    const QFontMetrics nameMetrics(nameFont);
    const QFontMetrics pathMetrics(option.font);
    const int block = nameMetrics.height() + 1 + pathMetrics.height();
    const int top = row.center().y() - block / 2 + 1;
    const QString name = index.data(FileListModel::NameRole).toString();
    painter->setFont(nameFont);
    painter->setPen(checked ? QColor(0xb0, 0x24, 0x2c) : QColor(0x1d, 0x21, 0x26));
    painter->drawText(QRect(textLeft, top, textWidth, nameMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
        nameMetrics.elidedText(name, Qt::ElideMiddle, textWidth));
    painter->setFont(option.font);
    painter->setPen(QColor(0x6b, 0x72, 0x7b));
    painter->drawText(QRect(textLeft, top + nameMetrics.height() + 1, textWidth, pathMetrics.height()),
        Qt::AlignLeft | Qt::AlignVCenter,
        pathMetrics.elidedText(index.data(FileListModel::PathRole).toString(), Qt::ElideMiddle, textWidth));
    painter->setPen(QColor(0x3a, 0x40, 0x47));
    painter->drawText(sizeRect, Qt::AlignRight | Qt::AlignVCenter,
        pathMetrics.elidedText(index.data(FileListModel::SizeTextRole).toString(), Qt::ElideRight, kSizeWidth));

    RowButtons::paintReveal(*painter, button, RowButtons::isUnderPointer(option, button));
    painter->restore();
}

bool FileRowDelegate::editorEvent(
    QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option, const QModelIndex& index) {
    const bool release = event->type() == QEvent::MouseButtonRelease;
    if (release || event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick) {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton)
            return QStyledItemDelegate::editorEvent(event, model, option, index);
        const QPoint at = mouse->position().toPoint();
        const bool onCheckBox = isOnCheckBox(option.rect, at);
        const bool onButton = revealButtonRect(option.rect).contains(at);
        if (onCheckBox || onButton) {
            if (release && onCheckBox)
                emit checkBoxClicked(index.row());
            else if (release)
                emit revealClicked(index.row());
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}
