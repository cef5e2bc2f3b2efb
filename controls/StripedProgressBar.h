#pragma once

#include <QBasicTimer>
#include <QWidget>

// A slim rounded progress bar filled with diagonal stripes. Determinate, it fills to its value (0 to
// 1); indeterminate, the stripes run across the whole track. While animated the stripes move, so a
// busy bar looks alive even when its value does not change.
class StripedProgressBar : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double value READ value WRITE setValue)
    Q_PROPERTY(bool indeterminate READ isIndeterminate WRITE setIndeterminate)

public:
    explicit StripedProgressBar(QWidget* parent = nullptr);

    double value() const { return m_value; }
    // Clamped to 0 to 1.
    void setValue(double value);
    bool isIndeterminate() const { return m_indeterminate; }
    void setIndeterminate(bool indeterminate);

    void startAnimation();
    void stopAnimation();
    bool isAnimating() const { return m_timer.isActive(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    double m_value = 0.0;
    bool m_indeterminate = false;
    bool m_wantsAnimation = false;
    int m_phase = 0;
    QBasicTimer m_timer;
};
