#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <atomic>
#include <memory>

// The setup screen's folder list: `folderList` (byte paths in the order added) and `tempSizeCount`
// (path to the text shown as its size). Each new row's size is the sum of the allocated sizes
// below it, worked out on a pool thread; the row shows "Calculating..." until it is known. A walk
// stops when its row is removed, the list is emptied, or stopSizeWalks is called (a scan starts).
class FolderListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        PathRole = Qt::UserRole + 1, // QByteArray
        NameRole, // the last path component, for display
        SizeRole, // the size text
    };

    explicit FolderListModel(QObject* parent = nullptr);
    ~FolderListModel() override;

    const QList<QByteArray>& folderList() const { return m_folderList; }
    const QHash<QByteArray, QString>& tempSizeCount() const { return m_tempSizeCount; }

    // Appends the paths not yet listed, in order, and starts their size walks; a path already
    // listed is skipped with the log line "added". When the list is empty at entry the size texts
    // are forgotten first. Answers the paths appended.
    QList<QByteArray> addFolders(const QList<QByteArray>& paths);
    bool removeRow(int row);
    void removeAll();

    // Waits for the running size walks (tests and shutdown).
    void waitForSizes();
    // Stops every running size walk; the sizes stay unknown.
    void stopSizeWalks();
    // The size walks not yet ended (stopped ones included until they notice).
    qsizetype runningSizeWalks() const { return m_watchers.size(); }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;

signals:
    void sizeKnown(const QByteArray& path);

private:
    using StopFlag = std::shared_ptr<std::atomic<bool>>;
    void startSizeWalk(const QByteArray& path);
    void sizeWalkFinished(const QByteArray& path, qint64 bytes);
    void stopSizeWalk(const QByteArray& path);

    QList<QByteArray> m_folderList;
    QHash<QByteArray, QString> m_tempSizeCount;
    QList<QObject*> m_watchers;
    QHash<QByteArray, StopFlag> m_stops; // the running walk of each path
};
