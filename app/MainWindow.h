#pragma once

#include <QMainWindow>
#include <functional>

class MainToolbar;
class QPropertyAnimation;

// The single main window: the toolbar strip on top of `containtView`, which holds the three screens
// pinned to its edges. Only one screen is visible at a time; the window takes that screen's frame,
// size limits and full-screen rule.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    struct ScreenFrame {
        QSize size;
        QSize minimum;
        QSize maximum;
        bool resizable = false;
        bool fullScreen = false;
    };
    // The frame of screen 0 (setup), 1 (scanning) or 2 (result).
    static ScreenFrame frameFor(int screen);
    // The frame of the scan-list pages: the main page or the result page.
    static ScreenFrame olderFrameFor(bool result);

    explicit MainWindow(QWidget* parent = nullptr);

    MainToolbar* toolbar() const { return m_toolbar; }
    QWidget* containtView() const { return m_containtView; }

    // Adds a screen to `containtView`, hidden.
    void addScreen(QWidget* screen);
    // Shows `screen` faded in and hides the others, applies the frame of screen number `number`
    // and resizes keeping the window's centre (animated when the window is visible).
    void showScreen(QWidget* screen, int number);
    // The same with a frame of its own: `toolbarShown` says whether the main toolbar stays above
    // it (screens with a toolbar of their own hide it), `fadeMs` how long the fade-in takes.
    void showScreen(QWidget* screen, const ScreenFrame& frame, bool toolbarShown, int fadeMs);
    bool isFullScreenAllowed() const { return m_fullScreenAllowed; }
    void toggleFullScreen();
    // Gives the keyboard to `first` unless a shown control inside `area` has it already: after a
    // change of screen the focus never stays on a control that went away.
    void keepFocusIn(QWidget* area, QWidget* first);

    // Asked before the window closes (and the program quits); false keeps it open.
    std::function<bool()> mayClose;

signals:
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void applyFrame(const ScreenFrame& frame);
    void fadeIn(QWidget* screen, int fadeMs);

    MainToolbar* m_toolbar;
    QWidget* m_containtView;
    QList<QWidget*> m_screens;
    QPropertyAnimation* m_resize;
    bool m_fullScreenAllowed = false;
    bool m_placed = false;
};
