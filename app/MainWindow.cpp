#include "app/MainWindow.h"

#include "app/MainToolbar.h"
#include "controls/AppIcons.h"

#include <QCloseEvent>
#include <QGraphicsOpacityEffect>
#include <QGridLayout>
#include <QGuiApplication>
#include <QPropertyAnimation>
#include <QScreen>
#include <QVBoxLayout>

MainWindow::ScreenFrame MainWindow::frameFor(int screen) {
    switch (screen) {
    case 0:
        return { QSize(540, 500), QSize(540, 500), QSize(540, 500), false, false };
    case 1:
        return { QSize(540, 240), QSize(540, 240), QSize(540, 240), false, false };
    case 2: {
        const QSize minimum(900, 620);
        QSize maximum = minimum;
        if (const QScreen* primary = QGuiApplication::primaryScreen())
            maximum = primary->size().expandedTo(minimum);
        return { QSize(900, 682), minimum, maximum, true, true };
    }
    default:
        return {};
    }
}

MainWindow::ScreenFrame MainWindow::olderFrameFor(bool result) {
    if (result)
        return frameFor(2);
    return { QSize(760, 540), QSize(720, 440), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX), true, false };
}

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_toolbar(new MainToolbar)
    , m_containtView(new QWidget)
    , m_resize(new QPropertyAnimation(this, "geometry", this)) {
    setWindowTitle(QStringLiteral("Twinsift"));
    setWindowIcon(AppIcons::applicationIcon());
    m_containtView->setObjectName(QStringLiteral("containtView"));
    auto* screens = new QGridLayout(m_containtView);
    screens->setContentsMargins(0, 0, 0, 0);

    auto* central = new QWidget;
    auto* column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_toolbar);
    column->addWidget(m_containtView, 1);
    setCentralWidget(central);

    m_resize->setDuration(200);
    m_resize->setEasingCurve(QEasingCurve::InOutQuad);
}

void MainWindow::addScreen(QWidget* screen) {
    auto* grid = static_cast<QGridLayout*>(m_containtView->layout());
    grid->addWidget(screen, 0, 0);
    screen->hide();
    m_screens.append(screen);
}

void MainWindow::showScreen(QWidget* screen, int number) {
    showScreen(screen, frameFor(number), true, 250);
}

void MainWindow::showScreen(QWidget* screen, const ScreenFrame& frame, bool toolbarShown, int fadeMs) {
    m_toolbar->setVisible(toolbarShown);
    for (QWidget* other : std::as_const(m_screens)) {
        if (other != screen)
            other->hide();
    }
    if (screen->isHidden()) {
        screen->show();
        fadeIn(screen, fadeMs);
    }
    applyFrame(frame);
}

void MainWindow::fadeIn(QWidget* screen, int fadeMs) {
    if (!isVisible())
        return;
    auto* effect = new QGraphicsOpacityEffect(screen);
    effect->setOpacity(0.0);
    screen->setGraphicsEffect(effect);
    auto* fade = new QPropertyAnimation(effect, "opacity", screen);
    fade->setDuration(fadeMs);
    fade->setStartValue(0.0);
    fade->setEndValue(1.0);
    // The effect goes once the screen is opaque: it would slow every later repaint.
    connect(fade, &QPropertyAnimation::finished, screen, [screen] { screen->setGraphicsEffect(nullptr); });
    fade->start(QAbstractAnimation::DeleteWhenStopped);
}

void MainWindow::applyFrame(const ScreenFrame& frame) {
    m_fullScreenAllowed = frame.fullScreen;
    if (!frame.fullScreen && isFullScreen())
        showNormal();
    m_resize->stop();

    if (!isVisible()) {
        setMinimumSize(frame.minimum);
        setMaximumSize(frame.maximum);
        resize(frame.size);
        if (!m_placed) {
            if (const QScreen* primary = QGuiApplication::primaryScreen()) {
                QRect placed(QPoint(), frame.size);
                placed.moveCenter(primary->availableGeometry().center());
                move(placed.topLeft());
            }
        }
        return;
    }
    m_placed = true;
    if (isFullScreen()) {
        setMinimumSize(frame.minimum);
        setMaximumSize(frame.maximum);
        return;
    }

    // The centre stays where it was: new origin = old origin + half the size difference.
    const QRect from = geometry();
    const QPoint origin
        = from.topLeft() + QPoint((from.width() - frame.size.width()) / 2, (from.height() - frame.size.height()) / 2);
    const QRect to(origin, frame.size);
    // While the frame moves the limits span both sizes; the screen's own limits apply at the end.
    setMinimumSize(frame.minimum.boundedTo(from.size()));
    setMaximumSize(frame.maximum.expandedTo(from.size()));
    m_resize->disconnect(this);
    connect(m_resize, &QPropertyAnimation::finished, this, [this, frame, to] {
        setMinimumSize(frame.minimum);
        setMaximumSize(frame.maximum);
        setGeometry(to);
    });
    m_resize->setStartValue(from);
    m_resize->setEndValue(to);
    m_resize->start();
}

void MainWindow::toggleFullScreen() {
    if (isFullScreen())
        showNormal();
    else if (m_fullScreenAllowed)
        showFullScreen();
}

void MainWindow::keepFocusIn(QWidget* area, QWidget* first) {
    const QWidget* focused = focusWidget();
    if (!focused || !focused->isVisible() || !area->isAncestorOf(focused))
        first->setFocus(Qt::OtherFocusReason);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (mayClose && !mayClose()) {
        event->ignore();
        return;
    }
    event->accept();
    emit closed();
}
