#include "review/FileListModel.h"

#include "base/PathBytes.h"
#include "review/Selection.h"
#include "review/StatusTexts.h"

FileListModel::FileListModel(const Selection& selection, QObject* parent)
    : QAbstractListModel(parent)
    , m_selection(selection)
    , m_icons(256) { }

int FileListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_group ? 0 : static_cast<int>(m_group->listAll().size());
}

DuplicateFilePtr FileListModel::fileAt(qsizetype row) const {
    if (!m_group || row < 0 || row >= m_group->listAll().size())
        return nullptr;
    return m_group->listAll().at(row);
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
    const DuplicateFilePtr file = fileAt(index.row());
    if (!file)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return PathBytes::display(PathBytes::lastPathComponent(file->urlFile()));
    case PathRole:
        return PathBytes::display(file->urlFile());
    case Qt::ToolTipRole: {
        const QByteArray folder = m_selection.protectingFolder(file->urlFile());
        const QString path = PathBytes::display(file->urlFile());
        return folder.isEmpty()
            ? path
            : path + QStringLiteral("\nNever chosen: inside the protected folder ") + PathBytes::display(folder);
    }
    case PathBytesRole:
        return file->urlFile();
    case Qt::DecorationRole:
        return m_icons.iconForPath(file->urlFile());
    case SizeTextRole:
        return StatusTexts::convertNumberToString(m_group->sizeFile());
    case CheckedRole:
        return m_selection.contains(file);
    case Qt::CheckStateRole:
        return m_selection.contains(file) ? Qt::Checked : Qt::Unchecked;
    case Qt::AccessibleTextRole: {
        const QString name = PathBytes::display(PathBytes::lastPathComponent(file->urlFile()));
        return file->urlFile() == m_group->original() ? QString(name + QStringLiteral(", original")) : name;
    }
    case Qt::AccessibleDescriptionRole:
        return QString(StatusTexts::convertNumberToString(m_group->sizeFile()) + QStringLiteral(", ")
            + data(index, Qt::ToolTipRole).toString());
    case OriginalRole:
        return file->urlFile() == m_group->original();
    default:
        return {};
    }
}

Qt::ItemFlags FileListModel::flags(const QModelIndex& index) const {
    // Checkable, so that assistive tools read each row's check box; the row's own delegate and the
    // screen change the choice.
    return QAbstractListModel::flags(index) | (index.isValid() ? Qt::ItemIsUserCheckable : Qt::NoItemFlags);
}

void FileListModel::setGroup(const DuplicateGroupPtr& group) {
    beginResetModel();
    m_group = group;
    endResetModel();
}

void FileListModel::selectionChanged() {
    if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1), { CheckedRole, Qt::CheckStateRole });
}
