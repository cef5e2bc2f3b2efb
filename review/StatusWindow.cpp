#include "review/StatusWindow.h"

#include "controls/StripedProgressBar.h"
#include "engine/ScanState.h"
#include "review/StatusTexts.h"

#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

StatusWindow::StatusWindow(const ScanState& state, QWidget* parent)
    : QFrame(parent, Qt::Popup)
    , m_state(state)
    , m_scanned(new QLabel(this))
    , m_wasted(new QLabel(this))
    , m_found(new QLabel(this))
    , m_progress(new StripedProgressBar(this))
    , m_infiProgress(new StripedProgressBar(this)) {
    setObjectName(QStringLiteral("StatusWindow"));
    setFrameShape(QFrame::StyledPanel);
    setStyleSheet(QStringLiteral("#StatusWindow { background: #fbfbfc; border: 1px solid #b4bac2; border-radius: 8px; }"
                                 "QLabel { color: #1d2126; }"));
    auto* title = new QLabel(QStringLiteral("Scan status"), this);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    for (QLabel* figure : { m_scanned, m_wasted, m_found }) {
        figure->setFont(bold);
        figure->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    m_infiProgress->setIndeterminate(true);
    m_infiProgress->hide();

    auto* figures = new QFormLayout;
    figures->setLabelAlignment(Qt::AlignLeft);
    figures->addRow(QStringLiteral("Items scanned"), m_scanned);
    figures->addRow(QStringLiteral("Wasted space"), m_wasted);
    figures->addRow(QStringLiteral("Duplicates found"), m_found);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 12, 16, 14);
    column->setSpacing(8);
    column->addWidget(title);
    column->addLayout(figures);
    column->addWidget(m_progress);
    column->addWidget(m_infiProgress);
    setFixedWidth(260);
    set();
}

void StatusWindow::set() {
    m_scanned->setText(StatusTexts::popoverCount(m_state.totalCount));
    m_wasted->setText(StatusTexts::popoverWastedSpace(m_state.DuplicateWastedSpace));
    m_found->setText(StatusTexts::popoverCount(m_state.totalDuplicateCountFolder));
    if (!m_flo)
        m_progress->setValue(
            StatusTexts::popoverProgress(m_state.totalDuplicateCountFolderTemp, m_state.totalDuplicateCountFiles));
}

void StatusWindow::setINFIProcessBarShow(bool show) {
    m_infiProgress->setVisible(show);
    if (show)
        m_infiProgress->startAnimation();
    else
        m_infiProgress->stopAnimation();
}

void StatusWindow::setINFIProcessBarHide(bool hide) {
    setINFIProcessBarShow(!hide);
}

bool StatusWindow::isINFIProcessBarShown() const {
    return !m_infiProgress->isHidden();
}

void StatusWindow::showAgainst(QWidget* anchor) {
    set();
    adjustSize();
    const QPoint below = anchor->mapToGlobal(QPoint(0, anchor->height() + 4));
    QPoint at(below.x() + anchor->width() / 2 - width() / 2, below.y());
    if (const QScreen* screen = anchor->screen()) {
        const QRect area = screen->availableGeometry();
        if (at.y() + height() > area.bottom())
            at.setY(anchor->mapToGlobal(QPoint(0, 0)).y() - height() - 4);
        at.setX(std::clamp(at.x(), area.left(), std::max(area.left(), area.right() - width())));
    }
    move(at);
    show();
}

void StatusWindow::closein() {
    close();
}
