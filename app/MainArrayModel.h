#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QHash>
#include <QIcon>
#include <QList>

// The rows of the scan list's target table (`mainArray`): files and folders in the order added. The
// model keeps its own copy, taken on the interface thread by reload(), so a scan that reads or
// empties `mainArray` never races with the table's painting. Rows use the roles of the setup
// screen's folder list, so its row delegate draws them; the size column shows a file's size or
// "Folder".
class MainArrayModel : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void reload(const QList<QByteArray>& mainArray);
    const QList<QByteArray>& paths() const { return m_paths; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    QList<QByteArray> m_paths;
    mutable QHash<QByteArray, QString> m_sizes;
    mutable QHash<QByteArray, QIcon> m_icons;
};
