#pragma once

#include "removal/RemovalActions.h"

#include <unordered_map>
#include <unordered_set>

// One removal action over the chosen files, carried out one file at a time so that a window can
// show progress and stay responsive between files. The files are handled in their order, each
// finished before the next starts; every file's group and kept copy are decided up front from the
// whole choice, exactly as RemovalActions::run decides them, with look-ups that stay fast for
// hundreds of thousands of files. The groups are read, never changed.
class RemovalRun {
public:
    RemovalRun(RemovalActions::Action action, const QList<DuplicateFilePtr>& files,
        const QList<DuplicateGroupPtr>& duplicateMainArray);

    RemovalActions::Action action() const { return m_action; }
    qsizetype total() const { return m_files.size(); }
    qsizetype done() const { return m_outcomes.size(); }
    bool atEnd() const { return done() >= total(); }

    // Handles the next file (on disk) and answers what happened to it. Not to be called at the end.
    const RemovalActions::Outcome& step();
    const QList<RemovalActions::Outcome>& outcomes() const { return m_outcomes; }

private:
    QByteArray keptCopyFor(const DuplicateFilePtr& file);

    RemovalActions::Action m_action;
    QList<DuplicateFilePtr> m_files;
    QList<RemovalActions::Outcome> m_outcomes;
    std::unordered_set<const duplicateFile*> m_chosen;
    // Each record's group: the first of the list that holds it.
    std::unordered_map<const duplicateFile*, DuplicateGroupPtr> m_groupOf;
    std::unordered_map<const duplicates*, QByteArray> m_keptCopies;
};
