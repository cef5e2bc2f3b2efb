#include "app/FolderListModel.h"

#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "controls/AppIcons.h"
#include "review/StatusTexts.h"

#include <QFutureWatcher>
#include <QTimer>
#include <QtConcurrent>

namespace {

const QString kCalculating = QStringLiteral("Calculating...");
// The list is redrawn a moment after a size arrives, so that sizes finishing together redraw once.
constexpr int kReloadDelayMs = 100;

} // namespace

FolderListModel::FolderListModel(QObject* parent)
    : QAbstractListModel(parent) { }

FolderListModel::~FolderListModel() {
    // Walks still running end at their next item; their results go with the watchers.
    stopSizeWalks();
}

QList<QByteArray> FolderListModel::addFolders(const QList<QByteArray>& paths) {
    if (m_folderList.isEmpty())
        m_tempSizeCount.clear();
    QList<QByteArray> added;
    for (const QByteArray& path : paths) {
        if (m_folderList.contains(path)) {
            Log::line(QStringLiteral("added"));
            continue;
        }
        m_tempSizeCount.insert(path, kCalculating);
        const int row = static_cast<int>(m_folderList.size());
        beginInsertRows(QModelIndex(), row, row);
        m_folderList.append(path);
        endInsertRows();
        added.append(path);
        startSizeWalk(path);
    }
    return added;
}

bool FolderListModel::removeRow(int row) {
    if (row < 0 || row >= m_folderList.size())
        return false;
    stopSizeWalk(m_folderList.at(row));
    beginRemoveRows(QModelIndex(), row, row);
    m_folderList.removeAt(row);
    endRemoveRows();
    return true;
}

void FolderListModel::removeAll() {
    stopSizeWalks();
    beginResetModel();
    m_folderList.clear();
    endResetModel();
}

void FolderListModel::stopSizeWalk(const QByteArray& path) {
    if (const StopFlag stop = m_stops.take(path))
        stop->store(true);
}

void FolderListModel::stopSizeWalks() {
    for (const StopFlag& stop : std::as_const(m_stops))
        stop->store(true);
    m_stops.clear();
}

void FolderListModel::startSizeWalk(const QByteArray& path) {
    stopSizeWalk(path);
    const StopFlag stop = std::make_shared<std::atomic<bool>>(false);
    m_stops.insert(path, stop);
    auto* watcher = new QFutureWatcher<qint64>(this);
    m_watchers.append(watcher);
    connect(watcher, &QFutureWatcher<qint64>::finished, this, [this, watcher, path, stop] {
        m_watchers.removeOne(watcher);
        watcher->deleteLater();
        // A stopped walk's sum covers part of the folder only: it is not shown.
        if (stop->load())
            return;
        m_stops.remove(path);
        sizeWalkFinished(path, watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(
        [path, stop] { return FileSystem::sumUnit(path, FileSystem::SizeKey::Allocated, stop.get()).bytes; }));
}

void FolderListModel::sizeWalkFinished(const QByteArray& path, qint64 bytes) {
    m_tempSizeCount.insert(path, StatusTexts::convertNumberToString(bytes));
    emit sizeKnown(path);
    QTimer::singleShot(kReloadDelayMs, this, [this, path] {
        const qsizetype row = m_folderList.indexOf(path);
        if (row >= 0)
            emit dataChanged(index(static_cast<int>(row)), index(static_cast<int>(row)), { SizeRole });
    });
}

void FolderListModel::waitForSizes() {
    for (QObject* object : std::as_const(m_watchers))
        static_cast<QFutureWatcher<qint64>*>(object)->waitForFinished();
}

int FolderListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_folderList.size());
}

QVariant FolderListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_folderList.size())
        return {};
    const QByteArray& path = m_folderList.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return PathBytes::display(path);
    case Qt::DecorationRole:
        return AppIcons::folderIcon();
    case PathRole:
        return path;
    case NameRole: {
        const QByteArray name = PathBytes::lastPathComponent(path);
        return PathBytes::display(name.isEmpty() ? path : name);
    }
    case SizeRole:
        return m_tempSizeCount.value(path, kCalculating);
    case Qt::AccessibleTextRole:
        return QString(data(index, NameRole).toString() + QStringLiteral(", ") + data(index, SizeRole).toString());
    case Qt::AccessibleDescriptionRole:
        return PathBytes::display(path);
    default:
        return {};
    }
}
