#include "app/PanelDialog.h"

#include <QAbstractItemView>
#include <QFileSystemModel>
#include <QIdentityProxyModel>
#include <QLabel>
#include <QLayout>

#include <algorithm>
#include <sys/stat.h>

namespace {

// Leaves every row visible but takes away the enabled flag of the items the delegate refuses.
class EnableFilter : public QIdentityProxyModel {
public:
    EnableFilter(std::function<bool(const QByteArray&)> shouldEnable, QObject* parent)
        : QIdentityProxyModel(parent)
        , m_shouldEnable(std::move(shouldEnable)) { }

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        Qt::ItemFlags flags = QIdentityProxyModel::flags(index);
        const QString path = index.data(QFileSystemModel::FilePathRole).toString();
        if (!path.isEmpty() && !m_shouldEnable(QFile::encodeName(path)))
            flags &= ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        return flags;
    }

private:
    std::function<bool(const QByteArray&)> m_shouldEnable;
};

bool isDirectory(const QByteArray& path) {
    struct stat st;
    return ::stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

} // namespace

PanelDialog::PanelDialog(const Prompter::OpenPanel& panel, QWidget* parent)
    : QFileDialog(parent)
    , m_panel(panel) {
    setOption(QFileDialog::DontUseNativeDialog);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(panel.title.isEmpty() ? panel.message : panel.title);
    setAcceptMode(QFileDialog::AcceptOpen);
    if (!panel.canChooseFiles) {
        setFileMode(QFileDialog::Directory);
        setOption(QFileDialog::ShowDirsOnly);
    } else {
        setFileMode(panel.allowsMultipleSelection ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    }
    setOption(QFileDialog::ReadOnly, !panel.canCreateDirectories);
    if (!panel.prompt.isEmpty())
        setLabelText(QFileDialog::Accept, panel.prompt);
    if (!panel.directory.isEmpty())
        setDirectory(QFile::decodeName(panel.directory));
    if (panel.shouldEnable)
        setProxyModel(new EnableFilter(panel.shouldEnable, this));

    // The toolkit's folder mode chooses one folder; its views can select several.
    if (panel.allowsMultipleSelection) {
        for (QAbstractItemView* view : findChildren<QAbstractItemView*>(QStringLiteral("listView")))
            view->setSelectionMode(QAbstractItemView::ExtendedSelection);
        for (QAbstractItemView* view : findChildren<QAbstractItemView*>(QStringLiteral("treeView")))
            view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    }
    // The toolkit relabels its button "Open" while a folder is selected; here it chooses folders too.
    if (panel.canChooseFiles && panel.canChooseDirectories && !panel.prompt.isEmpty()) {
        // Queued: the toolkit sets its own label after this signal.
        connect(
            this, &QFileDialog::currentChanged, this, [this] { setLabelText(QFileDialog::Accept, m_panel.prompt); },
            Qt::QueuedConnection);
    }
    if (!panel.message.isEmpty()) {
        auto* message = new QLabel(panel.message, this);
        message->setWordWrap(true);
        if (auto* grid = qobject_cast<QGridLayout*>(layout()))
            grid->addWidget(message, grid->rowCount(), 0, 1, grid->columnCount());
    }
}

QList<QByteArray> PanelDialog::candidates(bool* fromSelection) const {
    QList<QByteArray> paths;
    // Selected rows of the visible view first: the line edit holds only one folder name.
    for (QAbstractItemView* view : findChildren<QAbstractItemView*>()) {
        if (!view->isVisible() || !view->selectionModel()
            || (view->objectName() != QLatin1String("listView") && view->objectName() != QLatin1String("treeView")))
            continue;
        for (const QModelIndex& index : view->selectionModel()->selectedRows()) {
            const QString path = index.data(QFileSystemModel::FilePathRole).toString();
            if (!path.isEmpty())
                paths.append(QFile::encodeName(path));
        }
    }
    *fromSelection = !paths.isEmpty();
    if (paths.isEmpty()) {
        for (const QString& path : selectedFiles())
            paths.append(QFile::encodeName(path));
    }
    if (!m_panel.allowsMultipleSelection && paths.size() > 1)
        paths = paths.mid(0, 1);
    return paths;
}

void PanelDialog::accept() {
    bool fromSelection = false;
    const QList<QByteArray> paths = candidates(&fromSelection);
    if (m_panel.shouldEnable) {
        for (const QByteArray& path : paths) {
            if (!m_panel.shouldEnable(path))
                return; // stays open: that folder cannot be chosen here
        }
    }
    m_chosen = paths;
    // Where files and folders may both be chosen, the toolkit would open a folder picked in the
    // list instead of choosing it; the panel's button chooses it. A typed folder is still opened.
    if (m_panel.canChooseFiles && m_panel.canChooseDirectories && fromSelection
        && std::any_of(paths.begin(), paths.end(), isDirectory)) {
        QDialog::accept();
        return;
    }
    QFileDialog::accept();
}
