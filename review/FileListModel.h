#pragma once

#include "controls/IconCache.h"
#include "detect/duplicates.h"

#include <QAbstractListModel>

class Selection;

// The rows of the file table: the files of the current group in `listAll` order (oldest first).
// A row gives the file's name, its full path, the size of one copy, and whether it is chosen.
class FileListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        NameRole = Qt::UserRole + 1, // QString
        PathRole, // QString: the full path for display
        PathBytesRole, // QByteArray
        SizeTextRole, // QString
        CheckedRole, // bool: in the selection
        OriginalRole, // bool: the group's original
    };

    explicit FileListModel(const Selection& selection, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Shows the files of `group` (none: no rows).
    void setGroup(const DuplicateGroupPtr& group);
    const DuplicateGroupPtr& group() const { return m_group; }
    DuplicateFilePtr fileAt(qsizetype row) const;
    // After the selection changed: the check boxes are redrawn.
    void selectionChanged();

private:
    const Selection& m_selection;
    DuplicateGroupPtr m_group;
    mutable IconCache m_icons;
};
