#pragma once

#include "removal/RemovalActions.h"
#include "removal/RemovalPlan.h"

// One removal action over the chosen files, carried out one item at a time so that a window can
// show progress and stay responsive between items. The plan is worked out up front from the whole
// choice and the groups on screen (which are read, never changed); then each step handles the next
// item of the plan: an item inside a chosen folder that went goes with it, an item the plan leaves
// is reported and not touched, every other item is checked and acted on.
class RemovalRun {
public:
    RemovalRun(RemovalActions::Action action, const QList<DuplicateFilePtr>& files,
        const QList<DuplicateGroupPtr>& duplicateMainArray, const QList<QByteArray>& roots = {},
        const QList<QByteArray>& protectedFolders = {});

    RemovalActions::Action action() const { return m_action; }
    const RemovalPlan& plan() const { return m_plan; }
    qsizetype total() const { return static_cast<qsizetype>(m_plan.items().size()); }
    qsizetype done() const { return m_outcomes.size(); }
    bool atEnd() const { return done() >= total(); }

    // Handles the next item (on disk) and answers what happened to it. Not to be called at the end.
    // After the last item the journal is flushed to the disk.
    const RemovalActions::Outcome& step();
    // Flushes the journal of a run stopped before its end.
    void stop() { m_journal.flush(); }
    const QList<RemovalActions::Outcome>& outcomes() const { return m_outcomes; }

private:
    RemovalActions::Action m_action;
    RemovalPlan m_plan;
    ScannedItem::Resolver m_resolver;
    Journal m_journal;
    QList<RemovalActions::Outcome> m_outcomes;
};
