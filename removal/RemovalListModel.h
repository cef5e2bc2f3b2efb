#pragma once

#include "controls/IconCache.h"
#include "removal/RemovalActions.h"

#include <QAbstractListModel>
#include <optional>

class RemovalReview;

// The rows of the review list: the chosen files, in the order of the selection; once a removal has
// run and left anything, what it did with each item it was given, until the list is reloaded.
class RemovalListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        PathBytesRole = Qt::UserRole + 1,
        LeftReasonRole, // why the removal will leave (or left) the file alone; empty when it acts on it
        StatusRole, // the row's status text ("left alone: …", "moved to the trash"); empty for none
        StatusKindRole, // a StatusKind
    };
    enum StatusKind {
        Listed, // to be acted on
        WillBeLeft, // to be left alone, so that a copy of every content stays
        Done, // acted on
        Left, // left alone: by the plan, by the check before acting, or not reached after a cancel
        Failed, // tried, and failed
    };

    explicit RemovalListModel(const RemovalReview& review, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // After the selection changed; the rows are the chosen files again.
    void reload();
    // After only the reasons for leaving files alone changed: the rows stay, their texts change.
    void leftReasonsChanged();
    // The rows become what a removal did: each item with `doneText` (what the action made of it)
    // or the reason it was left alone.
    void showOutcomes(const QList<RemovalActions::Outcome>& outcomes, const QString& doneText);
    bool isShowingOutcomes() const { return m_outcomes.has_value(); }

private:
    DuplicateFilePtr fileAtRow(int row) const;
    StatusKind kindAtRow(int row) const;
    QString reasonAtRow(int row) const;
    QString statusAtRow(int row) const;

    const RemovalReview& m_review;
    std::optional<QList<RemovalActions::Outcome>> m_outcomes;
    QString m_doneText;
    mutable IconCache m_icons;
};
