#pragma once

#include "controls/IconCache.h"

#include <QAbstractListModel>

class RemovalReview;

// The rows of the review list: the chosen files, in the order of the selection.
class RemovalListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        PathBytesRole = Qt::UserRole + 1,
        LeftReasonRole, // why the removal will leave the file alone; empty when it acts on it
    };

    explicit RemovalListModel(const RemovalReview& review, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // After the selection changed.
    void reload();
    // After only the reasons for leaving files alone changed: the rows stay, their texts change.
    void leftReasonsChanged();

private:
    const RemovalReview& m_review;
    mutable IconCache m_icons;
};
