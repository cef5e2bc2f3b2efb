#include "removal/RemovalListModel.h"

#include "base/PathBytes.h"
#include "removal/RemovalReview.h"

RemovalListModel::RemovalListModel(const RemovalReview& review, QObject* parent)
    : QAbstractListModel(parent)
    , m_review(review) { }

int RemovalListModel::rowCount(const QModelIndex& parent) const {
    if (parent.isValid())
        return 0;
    return static_cast<int>(m_outcomes ? m_outcomes->size() : m_review.numberOfRows());
}

DuplicateFilePtr RemovalListModel::fileAtRow(int row) const {
    if (!m_outcomes)
        return m_review.fileAtRow(row);
    return row >= 0 && row < m_outcomes->size() ? m_outcomes->at(row).file : nullptr;
}

RemovalListModel::StatusKind RemovalListModel::kindAtRow(int row) const {
    if (!m_outcomes)
        return m_review.leftReasonAtRow(row).isEmpty() ? Listed : WillBeLeft;
    const RemovalActions::Outcome& outcome = m_outcomes->at(row);
    return outcome.done ? Done : outcome.left ? Left : Failed;
}

QString RemovalListModel::reasonAtRow(int row) const {
    if (!m_outcomes)
        return m_review.leftReasonAtRow(row);
    const RemovalActions::Outcome& outcome = m_outcomes->at(row);
    return outcome.done ? QString() : outcome.error;
}

QString RemovalListModel::statusAtRow(int row) const {
    switch (kindAtRow(row)) {
    case Listed:
        return QString();
    case WillBeLeft:
    case Left:
        return QStringLiteral("left alone: ") + reasonAtRow(row);
    case Done:
        return m_doneText;
    case Failed:
        break;
    }
    const QString reason = reasonAtRow(row);
    return reason.isEmpty() ? QStringLiteral("not removed") : QStringLiteral("not removed: ") + reason;
}

QVariant RemovalListModel::data(const QModelIndex& index, int role) const {
    const DuplicateFilePtr file = fileAtRow(index.row());
    if (!file)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return PathBytes::display(file->urlFile());
    case Qt::ToolTipRole: {
        const QString status = statusAtRow(index.row());
        const QString path = PathBytes::display(file->urlFile());
        return status.isEmpty() ? path : QString(path + QLatin1Char('\n') + status);
    }
    case LeftReasonRole:
        return reasonAtRow(index.row());
    case StatusRole:
        return statusAtRow(index.row());
    case StatusKindRole:
        return kindAtRow(index.row());
    case Qt::AccessibleTextRole: {
        const QString status = statusAtRow(index.row());
        const QString path = PathBytes::display(file->urlFile());
        return status.isEmpty() ? path : QString(path + QStringLiteral(", ") + status);
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

void RemovalListModel::showOutcomes(const QList<RemovalActions::Outcome>& outcomes, const QString& doneText) {
    beginResetModel();
    m_outcomes = outcomes;
    m_doneText = doneText;
    endResetModel();
}

void RemovalListModel::reload() {
    beginResetModel();
    m_outcomes.reset();
    endResetModel();
}
