#pragma once

#include "detect/duplicates.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// The five removal actions. Each walks the chosen files in order, one at a time, and goes on after
// any failure; failures are written to the log only, with the program's fixed texts. None of them
// touches the group lists (refreshAndReload does that). A file's kept copy is the `original` of
// the first group of `duplicateMainArray` holding that very record, unless that copy is itself
// among the chosen files (keeping the newest chooses the oldest); then it is the oldest copy that
// is not chosen. The replacements never give up a file for a link that cannot be made: with no kept
// copy left to point at, or a hard link that cannot reach it, the file stays and the failure is
// logged; when every copy of a group was chosen, the kept one stays and the others point at it.
namespace RemovalActions {

enum class Action { MoveToTrash, PermanentDelete, ReplaceWithAlias, ReplaceWithSymlink, ReplaceWithHardlink };

// "Move to Trash", "Permanent Delete", "Replace with Alias", "Replace with Symlink",
// "Replace with Hardlink": the items of the confirmation's pop-up, in this order.
QStringList actionTitles();
QString title(Action action);
// The action of a pop-up title; any title but the first four is the hard link.
Action actionForTitle(const QString& title);

// What happened to one file.
struct Outcome {
    DuplicateFilePtr file;
    QByteArray keptCopy; // empty when no group holds the file
    bool done = false; // removed and, for the replacements, the link made
    QString error; // why not, when not done
};

// The copy the chosen members of `group` are replaced by links to.
QByteArray keptCopyOf(const DuplicateGroupPtr& group, const QList<DuplicateFilePtr>& chosen);
QByteArray keptCopyOf(const duplicates& group, const std::function<bool(const DuplicateFilePtr&)>& isChosen);

// The group holding the very record `file` ("ANY listAll = file"), or none.
DuplicateGroupPtr groupOf(const QList<DuplicateGroupPtr>& duplicateMainArray, const DuplicateFilePtr& file);

// To the desktop trash. Logs "file %@ not removed" for a file that stays.
QList<Outcome> movetotrash(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removed for good, a folder with everything in it. Logs "file %@ not removed".
QList<Outcome> PermanentDelete(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removes the file ("error removing %@" on failure), then, whether or not that worked, writes the
// link file "<path>.Alise" to the kept copy ("::: %@" on failure).
QList<Outcome> makeAlias(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removes the file ("error removing %@"), then makes a symbolic link at its path to the kept
// copy's absolute path ("erroring for file alising %@ with error %@" on failure).
QList<Outcome> makeSymLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removes the file ("error removing", with no detail), then hard-links the kept copy at its path
// ("erroring for file alising %@ with error %@"; a folder or another file system is refused before
// anything is removed).
QList<Outcome> makeHardLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);

QList<Outcome> run(Action action, const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);

// The action on one file whose kept copy is already known (empty when no group holds the file);
// what `run` does for each file in turn (see RemovalRun).
Outcome runOne(Action action, const DuplicateFilePtr& file, const QByteArray& keptCopy);

} // namespace RemovalActions
