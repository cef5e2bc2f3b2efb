#pragma once

#include "base/FileSystem.h"
#include "detect/duplicateFile.h"

#include <QByteArray>
#include <QList>
#include <map>

// Reaching an item of a scan result again without following a symbolic link the scan did not
// follow, and telling whether it is still the item the scan saw and still a copy of its kept copy.
// Every check and every action on an item goes through the one open folder that holds it, so a
// folder swapped for a link (or for another folder) after the check cannot redirect the action.
namespace ScannedItem {

// The open folder that holds an item, and the item's name in it.
struct Place {
    FileSystem::Fd folder;
    QByteArray leaf;
    QByteArray path; // as the scan recorded it, for messages
    int error = 0; // why the folder could not be reached (ELOOP or ENOTDIR: a folder became a link)
    bool ok() const { return folder.isValid(); }
};

// Opens the folder holding an item: the scan target it lies in (the longest of the roots that is
// the item's path or a folder above it) is opened as the scan opened it, and the folders below it
// without following any link (openat2 with RESOLVE_NO_SYMLINKS in one call where the kernel has it,
// else one O_NOFOLLOW | O_DIRECTORY open per folder). An item that is a target itself is reached
// from the target's parent; with no target above it, from "/". Paths longer than PATH_MAX are
// reached too. The targets' folders are opened once per resolver, so a removal keeps one for its
// whole run.
class Resolver {
public:
    explicit Resolver(const QList<QByteArray>& roots)
        : m_roots(roots) { }
    Place reach(const QByteArray& path);

private:
    int startFolder(const QByteArray& start, int& error);

    QList<QByteArray> m_roots;
    std::map<QByteArray, FileSystem::Fd> m_starts;
};

// One look-up without keeping anything open.
Place reach(const QByteArray& path, const QList<QByteArray>& roots);

// The identity of what is at `leaf` in `dirFd` now (links not followed); unknown when nothing is.
ItemIdentity identityAt(int dirFd, const QByteArray& leaf);
// Whether `now` is the item the scan saw: the same kind, device and inode, and for a file the same
// length and modification time.
bool unchanged(const ItemIdentity& seen, const ItemIdentity& now);

enum class Comparison {
    Equal,
    Different,
    Unreadable, // something could not be opened or read
    OtherMount, // a folder holds the root of another mount, which a removal never enters
};

// Compares two items of the same kind byte for byte: files by their bytes, folders by their whole
// trees (the same names, hidden ones included; files by their bytes, links by their texts, folders,
// packages and hidden folders by their contents). Neither is followed where it is a link.
// For files, `digest` (when given) receives the MD5 of the item's bytes as read.
Comparison compare(const Place& item, const Place& kept, bool folders, QByteArray* digest = nullptr);

} // namespace ScannedItem
