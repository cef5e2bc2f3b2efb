#include "controls/TokenField.h"

#include "controls/AccessibleControls.h"

#include <QBoxLayout>
#include <QEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QScrollBar>
#include <functional>

namespace {

constexpr int chipSpacing = 4;

// Lays its items out left to right, wrapping to a new row where the width ends; the last item
// (the input) stretches over what is left of its row.
class FlowLayout : public QLayout {
public:
    using QLayout::QLayout;
    ~FlowLayout() override {
        while (QLayoutItem* item = takeAt(0))
            delete item;
    }

    void addItem(QLayoutItem* item) override { m_items.append(item); }
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem* itemAt(int index) const override { return m_items.value(index); }
    QLayoutItem* takeAt(int index) override {
        return index >= 0 && index < m_items.size() ? m_items.takeAt(index) : nullptr;
    }
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return arrange(QRect(0, 0, width, 0), false); }
    QSize sizeHint() const override { return minimumSize(); }
    QSize minimumSize() const override {
        QSize size;
        for (const QLayoutItem* item : m_items)
            size = size.expandedTo(item->minimumSize());
        const QMargins margins = contentsMargins();
        return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
    }
    void setGeometry(const QRect& rect) override {
        QLayout::setGeometry(rect);
        arrange(rect, true);
    }

private:
    int arrange(const QRect& rect, bool place) const {
        const QRect area = rect.marginsRemoved(contentsMargins());
        int x = area.x();
        int y = area.y();
        int rowHeight = 0;
        for (qsizetype i = 0; i < m_items.size(); ++i) {
            QLayoutItem* item = m_items.at(i);
            QSize size = item->sizeHint();
            if (x > area.x() && x + size.width() > area.right() + 1) {
                x = area.x();
                y += rowHeight + chipSpacing;
                rowHeight = 0;
            }
            if (i == m_items.size() - 1)
                size.setWidth(std::max(size.width(), area.right() + 1 - x));
            if (place)
                item->setGeometry(QRect(QPoint(x, y), size));
            x += size.width() + chipSpacing;
            rowHeight = std::max(rowHeight, size.height());
        }
        return y + rowHeight - rect.y() + contentsMargins().bottom();
    }

    QList<QLayoutItem*> m_items;
};

// One token: a rounded chip with its text and a remove mark at the right end. A click on the mark,
// or Delete and Backspace while the chip has the focus, removes it; the arrows move the focus along
// the chips (the field decides where to).
class TokenChip : public QWidget {
    Q_OBJECT

public:
    TokenChip(const QString& text, std::function<void()> remove, std::function<void(int)> step, QWidget* parent)
        : QWidget(parent)
        , m_text(text)
        , m_remove(std::move(remove))
        , m_step(std::move(step)) {
        setToolTip(text);
        setAccessibleName(text);
        setMouseTracking(true);
        setFocusPolicy(Qt::ClickFocus);
    }

    QSize sizeHint() const override {
        const QFontMetrics metrics(font());
        return { metrics.horizontalAdvance(m_text) + 10 + markWidth + 6, metrics.height() + 6 };
    }

    // The accessible press action.
    Q_INVOKABLE void remove() { m_remove(); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        const QColor accent = palette().color(QPalette::Highlight);
        QColor fill = accent;
        fill.setAlpha(hasFocus() ? 110 : 40);
        QColor border = accent;
        border.setAlpha(hasFocus() ? 255 : 110);
        painter.setPen(QPen(border, hasFocus() ? 1.5 : 1.0));
        painter.setBrush(fill);
        painter.drawRoundedRect(box, box.height() / 2, box.height() / 2);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(rect().adjusted(10, 0, -(markWidth + 6), 0), Qt::AlignVCenter | Qt::AlignLeft, m_text);
        const QRectF mark = markRect();
        QPen pen(m_hover ? palette().color(QPalette::Text) : palette().color(QPalette::PlaceholderText), 1.4);
        pen.setCapStyle(Qt::RoundCap);
        painter.setPen(pen);
        const QRectF cross = mark.adjusted(2.5, 2.5, -2.5, -2.5);
        painter.drawLine(cross.topLeft(), cross.bottomRight());
        painter.drawLine(cross.topRight(), cross.bottomLeft());
    }
    void keyPressEvent(QKeyEvent* event) override {
        switch (event->key()) {
        case Qt::Key_Delete:
        case Qt::Key_Backspace:
            m_remove();
            return;
        case Qt::Key_Left:
            m_step(-1);
            return;
        case Qt::Key_Right:
            m_step(1);
            return;
        default:
            QWidget::keyPressEvent(event);
        }
    }
    void focusInEvent(QFocusEvent*) override { update(); }
    void focusOutEvent(QFocusEvent*) override { update(); }
    void mouseMoveEvent(QMouseEvent* event) override {
        const bool hover = markRect().contains(event->position());
        if (hover != m_hover) {
            m_hover = hover;
            update();
        }
    }
    void leaveEvent(QEvent*) override {
        m_hover = false;
        update();
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton && markRect().contains(event->position()))
            m_remove();
    }

private:
    static constexpr int markWidth = 12;
    QRectF markRect() const {
        return { static_cast<qreal>(width() - markWidth - 6), (height() - markWidth) / 2.0,
            static_cast<qreal>(markWidth), static_cast<qreal>(markWidth) };
    }

    QString m_text;
    std::function<void()> m_remove;
    std::function<void(int)> m_step;
    bool m_hover = false;
};

} // namespace

TokenField::TokenField(QWidget* parent)
    : QFrame(parent)
    , m_scroll(new QScrollArea(this))
    , m_content(new QWidget)
    , m_input(new QLineEdit) {
    AccessibleControls::install();
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setFocusProxy(m_input);

    auto* flow = new FlowLayout(m_content);
    flow->setContentsMargins(4, 4, 4, 4);
    m_input->setFrame(false);
    m_input->setMinimumWidth(60);
    m_input->installEventFilter(this);
    flow->addWidget(m_input);

    m_scroll->setWidget(m_content);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->viewport()->setBackgroundRole(QPalette::Base);
    m_content->setBackgroundRole(QPalette::Base);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(1, 1, 1, 1);
    outer->addWidget(m_scroll);

    connect(m_input, &QLineEdit::textEdited, this, &TokenField::inputEdited);
}

void TokenField::setTokenizingCharacter(QChar character) {
    m_separator = character;
}

void TokenField::setText(const QString& text) {
    m_tokens.clear();
    for (const QString& piece : text.split(m_separator)) {
        if (!piece.isEmpty())
            m_tokens.append(piece);
    }
    m_input->clear();
    m_changed = false;
    rebuildChips();
}

QString TokenField::text() const {
    QStringList pieces = m_tokens;
    if (!m_input->text().isEmpty())
        pieces.append(m_input->text());
    return pieces.join(m_separator);
}

bool TokenField::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_input) {
        if (event->type() == QEvent::KeyPress) {
            const auto* key = static_cast<QKeyEvent*>(event);
            if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
                commitInput();
                finishEditing();
                return true;
            }
            if (key->key() == Qt::Key_Backspace && m_input->text().isEmpty() && !m_tokens.isEmpty()) {
                removeToken(m_tokens.size() - 1);
                return true;
            }
            // Left at the start of the input goes on to the last chip; what was typed becomes a
            // token first, as when the focus leaves the field.
            if (key->key() == Qt::Key_Left && key->modifiers() == Qt::NoModifier && m_input->cursorPosition() == 0
                && !m_input->hasSelectedText() && !text().isEmpty()) {
                commitInput();
                focusChip(m_tokens.size() - 1);
                return true;
            }
        } else if (event->type() == QEvent::FocusOut) {
            commitInput();
            finishEditing();
        }
    }
    return QFrame::eventFilter(watched, event);
}

void TokenField::inputEdited(const QString& typed) {
    if (!typed.contains(m_separator)) {
        m_changed = true;
        return;
    }
    QStringList pieces = typed.split(m_separator);
    const QString rest = pieces.takeLast();
    for (const QString& piece : pieces) {
        if (!piece.isEmpty())
            m_tokens.append(piece);
    }
    m_input->setText(rest);
    m_changed = true;
    rebuildChips();
}

void TokenField::commitInput() {
    if (m_input->text().isEmpty())
        return;
    m_tokens.append(m_input->text());
    m_input->clear();
    m_changed = true;
    rebuildChips();
}

void TokenField::removeToken(qsizetype index) {
    if (index < 0 || index >= m_tokens.size())
        return;
    // A chip removed from the keyboard hands the focus to the chip that takes its place.
    const QWidget* focused = window()->focusWidget();
    const bool chipFocused = focused && focused != m_input && m_content->isAncestorOf(focused);
    m_tokens.removeAt(index);
    m_changed = true;
    rebuildChips();
    if (chipFocused)
        focusChip(std::min(index, m_tokens.size() - 1));
    if (!m_input->hasFocus())
        finishEditing();
}

void TokenField::finishEditing() {
    if (!m_changed)
        return;
    m_changed = false;
    emit editingFinished();
}

void TokenField::rebuildChips() {
    QLayout* flow = m_content->layout();
    while (flow->count() > 1) {
        // A chip may be the one whose remove mark was just clicked: it goes once its event is over.
        QLayoutItem* item = flow->takeAt(0);
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    // Chips go before the input, which always stays last.
    flow->removeWidget(m_input);
    for (qsizetype i = 0; i < m_tokens.size(); ++i) {
        auto* chip = new TokenChip(
            m_tokens.at(i), [this, i] { removeToken(i); }, [this, i](int step) { focusChip(i + step); }, m_content);
        flow->addWidget(chip);
        // Shown now rather than when the layout gets to it, so that it can take the focus at once.
        chip->show();
    }
    flow->addWidget(m_input);
    flow->invalidate();
    m_content->updateGeometry();
    m_scroll->ensureWidgetVisible(m_input);
}

void TokenField::focusChip(qsizetype index) {
    // The chips stand in the layout in token order, the input after them: an index past the last
    // chip (or none left) is the input.
    const QLayout* flow = m_content->layout();
    const int at = static_cast<int>(std::clamp<qsizetype>(index, 0, flow->count() - 1));
    flow->itemAt(at)->widget()->setFocus(Qt::OtherFocusReason);
}

#include "TokenField.moc"
