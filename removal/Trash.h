#pragma once

#include <QByteArray>
#include <QDateTime>
#include <sys/types.h>

// The desktop trash, laid out as freedesktop.org describes for every desktop, over byte paths.
//
// An item on the file system of the home trash ($XDG_DATA_HOME/Trash, else
// ~/.local/share/Trash, made when missing) goes there. An item on another mount goes to
// $topdir/.Trash/$uid when $topdir/.Trash is a sticky folder and not a link, else to
// $topdir/.Trash-$uid, made when missing; a $uid or .Trash-$uid folder that is a link or is not the
// user's own is never used. The .trashinfo file (percent-encoded absolute Path,
// local DeletionDate) is created exclusively before the item is renamed into files/; a name taken
// in the trash gets a number before its extension ("a.2.txt"). Folders go whole. Nothing is ever
// copied: an item the rename cannot move (another file system, a read-only mount) stays where it
// is, and its .trashinfo is removed again.
namespace Trash {

struct Result {
    int error = 0; // errno value; 0 on success
    QByteArray trashDirectory; // the trash used (holding files/ and info/)
    QByteArray trashedPath; // where the item now is
    QByteArray infoPath; // its .trashinfo file
    bool ok() const { return error == 0; }
};

// Moves the item at the absolute path `path` to its trash.
Result moveToTrash(const QByteArray& path);
// Moves the item `leaf` of the open folder `dirFd` (the item at `path`, on `device`) to its trash.
// The trash's own folders are opened from the trash folder without following links.
Result moveToTrashAt(int dirFd, const QByteArray& leaf, const QByteArray& path, dev_t device);

// The home trash folder for the current environment (not created).
QByteArray homeTrashDirectory();
// The top folder of the mount holding `path`: its highest ancestor on `device`.
QByteArray topDirectoryOf(const QByteArray& path, dev_t device);

// The .trashinfo text for an item.
QByteArray trashInfo(const QByteArray& originalPath, const QDateTime& deletedAt);
// The n-th name tried for `name` in the trash: the name itself for n = 1, then the number before
// the extension ("a.txt" -> "a.2.txt", ".bashrc" -> ".bashrc.2").
QByteArray candidateName(const QByteArray& name, int n);

} // namespace Trash
