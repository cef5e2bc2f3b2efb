#include "review/resultView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

resultView::resultView(QWidget* parent)
    : QWidget(parent)
    , m_searchALL(new QLineEdit(this))
    , m_summary(new QLabel(this)) {
    setObjectName(QStringLiteral("resultView"));
    m_searchALL->setObjectName(QStringLiteral("searchALL"));
    m_searchALL->setPlaceholderText(QStringLiteral("Search"));
    m_searchALL->setClearButtonEnabled(true);
    m_searchALL->setFixedWidth(220);
    m_summary->setAlignment(Qt::AlignCenter);
    m_summary->setStyleSheet(QStringLiteral("color: #6b727b;"));

    auto* top = new QHBoxLayout;
    top->addStretch();
    top->addWidget(m_searchALL);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 12, 16, 16);
    column->addLayout(top);
    column->addWidget(m_summary, 1);
}

void resultView::setSummary(const QString& text) {
    m_summary->setText(text);
}
