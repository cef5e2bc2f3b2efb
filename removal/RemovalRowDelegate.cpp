#include "removal/RemovalRowDelegate.h"

#include "controls/RowButtons.h"
#include "removal/RemovalListModel.h"

#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr int kIcon = 18;
constexpr int kButton = 16;

} // namespace

QRect RemovalRowDelegate::removeButtonRect(const QRect& rowRect) {
    return { rowRect.right() - 8 - kButton + 1, rowRect.top() + 4, kButton, kButton };
}

bool RemovalRowDelegate::hasRemoveButton(const QModelIndex& index) {
    const int kind = index.data(RemovalListModel::StatusKindRole).toInt();
    return kind == RemovalListModel::Listed || kind == RemovalListModel::WillBeLeft;
}

QSize RemovalRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return { option.rect.width(), kRowHeight };
}

void RemovalRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect;
    painter->fillRect(row, Qt::white);
    QPen dashed(QColor(0xd3, 0xd8, 0xde), 1, Qt::DashLine);
    painter->setPen(dashed);
    painter->drawLine(QPointF(row.left(), row.bottom() + 0.5), QPointF(row.right(), row.bottom() + 0.5));
    // The keyboard's row (Delete drops it): tinted, and framed while the list has the focus.
    if (option.state & QStyle::State_Selected)
        painter->fillRect(row, QColor(0x2f, 0x80, 0xd0, 36));
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(QPen(QColor(0x2f, 0x80, 0xd0), 1.5));
        painter->drawRect(QRectF(row).adjusted(1, 1, -1, -1));
    }

    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    icon.paint(painter, QRect(row.left() + 8, row.top() + 3, kIcon, kIcon));

    QFont font = option.font;
    font.setPointSizeF(12 * 72.0 / 96.0);
    font.setWeight(QFont::Medium);
    const QFontMetrics metrics(font);
    QRect text(row.left() + 30, row.top() + 3, row.width() - 30 - 38, kIcon);
    painter->setFont(font);
    // A file the removal will leave alone (or left alone, or failed on) shows why at the right, its
    // path greyed; once the removal has run, a file it acted on says what became of it, and the
    // rows lose their remove buttons.
    const auto kind = static_cast<RemovalListModel::StatusKind>(index.data(RemovalListModel::StatusKindRole).toInt());
    const QString label = index.data(RemovalListModel::StatusRole).toString();
    if (!label.isEmpty()) {
        // A little room over the measured width, so that a label that fits is never cut.
        const int width = std::min(metrics.horizontalAdvance(label) + 4, text.width() / 2);
        const QRect labelRect(text.right() - width + 1, text.top(), width, text.height());
        painter->setPen(kind == RemovalListModel::Done ? QColor(0x2e, 0x7d, 0x32)
                : kind == RemovalListModel::Failed     ? QColor(0xc6, 0x28, 0x28)
                                                       : QColor(0xb0, 0x5a, 0x00));
        painter->drawText(
            labelRect, Qt::AlignRight | Qt::AlignVCenter, metrics.elidedText(label, Qt::ElideRight, labelRect.width()));
        text.setRight(labelRect.left() - 8);
    }
    const bool actedOn = kind == RemovalListModel::Listed || kind == RemovalListModel::Done;
    painter->setPen(actedOn ? QColor(Qt::black) : QColor(0x8a, 0x90, 0x98));
    painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
        metrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideRight, text.width()));

    if (hasRemoveButton(index)) {
        const QRect button = removeButtonRect(row);
        RowButtons::paintRemove(*painter, button, RowButtons::isUnderPointer(option, button));
    }
    painter->restore();
}

bool RemovalRowDelegate::editorEvent(
    QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() == QEvent::MouseButtonRelease && hasRemoveButton(index)) {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton
            && removeButtonRect(option.rect).adjusted(-2, -2, 2, 2).contains(mouse->position().toPoint())) {
            emit removeClicked(index.row());
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}
