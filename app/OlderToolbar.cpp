#include "app/OlderToolbar.h"

#include "app/MainToolbar.h"

#include "controls/StripedProgressBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

const QString kButtonStyle = QStringLiteral(
    "QToolButton { color: #1d2126; border: 1px solid transparent; border-radius: 6px; padding: 3px 6px; }"
    "QToolButton:hover { border-color: #b4bac2; background: rgba(255, 255, 255, 150); }"
    "QToolButton:pressed { background: #dfe3e8; }"
    "QToolButton:disabled { color: #a4abb4; }"
    "QToolButton:focus { border: 2px solid #2f80d0; padding: 2px 5px; outline: none; }");

QToolButton* makeButton(
    QWidget* parent, const QString& name, const QString& text, const QString& icon, const QString& toolTip) {
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(toolTip);
    button->setIcon(QIcon::fromTheme(icon));
    button->setIconSize(QSize(22, 22));
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    // Tab reaches the buttons (Space presses them); a click leaves the focus where it was.
    button->setFocusPolicy(Qt::TabFocus);
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(kButtonStyle);
    button->setMinimumWidth(64);
    return button;
}

void applyItem(QToolButton* button, const OlderToolbarItems::Item& item, bool enabled) {
    button->setHidden(item.hidden);
    button->setEnabled(enabled);
}

} // namespace

OlderToolbar::OlderToolbar(QWidget* parent)
    : QWidget(parent)
    , m_folderScan(makeButton(this, QStringLiteral("folderScan"), QStringLiteral("Folder Scan"),
          QStringLiteral("go-previous"), QStringLiteral("Leave the scan list and go back to the folder scan")))
    , m_Add(makeButton(this, QStringLiteral("_Add"), QStringLiteral("Add"), QStringLiteral("list-add"),
          QStringLiteral("Add files and folders to the scan list")))
    , m_scan(makeButton(this, QStringLiteral("_scan"), QStringLiteral("Scan"), QStringLiteral("system-search"),
          QStringLiteral("Scan the listed files and folders for duplicates")))
    , m_iPhoto(makeButton(this, QStringLiteral("_iPhoto"), QStringLiteral("Photo Library"),
          QStringLiteral("camera-photo"), QStringLiteral("Find duplicate pictures and videos in a photo library")))
    , m_showDuplicate(makeButton(this, QStringLiteral("_showDuplicate"), QStringLiteral("Duplicates"),
          QStringLiteral("edit-copy"), QStringLiteral("Show the duplicates the last scan found")))
    , m_Remove(makeButton(this, QStringLiteral("_Remove"), QStringLiteral("Remove…"), QStringLiteral("user-trash"),
          QStringLiteral("Review the chosen copies and remove them")))
    , m_ResetNewScanBTN(makeButton(this, QStringLiteral("ResetNewScanBTN"), QStringLiteral("New Scan"),
          QStringLiteral("view-refresh"), QStringLiteral("Forget this scan list and start a new folder scan")))
    , m_statusText(new QLabel(this))
    , m_progress(new StripedProgressBar(this)) {
    setObjectName(QStringLiteral("olderToolbar"));
    setFixedHeight(64);
    m_statusText->setObjectName(QStringLiteral("olderStatusText"));
    m_statusText->setAlignment(Qt::AlignCenter);
    m_statusText->setStyleSheet(QStringLiteral("font-weight: bold; color: #1d2126;"));
    m_progress->setFixedHeight(8);
    m_progress->hide();
    QSizePolicy keep = m_progress->sizePolicy();
    keep.setRetainSizeWhenHidden(true);
    m_progress->setSizePolicy(keep);

    auto* separator = new QWidget(this);
    separator->setFixedSize(1, 36);
    separator->setStyleSheet(QStringLiteral("background: #c4c8ce;"));

    auto* centre = new QVBoxLayout;
    centre->setSpacing(5);
    centre->addStretch();
    centre->addWidget(m_statusText);
    centre->addWidget(m_progress);
    centre->addStretch();

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 3, 8, 3);
    row->setSpacing(2);
    row->addWidget(m_folderScan);
    row->addSpacing(4);
    row->addWidget(separator);
    row->addSpacing(4);
    for (QToolButton* button : { m_Add, m_scan, m_iPhoto, m_showDuplicate })
        row->addWidget(button);
    row->addSpacing(12);
    row->addLayout(centre, 1);
    row->addSpacing(12);
    row->addWidget(m_Remove);
    row->addWidget(m_ResetNewScanBTN);
}

void OlderToolbar::apply(const OlderToolbarItems& items, bool scanRunning) {
    const bool back = items.Add.image == QLatin1String("NSGoLeftTemplate");
    m_Add->setText(back ? QStringLiteral("Back") : QStringLiteral("Add"));
    m_Add->setIcon(QIcon::fromTheme(back ? QStringLiteral("go-previous") : QStringLiteral("list-add")));
    m_Add->setToolTip(
        back ? QStringLiteral("Back to the scan list") : QStringLiteral("Add files and folders to the scan list"));
    applyItem(m_Add, items.Add, items.Add.enabled);
    applyItem(m_scan, items.scan, items.scan.enabled && !scanRunning);
    applyItem(m_iPhoto, items.iPhoto, items.iPhoto.enabled && !scanRunning);
    applyItem(m_showDuplicate, items.showDuplicate, items.showDuplicate.enabled);
    applyItem(m_Remove, items.Remove, items.Remove.enabled);
    applyItem(m_ResetNewScanBTN, items.ResetNewScanBTN, items.ResetNewScanBTN.enabled && !scanRunning);
    m_folderScan->setEnabled(!scanRunning);
    m_statusText->setText(items.statusText);
}

void OlderToolbar::setProgress(bool scanning, bool grouping, double fraction) {
    m_progress->setVisible(scanning);
    if (!scanning) {
        m_progress->stopAnimation();
        return;
    }
    if (m_progress->isIndeterminate() == grouping)
        m_progress->setIndeterminate(!grouping);
    m_progress->setValue(fraction);
    if (!m_progress->isAnimating())
        m_progress->startAnimation();
}

void OlderToolbar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintToolbarBackground(painter, *this);
}
