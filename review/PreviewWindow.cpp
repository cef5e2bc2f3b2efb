#include "review/PreviewWindow.h"

#include "engine/PathBytes.h"
#include "review/PreviewView.h"

#include <QShortcut>
#include <QVBoxLayout>

PreviewWindow::PreviewWindow(QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_view(new PreviewView(this)) {
    setWindowTitle(tr("Preview"));
    resize(640, 560);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
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
    setWindowTitle(path.isEmpty() || path == "/" ? tr("Preview") : PathBytes::display(name));
}

QByteArray PreviewWindow::path() const {
    return m_view->path();
}
