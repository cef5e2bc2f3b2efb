#include "app/MainToolbar.h"

#include "controls/StripedProgressBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWindow>

namespace {

constexpr int kSideWidth = 140;
const QSize kImageSize(132, 32);
const char* const kImageProperty = "imageName";

// A button with a title is drawn like the image buttons: a rounded pill, blue while it can be pressed.
const QString kTitleStyle = QStringLiteral(
    "QPushButton { color: white; font-weight: bold; border: 1px solid #1c5fa8; border-radius: 15px;"
    " padding: 0 18px; background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #4a9be6, stop:1 #2371c9); }"
    "QPushButton:pressed { background: #1f64b3; }"
    "QPushButton:disabled { color: #f3f6f9; border-color: #b9c3ce;"
    " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #d3dbe4, stop:1 #c3cdd8); }"
    // The focus mark: a dark ring, the padding one point thinner so the button keeps its size.
    "QPushButton:focus { border: 2px solid #0e3763; padding: 0 17px; outline: none; }");
const QString kImageStyle
    = QStringLiteral("QPushButton { border: none; background: transparent; padding: 0; }"
                     "QPushButton:pressed { background: rgba(0, 0, 0, 25); border-radius: 16px; }"
                     "QPushButton:focus { border: 2px solid #2f80d0; border-radius: 18px; outline: none; }");

QString html(const QString& text) {
    return text.toHtmlEscaped().replace(QLatin1Char('\n'), QStringLiteral("<br>"));
}

QPushButton* makeButton(QWidget* parent) {
    auto* button = new QPushButton(parent);
    // Tab reaches the buttons (Space presses them); a click leaves the focus where it was.
    button->setFocusPolicy(Qt::TabFocus);
    button->setCursor(Qt::PointingHandCursor);
    QSizePolicy policy = button->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    button->setSizePolicy(policy);
    return button;
}

} // namespace

MainToolbar::MainToolbar(QWidget* parent)
    : QWidget(parent)
    , m_backButton(makeButton(this))
    , m_nextButton(makeButton(this))
    , m_textProgress(new QLabel(this))
    , m_progress(new StripedProgressBar(this)) {
    setFixedHeight(64);
    m_backButton->setObjectName(QStringLiteral("backButton"));
    m_nextButton->setObjectName(QStringLiteral("nextButton"));
    m_textProgress->setObjectName(QStringLiteral("textProgress"));
    m_textProgress->setTextFormat(Qt::RichText);
    m_textProgress->setAlignment(Qt::AlignCenter);
    m_progress->setFixedHeight(8);

    auto* left = new QHBoxLayout;
    left->setContentsMargins(0, 0, 0, 0);
    left->addWidget(m_backButton);
    left->addStretch();
    auto* leftSlot = new QWidget(this);
    leftSlot->setFixedWidth(kSideWidth);
    leftSlot->setLayout(left);

    auto* right = new QHBoxLayout;
    right->setContentsMargins(0, 0, 0, 0);
    right->addStretch();
    right->addWidget(m_nextButton);
    auto* rightSlot = new QWidget(this);
    rightSlot->setFixedWidth(kSideWidth);
    rightSlot->setLayout(right);

    auto* centre = new QVBoxLayout;
    centre->setContentsMargins(0, 0, 0, 0);
    centre->setSpacing(6);
    centre->addStretch();
    centre->addWidget(m_textProgress);
    centre->addWidget(m_progress);
    centre->addStretch();

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(12, 6, 12, 6);
    row->setSpacing(8);
    row->addWidget(leftSlot);
    row->addLayout(centre, 1);
    row->addWidget(rightSlot);

    for (const auto key : { Qt::Key_Return, Qt::Key_Enter }) {
        auto* shortcut = new QShortcut(QKeySequence(key), this);
        shortcut->setEnabled(false);
        connect(shortcut, &QShortcut::activated, m_nextButton, [this] {
            if (m_nextButton->isEnabled())
                m_nextButton->click();
        });
        m_startScanKeys.append(shortcut);
    }
}

void MainToolbar::setButton(
    QPushButton* button, bool hidden, bool bordered, bool enable, const QString& image, const QString& text) {
    button->setHidden(hidden);
    button->setFlat(!bordered);
    button->setEnabled(enable);
    button->setProperty(kImageProperty, image);
    if (!image.isEmpty()) {
        button->setStyleSheet(kImageStyle);
        button->setIcon(QIcon(QStringLiteral(":/images/") + image + QStringLiteral(".svg")));
        button->setIconSize(kImageSize);
        button->setText(QString());
        button->setToolTip(text);
        button->setAccessibleName(text);
        button->setFixedSize(kImageSize + QSize(4, 4));
    } else {
        button->setStyleSheet(bordered ? kTitleStyle : kImageStyle);
        button->setIcon(QIcon());
        button->setText(text);
        button->setToolTip(QString());
        button->setAccessibleName(QString());
        button->setMinimumSize(0, 0);
        button->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        button->setFixedHeight(32);
    }
}

QString MainToolbar::imageName(const QPushButton* button) {
    return button->property(kImageProperty).toString();
}

bool MainToolbar::applyState(int typetoolbar) {
    const QString startScan = QStringLiteral("Start Scan");
    const QString next = QStringLiteral("btn_next_step_enable");
    if (typetoolbar < 0 || typetoolbar > 6)
        return false;
    // Return is only taken while it starts a scan or shows what a scan found: elsewhere it belongs
    // to the focused control.
    for (QShortcut* shortcut : std::as_const(m_startScanKeys))
        shortcut->setEnabled(typetoolbar == 1 || typetoolbar == 4);
    switch (typetoolbar) {
    case 0:
    case 1:
        setButton(m_backButton, true, false, false, QString(), QString());
        setButton(m_nextButton, false, true, typetoolbar == 1, QString(), startScan);
        return true;
    case 2:
        setButton(m_backButton, true, false, false, QString(), QString());
        setButton(m_nextButton, false, false, false, next, QStringLiteral("Show duplicates"));
        return true;
    case 3:
        setButton(m_backButton, false, false, true, QStringLiteral("btn_start_again"), QStringLiteral("Start again"));
        setButton(m_nextButton, true, false, false, QString(), QString());
        return true;
    case 4:
        setButton(m_backButton, true, false, false, QString(), QString());
        setButton(m_nextButton, false, false, true, next, QStringLiteral("Show duplicates"));
        return true;
    case 5:
    case 6:
        setButton(m_backButton, false, false, true, QStringLiteral("btn_new_scan"), QStringLiteral("New scan"));
        setButton(m_nextButton, false, false, typetoolbar == 6, QStringLiteral("btn_move_to_trash"),
            QStringLiteral("Review and remove the selected duplicates"));
        return true;
    default:
        return false;
    }
}

void MainToolbar::setToolbarText(const QString& text) {
    m_plainText = text;
    m_textProgress->setAlignment(Qt::AlignCenter);
    m_textProgress->setContentsMargins(0, 0, 0, 0);
    const QString boldStyle = QStringLiteral("<span style=\"font-weight:bold; font-size:13px; color:#000000\">");
    for (const QString& phrase :
        { QStringLiteral("click on Remove for review."), QStringLiteral("Select duplicates for removal.") }) {
        if (text.contains(phrase)) {
            const QString head = text.left(text.size() - phrase.size());
            m_textProgress->setText(
                boldStyle + html(head) + QStringLiteral("</span>") + html(text.right(phrase.size())));
            return;
        }
    }
    m_textProgress->setText(html(text));
}

void MainToolbar::setStatusLine(const QString& text, qreal leftInset) {
    m_plainText = text;
    m_textLeftSpace = leftInset;
    m_textProgress->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_textProgress->setContentsMargins(qRound(leftInset), 0, 0, 0);
    m_textProgress->setText(QStringLiteral("<span style=\"font-weight:bold; font-size:13px; color:#000000\">")
        + html(text) + QStringLiteral("</span>"));
}

void MainToolbar::setBusyIndicatorShown(bool shown) {
    m_progress->setVisible(shown);
}

bool MainToolbar::isBusyIndicatorShown() const {
    return !m_progress->isHidden();
}

void MainToolbar::mousePressEvent(QMouseEvent* event) {
    // The window moves when its toolbar's background is dragged.
    if (event->button() == Qt::LeftButton && window()->windowHandle())
        window()->windowHandle()->startSystemMove();
    QWidget::mousePressEvent(event);
}

void paintToolbarBackground(QPainter& painter, const QWidget& toolbar) {
    const int height = toolbar.height();
    QLinearGradient gradient(0, 0, 0, height);
    gradient.setColorAt(0.0, QColor(0xf6, 0xf7, 0xf9));
    gradient.setColorAt(1.0, QColor(0xe4, 0xe7, 0xeb));
    painter.fillRect(toolbar.rect(), gradient);
    painter.setPen(QColor(0xc4, 0xc8, 0xce));
    painter.drawLine(0, height - 1, toolbar.width(), height - 1);
}

void MainToolbar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintToolbarBackground(painter, *this);
}
