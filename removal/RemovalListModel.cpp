#include "removal/RemovalListModel.h"

#include "base/PathBytes.h"
#include "removal/RemovalReview.h"

RemovalListModel::RemovalListModel(const RemovalReview& review, QObject* parent)
    : QAbstractListModel(parent)
    , m_review(review) { }

int RemovalListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_review.numberOfRows());
}

QVariant RemovalListModel::data(const QModelIndex& index, int role) const {
    const DuplicateFilePtr file = m_review.fileAtRow(index.row());
    if (!file)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return PathBytes::display(file->urlFile());
    case Qt::ToolTipRole: {
        const QString reason = m_review.leftReasonAtRow(index.row());
        const QString path = PathBytes::display(file->urlFile());
        return reason.isEmpty() ? path : path + QStringLiteral("\nLeft alone: ") + reason;
    }
    case LeftReasonRole:
        return m_review.leftReasonAtRow(index.row());
    case Qt::AccessibleTextRole: {
        const QString reason = m_review.leftReasonAtRow(index.row());
        const QString path = PathBytes::display(file->urlFile());
        return reason.isEmpty() ? path : QString(path + QStringLiteral(", left alone: ") + reason);
    }
    case Qt::DecorationRole:
        return m_icons.iconForPath(file->urlFile());
    case PathBytesRole:
        return file->urlFile();
    default:
        return {};
    }
}

void RemovalListModel::leftReasonsChanged() {
    if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1));
}

void RemovalListModel::reload() {
    beginResetModel();
    endResetModel();
}
