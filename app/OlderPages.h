#pragma once

#include <QWidget>

class OlderToolbar;
class QLabel;
class QStackedWidget;
class QToolButton;

// The scan-list pages as one screen of the main window: their own toolbar on top, the main page
// (`mainScreen`) or the result page (`ResultScreen`) under it, and the status line `bottomStatus`
// with the status popover's button `StatusWindowBTN` at the bottom.
class OlderPages : public QWidget {
    Q_OBJECT

public:
    OlderPages(QWidget* mainPage, QWidget* resultPage, QWidget* parent = nullptr);

    static constexpr int kFadeMs = 700;

    OlderToolbar* toolbar() const { return m_toolbar; }
    QLabel* bottomStatus() const { return m_bottomStatus; }
    QToolButton* StatusWindowBTN() const { return m_statusButton; }
    QWidget* currentPage() const;

    // Shows a page, fading it in over 0.7 s when it was not the one shown.
    void showPage(QWidget* page);

private:
    OlderToolbar* m_toolbar;
    QStackedWidget* m_pages;
    QLabel* m_bottomStatus;
    QToolButton* m_statusButton;
};
