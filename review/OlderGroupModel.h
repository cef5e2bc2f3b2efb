#pragma once

#include "detect/GroupDictionary.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QIcon>
#include <QList>
#include <QSet>

// The group rows of the scan list's result page: one row per group dictionary shown, with the
// original's icon and name, "%lu of %lu" (chosen files of the group, then its files) and
// "Size: %@" (the group's total size). The model keeps its own copy of the shown groups and of the
// chosen paths, taken on the interface thread, so it never reads lists a scan is writing.
class OlderGroupModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { NameColumn, SelectedColumn, SizeColumn, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void reload(const QList<GroupDictionary>& groups, const QSet<QByteArray>& selected);
    // The chosen paths changed (or one group's original): the rows are redrawn, not rebuilt.
    void refresh(const QList<GroupDictionary>& groups, const QSet<QByteArray>& selected);
    const QList<GroupDictionary>& groups() const { return m_groups; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QList<GroupDictionary> m_groups;
    QSet<QByteArray> m_selected;
    mutable QHash<QByteArray, QIcon> m_icons;
};

// The number of a group's files that are among the chosen paths, and the sum of "FileSize" over
// the group's files.
qsizetype chosenCountIn(const GroupDictionary& group, const QSet<QByteArray>& selected);
qint64 groupBytes(const GroupDictionary& group);
