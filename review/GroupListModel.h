#pragma once

#include "controls/IconCache.h"
#include "detect/duplicates.h"
#include "review/FileSet.h"

#include <QAbstractListModel>
#include <optional>

class ResultLists;
class Selection;

// The rows of the group table: one per group of `duplicateDisplayArray`, in display order. A row
// gives the original's name and icon, the group's size (size of one copy times the number of
// files) and the two counts of its badge. Nothing is copied per row, so a result of any size
// reloads at once; icons are looked up when a row is first drawn.
class GroupListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        NameRole = Qt::UserRole + 1, // QString: last path component of the original
        SizeTextRole, // QString
        SelectedCountRole, // qsizetype as qlonglong: chosen files of the group
        FileCountRole, // qlonglong
        OriginalPathRole, // QByteArray
    };

    GroupListModel(const ResultLists& lists, const Selection& selection, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    DuplicateGroupPtr groupAt(qsizetype row) const;
    // After `duplicateDisplayArray` was rebuilt.
    void reload();
    // After the selection changed: the badges of one row, or of every row.
    void selectionChanged(qsizetype row = -1);
    // After the whole selection was replaced by one whose set of records `chosen` was made
    // elsewhere (on another thread): every row's badge, without making the set again.
    void selectionReplaced(FileSet chosen);

private:
    const ResultLists& m_lists;
    const Selection& m_selection;
    mutable std::optional<FileSet> m_chosen;
    mutable IconCache m_icons;
};
