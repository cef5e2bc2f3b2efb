#include "review/selectedCountView.h"

#include "review/StatusTexts.h"

#include <QPainter>

namespace {

constexpr int kHeight = 18;
constexpr int kLeft = 6;
constexpr int kGap = 13;

} // namespace

QFont selectedCountView::badgeFont(const QFont& base) {
    QFont font = base;
    font.setPointSizeF(11.5 * 72.0 / 96.0);
    font.setBold(true);
    return font;
}

int selectedCountView::widthFor(qsizetype selected, qsizetype all) {
    return StatusTexts::badgeWidth(selected, all);
}

void selectedCountView::paint(
    QPainter* painter, const QRect& rect, const QFont& base, qsizetype selected, qsizetype all, bool currentRow) {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QFont font = badgeFont(base);
    const QFontMetrics metrics(font);
    painter->setFont(font);
    const QRect badge(rect.left(), rect.center().y() - kHeight / 2 + 1, widthFor(selected, all), kHeight);
    const qreal radius = kHeight / 2.0;
    const QString allText = QString::number(all);

    painter->setPen(Qt::NoPen);
    painter->setBrush(currentRow ? QColor(255, 255, 255, 210) : QColor(0xec, 0xee, 0xf1));
    painter->drawRoundedRect(QRectF(badge), radius, radius);

    if (selected > 0) {
        const QString selectedText = QString::number(selected);
        const int selectedWidth = metrics.horizontalAdvance(selectedText);
        const QRect swatch(badge.left(), badge.top(), kLeft + selectedWidth + kLeft, kHeight);
        painter->setBrush(swatchColor());
        painter->drawRoundedRect(QRectF(swatch), radius, radius);
        painter->setPen(Qt::white);
        painter->drawText(
            QRect(badge.left() + kLeft, badge.top(), selectedWidth, kHeight), Qt::AlignCenter, selectedText);
        painter->setPen(QColor(0x3a, 0x40, 0x47));
        // The file count stands 13 points after the chosen count, centred in what is left.
        painter->drawText(QRect(badge.left() + kLeft + selectedWidth + kGap / 2, badge.top(),
                              badge.right() + 1 - (badge.left() + kLeft + selectedWidth + kGap / 2), kHeight),
            Qt::AlignCenter, allText);
    } else {
        painter->setPen(currentRow ? QColor(0x3a, 0x40, 0x47) : greyColor());
        painter->drawText(badge.adjusted(kLeft - 4, 0, -(kLeft - 4), 0), Qt::AlignCenter, allText);
    }
    painter->restore();
}
