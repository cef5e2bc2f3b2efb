#include "review/OlderFileModel.h"

#include "base/ByteCountFormatter.h"
#include "base/PathBytes.h"
#include "controls/AppIcons.h"

#include <QDateTime>
#include <QFont>
#include <QLocale>

void OlderFileModel::reload(const GroupDictionary* group, const QSet<QByteArray>& selected) {
    beginResetModel();
    m_group = group ? *group : GroupDictionary();
    m_selected = selected;
    endResetModel();
}

void OlderFileModel::refresh(const GroupDictionary* group, const QSet<QByteArray>& selected) {
    const qsizetype rows = group ? group->SameFileList.size() : 0;
    if (rows != m_group.SameFileList.size()) {
        reload(group, selected);
        return;
    }
    m_group = group ? *group : GroupDictionary();
    m_selected = selected;
    if (rows > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

bool OlderFileModel::isChosen(int row) const {
    return row >= 0 && row < m_group.SameFileList.size() && m_selected.contains(m_group.SameFileList.at(row).url);
}

bool OlderFileModel::isOriginal(int row) const {
    return row >= 0 && row < m_group.SameFileList.size() && m_group.SameFileList.at(row) == m_group.original;
}

QByteArray OlderFileModel::pathAt(int row) const {
    return row >= 0 && row < m_group.SameFileList.size() ? m_group.SameFileList.at(row).url : QByteArray();
}

int OlderFileModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_group.SameFileList.size());
}

int OlderFileModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant OlderFileModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_group.SameFileList.size())
        return {};
    const FileDictionary& file = m_group.SameFileList.at(index.row());
    const bool original = isOriginal(index.row());
    if (role == Qt::ToolTipRole)
        return QString(
            PathBytes::display(file.url) + (original ? QStringLiteral("\nThe original of this group") : QString()));
    if (role == Qt::FontRole && original) {
        QFont font;
        font.setBold(true);
        return font;
    }
    switch (index.column()) {
    case NameColumn:
        if (role == Qt::DisplayRole)
            return QString(PathBytes::display(PathBytes::lastPathComponent(file.url))
                + (original ? QStringLiteral("  (original)") : QString()));
        if (role == Qt::CheckStateRole)
            return isChosen(index.row()) ? Qt::Checked : Qt::Unchecked;
        if (role == Qt::DecorationRole) {
            auto icon = m_icons.constFind(file.url);
            if (icon == m_icons.constEnd())
                icon = m_icons.insert(file.url, AppIcons::iconForPath(file.url));
            return *icon;
        }
        break;
    case FolderColumn:
        if (role == Qt::DisplayRole)
            return PathBytes::display(PathBytes::deletingLastPathComponent(file.url));
        break;
    case DateColumn:
        if (role == Qt::DisplayRole)
            return QLocale().toString(QDateTime::fromMSecsSinceEpoch(file.dateNs / 1000000), QLocale::ShortFormat);
        break;
    case SizeColumn:
        if (role == Qt::DisplayRole)
            return ByteCountFormatter::decimal(file.FileSize);
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        break;
    default:
        break;
    }
    return {};
}

bool OlderFileModel::setData(const QModelIndex& index, const QVariant&, int role) {
    if (role != Qt::CheckStateRole || index.column() != NameColumn || !toggle)
        return false;
    toggle(index.row());
    return true;
}

Qt::ItemFlags OlderFileModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.isValid() && index.column() == NameColumn)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

QVariant OlderFileModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    static const char* const titles[] = { "Name", "Folder", "Created", "Size" };
    return section >= 0 && section < ColumnCount ? QString::fromLatin1(titles[section]) : QVariant();
}
