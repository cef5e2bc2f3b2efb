#pragma once

#include "detect/GroupDictionary.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QIcon>
#include <QSet>
#include <functional>

// The file rows of the current group on the scan list's result page, in the group's order (oldest
// first): a check box with the name (the original in bold), the folder, the creation date and the
// size. Ticking a box is handed to `toggle` with the row; the controller changes the selection and
// refreshes the model with it.
class OlderFileModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { NameColumn, FolderColumn, DateColumn, SizeColumn, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    std::function<void(int row)> toggle;

    // The group shown (none: an empty table) with the chosen paths.
    void reload(const GroupDictionary* group, const QSet<QByteArray>& selected);
    // The same group with another selection or original: the rows are redrawn, not rebuilt (a box
    // being clicked keeps its row).
    void refresh(const GroupDictionary* group, const QSet<QByteArray>& selected);
    bool isChosen(int row) const;
    bool isOriginal(int row) const;
    QByteArray pathAt(int row) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    GroupDictionary m_group;
    QSet<QByteArray> m_selected;
    mutable QHash<QByteArray, QIcon> m_icons;
};
