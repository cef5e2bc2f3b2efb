#include "controls/RowButtons.h"

#include <QCursor>
#include <QPainter>
#include <QStyleOptionViewItem>
#include <QWidget>

namespace RowButtons {

namespace {

void paintDisc(QPainter& painter, const QRect& button, const QColor& colour) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(button);
    // The mark's stroke grows with the button: 1.8 points on an 18-point disc.
    painter.setPen(QPen(Qt::white, button.width() / 10.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

const QColor kIdle(0xb8, 0xbe, 0xc6);

} // namespace

bool isUnderPointer(const QStyleOptionViewItem& option, const QRect& button) {
    if (!(option.state & QStyle::State_MouseOver) || !option.widget)
        return false;
    return button.contains(option.widget->mapFromGlobal(QCursor::pos()));
}

void paintRemove(QPainter& painter, const QRect& button, bool underPointer) {
    painter.save();
    paintDisc(painter, button, underPointer ? QColor(0xd0, 0x45, 0x45) : kIdle);
    const qreal inset = button.width() * 0.3;
    const QRectF cross = QRectF(button).adjusted(inset, inset, -inset, -inset);
    painter.drawLine(cross.topLeft(), cross.bottomRight());
    painter.drawLine(cross.topRight(), cross.bottomLeft());
    painter.restore();
}

void paintReveal(QPainter& painter, const QRect& button, bool underPointer) {
    painter.save();
    paintDisc(painter, button, underPointer ? QColor(0x2f, 0x80, 0xd0) : kIdle);
    const QPointF centre = QRectF(button).center();
    painter.drawLine(centre + QPointF(-4.5, 0), centre + QPointF(4, 0));
    painter.drawLine(centre + QPointF(0.5, -3.5), centre + QPointF(4, 0));
    painter.drawLine(centre + QPointF(0.5, 3.5), centre + QPointF(4, 0));
    painter.restore();
}

} // namespace RowButtons
