#include "app/IgnoredFolderModel.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"
#include "controls/AppIcons.h"

#include <QMimeData>
#include <QUrl>
#include <algorithm>

IgnoredFolderModel::IgnoredFolderModel(QObject* parent)
    : QAbstractListModel(parent) { }

void IgnoredFolderModel::setFolders(const QList<QByteArray>& folders) {
    beginResetModel();
    m_folders = folders;
    endResetModel();
}

void IgnoredFolderModel::removeRowsAt(QList<int> rows) {
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (int row : rows) {
        if (row < 0 || row >= m_folders.size())
            continue;
        beginRemoveRows(QModelIndex(), row, row);
        m_folders.removeAt(row);
        endRemoveRows();
    }
}

int IgnoredFolderModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_folders.size());
}

QVariant IgnoredFolderModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_folders.size())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return PathBytes::display(m_folders.at(index.row()));
    case Qt::DecorationRole:
        if (m_folderIcon.isNull())
            m_folderIcon = AppIcons::folderIcon();
        return m_folderIcon;
    default:
        return {};
    }
}

Qt::ItemFlags IgnoredFolderModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

QStringList IgnoredFolderModel::mimeTypes() const {
    return { QStringLiteral("text/uri-list") };
}

Qt::DropActions IgnoredFolderModel::supportedDropActions() const {
    return Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
}

bool IgnoredFolderModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int, const QModelIndex&) const {
    return !droppedPaths(data).isEmpty();
}

bool IgnoredFolderModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int, int, const QModelIndex&) {
    if (action == Qt::IgnoreAction)
        return true;
    QList<QByteArray> folders;
    for (const QByteArray& path : droppedPaths(data)) {
        FileSystem::ItemInfo info;
        if (FileSystem::stat(path, info) && info.kind == FileSystem::Kind::Directory)
            folders.append(path);
    }
    if (folders.isEmpty())
        return false;
    emit foldersDropped(folders);
    return true;
}

QList<QByteArray> IgnoredFolderModel::droppedPaths(const QMimeData* data) {
    QList<QByteArray> paths;
    if (!data || !data->hasUrls())
        return paths;
    for (const QUrl& url : data->urls()) {
        if (!url.isLocalFile())
            continue;
        const QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
        if (!path.startsWith('/'))
            continue;
        paths.append(path.size() > 1 && path.endsWith('/') ? path.chopped(1) : path);
    }
    return paths;
}
