#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

// The file-system steps of the removal actions, over byte paths of any length. Each answers 0 on
// success or the errno value of the first failure; none follows a symbolic link at the path given.
namespace FileOperations {

// Removes the item; a folder goes with everything in it. Nothing on another file system below a
// folder is entered: such a mount point fails with EXDEV and stays. The walk goes on past items
// it cannot remove and answers the first error met.
int removeItem(const QByteArray& path);

// Removes the item `leaf` of the open folder `dirFd` as removeItem does.
int removeAt(int dirFd, const QByteArray& leaf);

// Puts what `make(dirFd, name)` creates (a link; it answers 0 or errno) in the place of the item
// `leaf` of `dirFd`. The new item is made at a temporary name in the same folder and renamed over a
// file, or swapped with a folder in one step, so a failure leaves the old item or the new one in
// place, never neither; a replaced folder is then removed with everything in it.
int replaceAt(int dirFd, const QByteArray& leaf, const std::function<int(int, const char*)>& make);

// Whether anything (a dangling link included) is at the path.
bool exists(const QByteArray& path);

// The link file that stands in for an alias on Linux: a desktop entry of type Link whose URL is
// the percent-encoded file URL of `target` and whose name is the target's name.
QByteArray aliasFileContents(const QByteArray& target);
// Writes that file at `aliasPath`; an item already at that path is never replaced (EEXIST).
int writeAliasFile(const QByteArray& aliasPath, const QByteArray& target);
int writeAliasFileAt(int dirFd, const QByteArray& aliasLeaf, const QByteArray& target);

// A symbolic link at `path` holding `target` as it is.
int makeSymbolicLink(const QByteArray& path, const QByteArray& target);
// A hard link at `path` to `existing` (never to what a link there points at). Folders and other
// file systems fail (EPERM, EXDEV).
int makeHardLink(const QByteArray& path, const QByteArray& existing);

// The text of an errno value.
QString errorText(int error);

} // namespace FileOperations
