#pragma once

#include "base/FileSystem.h"
#include "detect/duplicateFile.h"

#include <QByteArray>
#include <QList>
#include <map>
#include <memory>
#include <vector>

// Reaching an item of a scan result again without following a symbolic link the scan did not
// follow, and telling whether it is still the item the scan saw and still a copy of its kept copy.
// Every check and every action on an item goes through the one open folder that holds it, so a
// folder swapped for a link (or for another folder) after the check cannot redirect the action.
namespace ScannedItem {

// The open folder that holds an item, and the item's name in it.
struct Place {
    std::shared_ptr<const FileSystem::Fd> folder;
    QByteArray leaf;
    QByteArray path; // as the scan recorded it, for messages
    int error = 0; // why the folder could not be reached (ELOOP or ENOTDIR: a folder became a link)
    bool cached = false; // the folder was opened for an earlier item
    bool ok() const { return folder && folder->isValid(); }
    int fd() const { return folder ? folder->get() : -1; }
};

// Opens the folder holding an item: the scan target it lies in (the longest of the roots that is
// the item's path or a folder above it) is opened as the scan opened it, and the folders below it
// without following any link (openat2 with RESOLVE_NO_SYMLINKS in one call where the kernel has it,
// else one O_NOFOLLOW | O_DIRECTORY open per folder). An item that is a target itself is reached
// from the target's parent; with no target above it, from "/". Paths longer than PATH_MAX are
// reached too. The targets' folders are opened once per resolver, so a removal keeps one for its
// whole run, and the last few folders reached stay open for the next items in them: the copies of
// one folder follow each other in a removal, and so do their kept copies.
class Resolver {
public:
    explicit Resolver(const QList<QByteArray>& roots)
        : m_roots(roots) { }
    Place reach(const QByteArray& path);
    // Whether the item's path still leads, from its scan target, to the folder `place` holds (the
    // same device and inode). A folder that no longer does is not kept for later items.
    bool stillLeadsTo(const Place& place);
    // Drops the folders kept open, so that the next reach opens each again.
    void forget() { m_folders.clear(); }

private:
    struct Route {
        QByteArray start; // the folder reached from: a scan target, its parent or "/"
        QByteArray below; // the folders from there to the item's folder; empty for the start itself
        QByteArray leaf;
        int error = 0;
    };
    struct OpenFolder {
        QByteArray path;
        std::shared_ptr<const FileSystem::Fd> fd;
        dev_t device = 0;
        ino_t inode = 0;
        int startFd = -1; // the folder it was reached from, and the way down from there
        QByteArray below;
    };
    Route routeTo(const QByteArray& path) const;
    int startFolder(const QByteArray& start, int& error);
    FileSystem::Fd openBelow(int startFd, const QByteArray& below, int& error);
    bool leadsTo(int startFd, const QByteArray& below, dev_t device, ino_t inode);

    QList<QByteArray> m_roots;
    std::map<QByteArray, FileSystem::Fd> m_starts;
    std::vector<OpenFolder> m_folders; // most recently reached last
};

// One look-up without keeping anything open.
Place reach(const QByteArray& path, const QList<QByteArray>& roots);

// The identity of what is at `leaf` in `dirFd` now (links not followed); unknown when nothing is.
ItemIdentity identityAt(int dirFd, const QByteArray& leaf);

// What is at a place now. Unless `folder`, the item is opened (never through a link, and without
// waiting on a FIFO) and its identity is that of the open file, so that the bytes compared after are
// those of the item checked; what cannot be opened is looked at by name.
struct Look {
    ItemIdentity identity; // unknown when nothing is there
    uint mode = 0; // permission bits
    FileSystem::Fd file; // the open file; invalid for a folder or a file that could not be opened
};
Look look(const Place& place, bool folder);
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
// Compares two open files that were both `size` bytes long when looked at, from where each stands.
// Neither is read past one byte beyond that length, so a file that grew since differs; one that
// changed otherwise is for the check just before acting to find.
Comparison compareOpen(int a, int b, qint64 size, QByteArray* digest = nullptr);

} // namespace ScannedItem
