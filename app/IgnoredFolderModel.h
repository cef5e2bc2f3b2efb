#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QIcon>
#include <QStringList>

// The rows of the ignored-folder table: one absolute folder path (bytes, shown as text) per row,
// with the folder icon.
// The model shows a copy of the list that it is given; the preferences window owns the real list
// and hands it over whenever the table should follow it.
//
// Dropped file URLs (text/uri-list) are accepted; only folders are taken from them, and they are
// reported through foldersDropped rather than inserted, so the window decides where they go.
class IgnoredFolderModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit IgnoredFolderModel(QObject* parent = nullptr);

    void setFolders(const QList<QByteArray>& folders);
    const QList<QByteArray>& folders() const { return m_folders; }
    // Removes the given rows (any order, repeats allowed) and tells the views.
    void removeRowsAt(QList<int> rows);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(
        const QMimeData* data, Qt::DropAction action, int row, int column, const QModelIndex& parent) const override;
    bool dropMimeData(
        const QMimeData* data, Qt::DropAction action, int row, int column, const QModelIndex& parent) override;

    // The local paths of a drop, as bytes (percent-decoded from the URLs, so any name survives).
    static QList<QByteArray> droppedPaths(const QMimeData* data);

signals:
    void foldersDropped(const QList<QByteArray>& folders);

private:
    QList<QByteArray> m_folders;
    mutable QIcon m_folderIcon; // looked up on first use, after the icon theme is set up
};
