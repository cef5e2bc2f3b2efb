#pragma once

#include <QByteArray>
#include <QList>
#include <atomic>
#include <cstdint>
#include <functional>
#include <sys/types.h>

// Thin POSIX layer over byte paths: one statx per item (links never followed), descriptors that
// reach paths longer than PATH_MAX, and the summing walk used for folders compared as one unit.
namespace FileSystem {

enum class Kind : uint8_t { Missing, Regular, Directory, Symlink, Other };

struct ItemInfo {
    Kind kind = Kind::Missing;
    qint64 size = 0; // logical length (st_size)
    qint64 allocated = 0; // space on disk (st_blocks * 512)
    qint64 birthNs = 0; // creation time, when the file system records one
    qint64 modifiedNs = 0;
    qint64 changedNs = 0; // status change time: moves on with every change to the file
    bool hasBirth = false;
    bool mountRoot = false; // the root of a mount (a bind mount of the same file system included)
    dev_t device = 0;
    ino_t inode = 0;

    // The creation date as the scan uses it: the birth time, else the modification time.
    qint64 creationNs() const { return hasBirth ? birthNs : modifiedNs; }
};

class Fd {
public:
    Fd() = default;
    explicit Fd(int fd)
        : m_fd(fd) { }
    ~Fd();
    Fd(Fd&& other) noexcept
        : m_fd(other.release()) { }
    Fd& operator=(Fd&& other) noexcept;
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;

    int get() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }
    int release();

private:
    int m_fd = -1;
};

// The folder holding `path` and the last component, so that *at() calls reach any path. For paths
// that fit one system call the folder is the current directory and the leaf the whole path.
struct ParentRef {
    Fd owned;
    int dirFd = -1;
    QByteArray leaf;
    bool ok = false;
};
ParentRef parentOf(const QByteArray& path);

// Both fail with errno set as statx(2) left it.
bool statAt(int dirFd, const char* name, ItemInfo& out);
bool stat(const QByteArray& path, ItemInfo& out);

// The names in the open folder `dirFd` (without "." and ".."), read through a copy of the
// descriptor so `dirFd` stays usable; 0 or the errno value.
int listNames(int dirFd, QList<QByteArray>& names);

// What a scan target names: a symbolic link is followed, all the way, to the item it names (as an
// absolute path without links); any other item is returned as given. Empty when nothing is there,
// or the link dangles or loops.
QByteArray resolveTarget(const QByteArray& path);

// Writes all of `bytes`, going on after short writes and interruptions; 0 or the errno value.
int writeAll(int fd, const QByteArray& bytes);

// open(2) on a byte path of any length; the last component is never followed when it is a link.
int openPath(const QByteArray& path, int flags);

enum class SizeKey { Logical, Allocated };

struct UnitSum {
    qint64 bytes = 0;
    qint64 items = 0; // every item enumerated below the unit
    bool complete = true; // false when the walk stopped at an error
};

// Adds up the chosen size of every item below `path` (hidden items and bundle contents included,
// links not followed). Folders add nothing of their own. The walk stops at the first folder it
// cannot open (or when `stop` is set), and the sum covers what was seen before.
UnitSum sumUnit(const QByteArray& path, SizeKey key, const std::atomic<bool>* stop = nullptr);

// Visits every item below `path` in pre-order with its path (hidden items and bundle contents
// included, links not followed); stops at the first folder it cannot open and answers false then.
bool enumerateTree(const QByteArray& path, const std::function<void(const QByteArray&, const ItemInfo&)>& visit);

// The allocated size of an item: a folder's is the sum over everything beneath it; 0 when unknown.
qint64 fileSizeOf(const QByteArray& path);

} // namespace FileSystem
