#include "app/progressView.h"

#include <QGridLayout>
#include <QLabel>

namespace {

QLabel* figureLabel(QWidget* parent, const char* name) {
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    QFont font = label->font();
    font.setPixelSize(26);
    font.setWeight(QFont::DemiBold);
    label->setFont(font);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setStyleSheet(QStringLiteral("color: #1d2126;"));
    return label;
}

QLabel* captionLabel(QWidget* parent, const QString& text) {
    auto* label = new QLabel(text, parent);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    label->setStyleSheet(QStringLiteral("color: #6b727b;"));
    return label;
}

} // namespace

progressView::progressView(QWidget* parent)
    : QWidget(parent)
    , m_scannCount(figureLabel(this, "scannCount"))
    , m_duplicateSize(figureLabel(this, "duplicateSize"))
    , m_duplicateCount(figureLabel(this, "duplicateCount")) {
    setObjectName(QStringLiteral("progressView"));
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(24, 18, 24, 22);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(4);
    grid->setRowStretch(0, 1);
    grid->setRowStretch(3, 1);
    grid->addWidget(m_scannCount, 1, 0);
    grid->addWidget(captionLabel(this, QStringLiteral("Items scanned")), 2, 0);
    grid->addWidget(m_duplicateCount, 1, 1);
    grid->addWidget(captionLabel(this, QStringLiteral("Duplicates found")), 2, 1);
    grid->addWidget(m_duplicateSize, 1, 2);
    grid->addWidget(captionLabel(this, QStringLiteral("Space they take")), 2, 2);
    for (int column = 0; column < 3; ++column)
        grid->setColumnStretch(column, 1);
    resetFigures();
}

void progressView::resetFigures() {
    m_scannCount->setText(QStringLiteral("0"));
    m_duplicateSize->setText(QStringLiteral("0 Byte"));
    m_duplicateCount->setText(QStringLiteral("0"));
}
