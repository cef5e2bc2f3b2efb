#pragma once

#include <QTimer>
#include <QWidget>

class QAbstractScrollArea;
class QPropertyAnimation;
class QScrollBar;

// A thin vertical scroll bar drawn over the right edge of a scroll area's content. It appears while
// the content scrolls (or the pointer rests on it) and fades out shortly after; its thumb can be
// dragged and the track clicked. The area's own vertical bar is turned off and stays the model.
class OverlayScroller : public QWidget {
    Q_OBJECT
    Q_PROPERTY(qreal opacity READ opacity WRITE setOpacity)

public:
    explicit OverlayScroller(QAbstractScrollArea* area);

    qreal opacity() const { return m_opacity; }
    void setOpacity(qreal opacity);
    // True while the bar is drawn (scrolling recently, hovered or dragged) and there is something
    // to scroll.
    bool isShowing() const;
    // The thumb's rectangle in this widget's coordinates; empty when nothing scrolls.
    QRect thumbRect() const;
    // The area's own vertical bar, which the overlay draws and moves.
    QScrollBar* scrollBar() const { return m_bar; }

    static constexpr int kWidth = 12;
    static constexpr int kHideDelayMs = 900;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void reveal();
    void fadeOut();
    void place();
    void scrollToThumbTop(int thumbTop);

    // The scroller is the area's child and never outlives it. Events are matched against the plain
    // objects: the filter still sees events while the area is being destroyed.
    QAbstractScrollArea* m_area;
    const QObject* m_areaObject;
    const QObject* m_viewportObject;
    QScrollBar* m_bar;
    QTimer m_hideTimer;
    QPropertyAnimation* m_fade;
    qreal m_opacity = 0.0;
    bool m_hovered = false;
    int m_dragOffset = -1; // pointer's distance from the thumb's top while dragging
};
