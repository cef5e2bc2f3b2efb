#include "review/GroupListModel.h"

#include "base/PathBytes.h"
#include "review/ResultLists.h"
#include "review/Selection.h"
#include "review/StatusTexts.h"

GroupListModel::GroupListModel(const ResultLists& lists, const Selection& selection, QObject* parent)
    : QAbstractListModel(parent)
    , m_lists(lists)
    , m_selection(selection) { }

int GroupListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_lists.duplicateDisplayArray.size());
}

DuplicateGroupPtr GroupListModel::groupAt(qsizetype row) const {
    if (row < 0 || row >= m_lists.duplicateDisplayArray.size())
        return nullptr;
    return m_lists.duplicateDisplayArray.at(row);
}

QVariant GroupListModel::data(const QModelIndex& index, int role) const {
    const DuplicateGroupPtr group = groupAt(index.row());
    if (!group)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return PathBytes::display(PathBytes::lastPathComponent(group->original()));
    case Qt::DecorationRole:
        return m_icons.iconForPath(group->original());
    case SizeTextRole:
        return StatusTexts::convertNumberToString(group->sizeFile() * group->listAll().size());
    case SelectedCountRole:
        if (!m_chosen)
            m_chosen = m_selection.chosenSet();
        return static_cast<qlonglong>(m_chosen->countOf(group->listAll()));
    case FileCountRole:
        return static_cast<qlonglong>(group->listAll().size());
    case OriginalPathRole:
        return group->original();
    case Qt::ToolTipRole:
    case Qt::AccessibleDescriptionRole:
        return PathBytes::display(group->original());
    case Qt::AccessibleTextRole:
        // What a screen reader says of the row: what the painted row shows, badge included.
        return QStringLiteral("%1, %2, %3 of %4 chosen")
            .arg(data(index, NameRole).toString(), data(index, SizeTextRole).toString())
            .arg(data(index, SelectedCountRole).toLongLong())
            .arg(group->listAll().size());
    default:
        return {};
    }
}

void GroupListModel::reload() {
    beginResetModel();
    m_chosen.reset();
    m_icons.clear();
    endResetModel();
}

void GroupListModel::selectionReplaced(FileSet chosen) {
    m_chosen = std::move(chosen);
    if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1), { SelectedCountRole });
}

void GroupListModel::selectionChanged(qsizetype row) {
    m_chosen.reset();
    if (rowCount() == 0)
        return;
    if (row >= 0 && row < rowCount())
        emit dataChanged(index(static_cast<int>(row)), index(static_cast<int>(row)), { SelectedCountRole });
    else
        emit dataChanged(index(0), index(rowCount() - 1), { SelectedCountRole });
}
