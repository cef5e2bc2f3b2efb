#include "review/PreviewWindow.h"

#include "base/PathBytes.h"
#include "review/PreviewView.h"

#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>

PreviewWindow::PreviewWindow(QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_view(new PreviewView(this))
    , m_name(new QLabel)
    , m_summary(new QLabel) {
    setWindowTitle(tr("Preview"));
    resize(640, 560);
    QFont nameFont = m_name->font();
    nameFont.setBold(true);
    m_name->setFont(nameFont);
    m_name->setAlignment(Qt::AlignCenter);
    m_summary->setAlignment(Qt::AlignCenter);
    m_summary->setForegroundRole(QPalette::PlaceholderText);
    auto* caption = new QVBoxLayout;
    caption->setContentsMargins(12, 2, 12, 10);
    caption->setSpacing(1);
    caption->addWidget(m_name);
    caption->addWidget(m_summary);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_view, 1);
    layout->addLayout(caption);
    for (const QKeySequence& key : { QKeySequence(Qt::Key_Space), QKeySequence(Qt::Key_Escape) }) {
        auto* shortcut = new QShortcut(key, this);
        connect(shortcut, &QShortcut::activated, this, &QWidget::close);
    }
}

bool PreviewWindow::toggle(const QByteArray& path) {
    if (isVisible()) {
        close();
        return false;
    }
    setPath(path);
    show();
    raise();
    activateWindow();
    return true;
}

void PreviewWindow::setPath(const QByteArray& path) {
    m_view->setPath(path);
    const QByteArray name = PathBytes::lastPathComponent(path);
    const bool empty = path.isEmpty() || path == "/";
    setWindowTitle(empty ? tr("Preview") : PathBytes::display(name));
    m_name->setText(empty ? QString() : PathBytes::display(name));
    m_summary->setText(m_view->summary());
}

void PreviewWindow::closeEvent(QCloseEvent* event) {
    // The keyboard goes back to the window the preview was opened from, where Space opened it.
    if (isActiveWindow() && parentWidget())
        parentWidget()->window()->activateWindow();
    QWidget::closeEvent(event);
}

QByteArray PreviewWindow::path() const {
    return m_view->path();
}
