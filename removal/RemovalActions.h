#pragma once

#include "detect/duplicates.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

// The five removal actions. Each walks the chosen files in order, one at a time, and goes on after
// any failure; failures are written to the log only, with the program's fixed texts. None of them
// touches the group lists (refreshAndReload does that). A file's kept copy is the `original` of
// the first group of `duplicateMainArray` holding that very record.
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

// The group holding the very record `file` ("ANY listAll = file"), or none.
DuplicateGroupPtr groupOf(const QList<DuplicateGroupPtr>& duplicateMainArray, const DuplicateFilePtr& file);

// To the desktop trash. Logs "file %@ not removed" for a file that stays.
QList<Outcome> movetotrash(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removed for good, a folder with everything in it. Logs "file %@ not removed".
QList<Outcome> PermanentDelete(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removes the file ("error removing %@" on failure), then, whether or not that worked and when the
// kept copy can be found, writes the link file "<path>.Alise" to it ("::: %@" on failure). A kept
// copy that has gone gives no link file and no log line.
QList<Outcome> makeAlias(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removes the file ("error removing %@"), then makes a symbolic link at its path to the kept
// copy's absolute path ("erroring for file alising %@ with error %@" on failure).
QList<Outcome> makeSymLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removes the file ("error removing", with no detail), then hard-links the kept copy at its path
// ("erroring for file alising %@ with error %@"; folders and other file systems always fail).
QList<Outcome> makeHardLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);

QList<Outcome> run(Action action, const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);

} // namespace RemovalActions
