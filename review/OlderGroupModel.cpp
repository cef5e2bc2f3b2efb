#include "review/OlderGroupModel.h"

#include "base/PathBytes.h"
#include "controls/AppIcons.h"
#include "review/StatusTexts.h"

#include <QFont>

qsizetype chosenCountIn(const GroupDictionary& group, const QSet<QByteArray>& selected) {
    qsizetype count = 0;
    for (const FileDictionary& file : group.SameFileList)
        count += selected.contains(file.url) ? 1 : 0;
    return count;
}

qint64 groupBytes(const GroupDictionary& group) {
    qint64 sum = 0;
    for (const FileDictionary& file : group.SameFileList)
        sum += file.FileSize;
    return sum;
}

void OlderGroupModel::reload(const QList<GroupDictionary>& groups, const QSet<QByteArray>& selected) {
    beginResetModel();
    m_groups = groups;
    m_selected = selected;
    endResetModel();
}

void OlderGroupModel::refresh(const QList<GroupDictionary>& groups, const QSet<QByteArray>& selected) {
    if (groups.size() != m_groups.size()) {
        reload(groups, selected);
        return;
    }
    m_groups = groups;
    m_selected = selected;
    if (!m_groups.isEmpty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

int OlderGroupModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_groups.size());
}

int OlderGroupModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant OlderGroupModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_groups.size())
        return {};
    const GroupDictionary& group = m_groups.at(index.row());
    const QByteArray& original = group.original.url;
    switch (index.column()) {
    case NameColumn:
        if (role == Qt::DisplayRole)
            return PathBytes::display(PathBytes::lastPathComponent(original));
        if (role == Qt::ToolTipRole)
            return PathBytes::display(original);
        if (role == Qt::DecorationRole) {
            auto icon = m_icons.constFind(original);
            if (icon == m_icons.constEnd())
                icon = m_icons.insert(original, AppIcons::iconForPath(original));
            return *icon;
        }
        break;
    case SelectedColumn:
        if (role == Qt::DisplayRole)
            return StatusTexts::listCountOf(chosenCountIn(group, m_selected), group.SameFileList.size());
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignCenter);
        if (role == Qt::ForegroundRole && chosenCountIn(group, m_selected) == 0)
            return QColor(0x8a, 0x90, 0x99);
        break;
    case SizeColumn:
        if (role == Qt::DisplayRole)
            return StatusTexts::listGroupSize(groupBytes(group));
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        break;
    default:
        break;
    }
    return {};
}

QVariant OlderGroupModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NameColumn:
        return QStringLiteral("Original");
    case SelectedColumn:
        return QStringLiteral("Chosen");
    case SizeColumn:
        return QStringLiteral("Size");
    default:
        return {};
    }
}
