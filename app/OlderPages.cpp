#include "app/OlderPages.h"

#include "app/OlderToolbar.h"

#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QLabel>
#include <QPropertyAnimation>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

OlderPages::OlderPages(QWidget* mainPage, QWidget* resultPage, QWidget* parent)
    : QWidget(parent)
    , m_toolbar(new OlderToolbar(this))
    , m_pages(new QStackedWidget(this))
    , m_bottomStatus(new QLabel(this))
    , m_statusButton(new QToolButton(this)) {
    setObjectName(QStringLiteral("olderPages"));
    m_pages->addWidget(mainPage);
    m_pages->addWidget(resultPage);

    m_bottomStatus->setObjectName(QStringLiteral("bottomStatus"));
    m_bottomStatus->setStyleSheet(QStringLiteral("color: #3a4047;"));
    m_statusButton->setObjectName(QStringLiteral("StatusWindowBTN"));
    m_statusButton->setIcon(QIcon::fromTheme(QStringLiteral("dialog-information")));
    m_statusButton->setIconSize(QSize(16, 16));
    m_statusButton->setAutoRaise(true);
    m_statusButton->setFocusPolicy(Qt::TabFocus);
    m_statusButton->setStyleSheet(
        QStringLiteral("QToolButton:focus { border: 2px solid #2f80d0; border-radius: 4px; outline: none; }"));
    m_statusButton->setAccessibleName(QStringLiteral("Scan figures"));
    m_statusButton->setToolTip(QStringLiteral("Show the figures of the last scan"));

    auto* strip = new QWidget(this);
    strip->setObjectName(QStringLiteral("statusStrip"));
    strip->setStyleSheet(QStringLiteral("#statusStrip { background: #eef0f3; border-top: 1px solid #d3d8de; }"));
    auto* stripLayout = new QHBoxLayout(strip);
    stripLayout->setContentsMargins(12, 3, 8, 3);
    stripLayout->addWidget(m_bottomStatus, 1);
    stripLayout->addWidget(m_statusButton);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_toolbar);
    column->addWidget(m_pages, 1);
    column->addWidget(strip);
}

QWidget* OlderPages::currentPage() const {
    return m_pages->currentWidget();
}

void OlderPages::showPage(QWidget* page) {
    if (m_pages->currentWidget() == page)
        return;
    m_pages->setCurrentWidget(page);
    if (!isVisible())
        return;
    auto* effect = new QGraphicsOpacityEffect(page);
    effect->setOpacity(0.0);
    page->setGraphicsEffect(effect);
    auto* fade = new QPropertyAnimation(effect, "opacity", page);
    fade->setDuration(kFadeMs);
    fade->setStartValue(0.0);
    fade->setEndValue(1.0);
    // The effect goes once the page is opaque: it would slow every later repaint.
    connect(fade, &QPropertyAnimation::finished, page, [page] { page->setGraphicsEffect(nullptr); });
    fade->start(QAbstractAnimation::DeleteWhenStopped);
}
