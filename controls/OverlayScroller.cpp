#include "controls/OverlayScroller.h"

#include "controls/AccessibleControls.h"

#include <QAbstractScrollArea>
#include <QMouseEvent>
#include <QPainter>
#include <QPropertyAnimation>
#include <QScrollBar>
#include <algorithm>

namespace {

constexpr int kMinThumb = 24;
constexpr int kMargin = 2;

} // namespace

OverlayScroller::OverlayScroller(QAbstractScrollArea* area)
    : QWidget(area)
    , m_area(area)
    , m_areaObject(area)
    , m_viewportObject(area->viewport())
    , m_bar(area->verticalScrollBar())
    , m_fade(new QPropertyAnimation(this, "opacity", this)) {
    AccessibleControls::install();
    area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAttribute(Qt::WA_NoSystemBackground);
    setMouseTracking(true);
    m_hideTimer.setSingleShot(true);
    m_hideTimer.setInterval(kHideDelayMs);
    connect(&m_hideTimer, &QTimer::timeout, this, &OverlayScroller::fadeOut);
    m_fade->setDuration(250);
    connect(m_bar, &QScrollBar::valueChanged, this, &OverlayScroller::reveal);
    connect(m_bar, &QScrollBar::rangeChanged, this, [this] {
        place();
        update();
    });
    area->installEventFilter(this);
    area->viewport()->installEventFilter(this);
    place();
    hide();
}

void OverlayScroller::setOpacity(qreal opacity) {
    m_opacity = opacity;
    setVisible(opacity > 0.0 && m_bar->maximum() > m_bar->minimum());
    update();
}

bool OverlayScroller::isShowing() const {
    return isVisible() && m_opacity > 0.0;
}

void OverlayScroller::reveal() {
    if (m_bar->maximum() <= m_bar->minimum())
        return;
    m_fade->stop();
    setOpacity(1.0);
    raise();
    m_hideTimer.start();
}

void OverlayScroller::fadeOut() {
    if (m_hovered || m_dragOffset >= 0) {
        m_hideTimer.start();
        return;
    }
    m_fade->stop();
    m_fade->setStartValue(m_opacity);
    m_fade->setEndValue(0.0);
    m_fade->start();
}

void OverlayScroller::place() {
    const QRect viewport = m_area->viewport()->geometry();
    setGeometry(viewport.right() + 1 - kWidth, viewport.top(), kWidth, viewport.height());
}

bool OverlayScroller::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && watched == m_areaObject)
        place();
    else if (event->type() == QEvent::Wheel && watched == m_viewportObject)
        reveal();
    return QWidget::eventFilter(watched, event);
}

QRect OverlayScroller::thumbRect() const {
    const int range = m_bar->maximum() - m_bar->minimum();
    if (range <= 0)
        return {};
    const int track = height() - 2 * kMargin;
    const int page = std::max(1, m_bar->pageStep());
    const int thumb = std::clamp(static_cast<int>(qint64(track) * page / (range + page)), kMinThumb, track);
    const int top = kMargin + static_cast<int>(qint64(track - thumb) * (m_bar->value() - m_bar->minimum()) / range);
    const int thickness = (m_hovered || m_dragOffset >= 0) ? kWidth - 2 * kMargin : 6;
    return { width() - kMargin - thickness, top, thickness, thumb };
}

void OverlayScroller::scrollToThumbTop(int thumbTop) {
    const QRect thumb = thumbRect();
    const int travel = height() - 2 * kMargin - thumb.height();
    if (travel <= 0)
        return;
    const int range = m_bar->maximum() - m_bar->minimum();
    const int offset = std::clamp(thumbTop - kMargin, 0, travel);
    m_bar->setValue(m_bar->minimum() + static_cast<int>(qint64(range) * offset / travel));
}

void OverlayScroller::paintEvent(QPaintEvent*) {
    const QRect thumb = thumbRect();
    if (thumb.isEmpty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(m_opacity);
    painter.setPen(Qt::NoPen);
    if (m_hovered || m_dragOffset >= 0) {
        painter.setBrush(QColor(0, 0, 0, 25));
        painter.drawRoundedRect(QRectF(thumb.left(), kMargin, thumb.width(), height() - 2 * kMargin), 4, 4);
    }
    painter.setBrush(QColor(0, 0, 0, 120));
    const qreal radius = thumb.width() / 2.0;
    painter.drawRoundedRect(QRectF(thumb), radius, radius);
}

void OverlayScroller::enterEvent(QEnterEvent*) {
    m_hovered = true;
    reveal();
}

void OverlayScroller::leaveEvent(QEvent*) {
    m_hovered = false;
    m_hideTimer.start();
    update();
}

void OverlayScroller::mousePressEvent(QMouseEvent* event) {
    const QRect thumb = thumbRect();
    const int y = event->position().toPoint().y();
    if (thumb.isEmpty())
        return;
    // A press on the track jumps the thumb's middle to the pointer, then drags from there.
    m_dragOffset = thumb.contains(thumb.center().x(), y) ? y - thumb.top() : thumb.height() / 2;
    scrollToThumbTop(y - m_dragOffset);
    reveal();
}

void OverlayScroller::mouseMoveEvent(QMouseEvent* event) {
    if (m_dragOffset >= 0)
        scrollToThumbTop(event->position().toPoint().y() - m_dragOffset);
}

void OverlayScroller::mouseReleaseEvent(QMouseEvent*) {
    m_dragOffset = -1;
    m_hideTimer.start();
    update();
}
