#pragma once

#include "detect/duplicates.h"
#include "removal/Journal.h"
#include "removal/RemovalPlan.h"
#include "removal/ScannedItem.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// The five removal actions. Each works out a removal plan from the chosen files and the groups on
// screen (see RemovalPlan: no content loses its last copy), then walks the plan in order, one item
// at a time, and goes on after any failure. Just before an item is acted on it is reached again
// from its scan target without following links and checked: still the item the scan saw, not the
// same file as its kept copy, and equal to the kept copy byte for byte (a folder with its whole
// tree). An item that fails a check is left alone with a log line and an outcome saying why. None
// of them touches the group lists (refreshAndReload does that).
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
    bool left = false; // left alone by the plan or by the check before acting, never touched
    QByteArray leftBehind; // what is in the item's place now: the trash entry, the link or link file
    QByteArray trashInfo; // the trash entry's .trashinfo
    QString error; // why not, when not done
};

// The group holding the very record `file` ("ANY listAll = file"), or none.
DuplicateGroupPtr groupOf(const QList<DuplicateGroupPtr>& duplicateMainArray, const DuplicateFilePtr& file);

// To the desktop trash. Logs "file %@ not removed" for a file that stays.
QList<Outcome> movetotrash(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Removed for good, a folder with everything in it (never entering another mount). Logs
// "file %@ not removed".
QList<Outcome> PermanentDelete(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Writes the link file "<path>.Alise" to the kept copy ("::: %@" on failure), then removes the item
// ("error removing %@"; the link file goes again then).
QList<Outcome> makeAlias(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Puts a symbolic link to the kept copy's absolute path in the item's place ("erroring for file
// alising %@ with error %@" on failure, and the item stays).
QList<Outcome> makeSymLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);
// Puts a hard link to the kept copy in the file's place; a folder or another file system is refused
// before anything is touched ("erroring for file alising %@ with error %@").
QList<Outcome> makeHardLink(const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups);

// `roots` are the scan's targets: items are reached from the one they lie in (see ScannedItem).
QList<Outcome> run(Action action, const QList<DuplicateFilePtr>& files, const QList<DuplicateGroupPtr>& groups,
    const QList<QByteArray>& roots = {}, const QList<QByteArray>& protectedFolders = {});

// The action on one planned item: checks it and carries it out (see RemovalRun).
// With a journal, the item's record is written before it is touched (an item whose
// record cannot be written is left alone) and completed after.
Outcome actOn(
    Action action, const RemovalPlan::Item& item, ScannedItem::Resolver& resolver, Journal* journal = nullptr);

// "trash", "delete", "alias", "symlink", "hardlink": the actions as the command line and the
// journal name them, in the order of Action.
QStringList actionWords();

// The reasons the check before acting leaves an item.
QString changedText();
QString differsText();

// For tests: called with the item's path after every check and just before the action; empty in
// the program.
void setCheckedHook(std::function<void(const QByteArray&)> hook);

} // namespace RemovalActions
