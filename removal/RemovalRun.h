#pragma once

#include "removal/RemovalActions.h"
#include "removal/RemovalPlan.h"

#include <vector>

// One removal action over the chosen files, carried out one item at a time so that a window can
// show progress and stay responsive between items. The plan is worked out up front from the whole
// choice and the groups on screen (which are read, never changed); then each step handles the next
// item: an item inside a chosen folder that went goes with it, an item the plan leaves is reported
// and not touched, every other item is checked and acted on. The items that lie in no chosen folder
// are handled folder by folder (in the plan's order within a folder), so that each folder is
// reached once for all its items; the items inside chosen folders come after them, in the plan's
// order.
class RemovalRun {
public:
    RemovalRun(RemovalActions::Action action, const QList<DuplicateFilePtr>& files,
        const QList<DuplicateGroupPtr>& duplicateMainArray, const QList<QByteArray>& roots = {},
        const QList<QByteArray>& protectedFolders = {});

    RemovalActions::Action action() const { return m_action; }
    const RemovalPlan& plan() const { return m_plan; }
    qsizetype total() const { return static_cast<qsizetype>(m_plan.items().size()); }
    qsizetype done() const { return m_handled; }
    bool atEnd() const { return done() >= total(); }

    // The item the next step handles. Not to be called at the end.
    const RemovalPlan::Item& next() const { return m_plan.items()[m_order[static_cast<size_t>(m_handled)]]; }
    // Handles the next item (on disk) and answers what happened to it. Not to be called at the end.
    // After the last item the journal is flushed to the disk.
    const RemovalActions::Outcome& step();
    // Flushes the journal of a run stopped before its end.
    void stop() { m_journal.flush(); }
    // One outcome per item of the plan, in the plan's order; an item not handled yet has no file.
    const QList<RemovalActions::Outcome>& outcomes() const { return m_outcomes; }

private:
    RemovalActions::Action m_action;
    RemovalPlan m_plan;
    ScannedItem::Resolver m_resolver;
    Journal m_journal;
    std::vector<size_t> m_order; // the plan's items in the order they are handled
    qsizetype m_handled = 0;
    QList<RemovalActions::Outcome> m_outcomes;
};
