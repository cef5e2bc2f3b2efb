#include "controls/StripedProgressBar.h"

#include "controls/AccessibleControls.h"

#include <QAccessible>
#include <QPainter>
#include <QPainterPath>
#include <QTimerEvent>
#include <algorithm>
#include <cmath>

namespace {

constexpr int kFrameMs = 33;
constexpr int kStripeWidth = 12; // one light and one dark band

} // namespace

StripedProgressBar::StripedProgressBar(QWidget* parent)
    : QWidget(parent) {
    AccessibleControls::install();
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

void StripedProgressBar::setValue(double value) {
    value = std::clamp(value, 0.0, 1.0);
    if (value == m_value)
        return;
    m_value = value;
    update();
    if (QAccessible::isActive()) {
        QAccessibleValueChangeEvent event(this, static_cast<int>(std::lround(value * 100)));
        QAccessible::updateAccessibility(&event);
    }
}

void StripedProgressBar::setIndeterminate(bool indeterminate) {
    if (indeterminate == m_indeterminate)
        return;
    m_indeterminate = indeterminate;
    update();
}

void StripedProgressBar::startAnimation() {
    m_wantsAnimation = true;
    // A hidden bar keeps no timer running; it starts when the bar is shown.
    if (isVisible() && !m_timer.isActive())
        m_timer.start(kFrameMs, this);
}

void StripedProgressBar::stopAnimation() {
    m_wantsAnimation = false;
    m_timer.stop();
    update();
}

QSize StripedProgressBar::sizeHint() const {
    return { 200, 8 };
}

QSize StripedProgressBar::minimumSizeHint() const {
    return { 40, 8 };
}

void StripedProgressBar::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (m_wantsAnimation && !m_timer.isActive())
        m_timer.start(kFrameMs, this);
}

void StripedProgressBar::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_timer.stop();
}

void StripedProgressBar::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_timer.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    m_phase = (m_phase + 1) % kStripeWidth;
    update();
}

void StripedProgressBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const qreal radius = track.height() / 2.0;

    QPainterPath trackPath;
    trackPath.addRoundedRect(track, radius, radius);
    painter.fillPath(trackPath, QColor(0xdd, 0xe1, 0xe6));

    const qreal fraction = m_indeterminate ? 1.0 : m_value;
    if (fraction > 0.0) {
        QRectF fill = track;
        fill.setWidth(std::max(track.height(), track.width() * fraction));
        QPainterPath fillPath;
        fillPath.addRoundedRect(fill, radius, radius);
        painter.save();
        painter.setClipPath(fillPath);
        painter.fillRect(fill, QColor(0x2f, 0x80, 0xd0));
        // Light bands leaning right; their phase moves one pixel per frame while animated.
        const QColor band(255, 255, 255, m_indeterminate ? 70 : 45);
        const qreal h = fill.height();
        for (qreal x = fill.left() - h - kStripeWidth + m_phase; x < fill.right(); x += kStripeWidth) {
            QPainterPath stripe;
            stripe.moveTo(x, fill.bottom());
            stripe.lineTo(x + kStripeWidth / 2.0, fill.bottom());
            stripe.lineTo(x + kStripeWidth / 2.0 + h, fill.top());
            stripe.lineTo(x + h, fill.top());
            stripe.closeSubpath();
            painter.fillPath(stripe, band);
        }
        painter.restore();
    }
    painter.setPen(QPen(QColor(0, 0, 0, 40), 1.0));
    painter.drawPath(trackPath);
}
