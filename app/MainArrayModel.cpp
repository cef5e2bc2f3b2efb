#include "app/MainArrayModel.h"

#include "app/FolderListModel.h"
#include "base/FileSystem.h"
#include "base/PathBytes.h"
#include "controls/AppIcons.h"
#include "review/StatusTexts.h"

void MainArrayModel::reload(const QList<QByteArray>& mainArray) {
    beginResetModel();
    m_paths = mainArray;
    m_sizes.clear();
    m_icons.clear();
    endResetModel();
}

int MainArrayModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_paths.size());
}

QVariant MainArrayModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_paths.size())
        return {};
    const QByteArray& path = m_paths.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return PathBytes::display(path);
    case Qt::DecorationRole: {
        auto icon = m_icons.constFind(path);
        if (icon == m_icons.constEnd())
            icon = m_icons.insert(path, AppIcons::iconForPath(path));
        return *icon;
    }
    case FolderListModel::PathRole:
        return path;
    case FolderListModel::NameRole: {
        const QByteArray name = PathBytes::lastPathComponent(path);
        return PathBytes::display(name.isEmpty() ? path : name);
    }
    case FolderListModel::SizeRole: {
        auto size = m_sizes.constFind(path);
        if (size == m_sizes.constEnd()) {
            FileSystem::ItemInfo info;
            QString text;
            if (!FileSystem::stat(path, info))
                text = QStringLiteral("Missing");
            else if (info.kind == FileSystem::Kind::Directory)
                text = QStringLiteral("Folder");
            else
                text = StatusTexts::convertNumberToString(info.allocated);
            size = m_sizes.insert(path, text);
        }
        return *size;
    }
    case Qt::AccessibleTextRole:
        return QString(data(index, FolderListModel::NameRole).toString() + QStringLiteral(", ")
            + data(index, FolderListModel::SizeRole).toString());
    case Qt::AccessibleDescriptionRole:
        return PathBytes::display(path);
    default:
        return {};
    }
}
