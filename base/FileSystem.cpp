#include "base/FileSystem.h"

#include "base/PathBytes.h"

#include <QList>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

namespace FileSystem {

Fd::~Fd() {
    if (m_fd >= 0)
        ::close(m_fd);
}

Fd& Fd::operator=(Fd&& other) noexcept {
    if (this != &other) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = other.release();
    }
    return *this;
}

int Fd::release() {
    const int fd = m_fd;
    m_fd = -1;
    return fd;
}

ParentRef parentOf(const QByteArray& path) {
    ParentRef ref;
    if (path.size() < PATH_MAX - 1) {
        ref.dirFd = AT_FDCWD;
        ref.leaf = path;
        ref.ok = true;
        return ref;
    }
    // Too long for one call: descend one component at a time.
    const QList<QByteArray> parts = path.split('/');
    Fd current(::open(path.startsWith('/') ? "/" : ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!current.isValid())
        return ref;
    qsizetype last = parts.size() - 1;
    while (last > 0 && parts[last].isEmpty())
        --last;
    for (qsizetype i = 0; i < last; ++i) {
        if (parts[i].isEmpty())
            continue;
        Fd next(::openat(current.get(), parts[i].constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!next.isValid())
            return ref;
        current = std::move(next);
    }
    ref.leaf = parts[last];
    ref.dirFd = current.get();
    ref.owned = std::move(current);
    ref.ok = true;
    return ref;
}

#ifndef STATX_ATTR_MOUNT_ROOT
#define STATX_ATTR_MOUNT_ROOT 0x00002000
#endif

bool statAt(int dirFd, const char* name, ItemInfo& out) {
    struct statx sx;
    if (::statx(dirFd, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
            STATX_TYPE | STATX_MODE | STATX_UID | STATX_GID | STATX_SIZE | STATX_BLOCKS | STATX_BTIME | STATX_MTIME
                | STATX_CTIME | STATX_INO,
            &sx)
        != 0) {
        out = ItemInfo();
        return false;
    }
    switch (sx.stx_mode & S_IFMT) {
    case S_IFREG:
        out.kind = Kind::Regular;
        break;
    case S_IFDIR:
        out.kind = Kind::Directory;
        break;
    case S_IFLNK:
        out.kind = Kind::Symlink;
        break;
    default:
        out.kind = Kind::Other;
        break;
    }
    out.size = static_cast<qint64>(sx.stx_size);
    out.allocated = static_cast<qint64>(sx.stx_blocks) * 512;
    out.hasBirth = (sx.stx_mask & STATX_BTIME) && (sx.stx_btime.tv_sec != 0 || sx.stx_btime.tv_nsec != 0);
    out.birthNs = out.hasBirth ? sx.stx_btime.tv_sec * qint64(1000000000) + sx.stx_btime.tv_nsec : 0;
    out.modifiedNs = sx.stx_mtime.tv_sec * qint64(1000000000) + sx.stx_mtime.tv_nsec;
    out.changedNs = sx.stx_ctime.tv_sec * qint64(1000000000) + sx.stx_ctime.tv_nsec;
    out.device = makedev(sx.stx_dev_major, sx.stx_dev_minor);
    out.inode = sx.stx_ino;
#ifndef STATX_ATTR_MOUNT_ROOT
#define STATX_ATTR_MOUNT_ROOT 0x00002000
#endif

    return true;
}

bool stat(const QByteArray& path, ItemInfo& out) {
    ParentRef parent = parentOf(path);
    if (!parent.ok) {
        out = ItemInfo();
        return false;
    }
    return statAt(parent.dirFd, parent.leaf.constData(), out);
}

int listNames(int dirFd, QList<QByteArray>& names) {
    const int listFd = ::dup(dirFd);
    DIR* dir = listFd >= 0 ? ::fdopendir(listFd) : nullptr;
    if (!dir) {
        const int error = errno;
        if (listFd >= 0)
            ::close(listFd);
        return error;
    }
    ::rewinddir(dir);
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        names.append(QByteArray(name));
    }
    const int error = errno;
    ::closedir(dir);
    return error;
}

QByteArray resolveTarget(const QByteArray& path) {
    ItemInfo info;
    if (!stat(path, info))
        return QByteArray();
    if (info.kind != Kind::Symlink)
        return path;
    char* real = ::realpath(path.constData(), nullptr);
    if (!real)
        return QByteArray();
    const QByteArray resolved(real);
    ::free(real);
    return resolved;
}

int writeAll(int fd, const QByteArray& bytes) {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return n < 0 ? errno : EIO;
        written += n;
    }
    return 0;
}

int openPath(const QByteArray& path, int flags) {
    ParentRef parent = parentOf(path);
    if (!parent.ok)
        return -1;
    return ::openat(parent.dirFd, parent.leaf.constData(), flags | O_CLOEXEC | O_NOFOLLOW);
}

namespace {

struct Frame {
    DIR* dir;
    dev_t device;
    ino_t inode;
    QByteArray path; // kept only when the visitor wants paths
};

void closeAll(std::vector<Frame>& stack) {
    for (Frame& frame : stack)
        ::closedir(frame.dir);
    stack.clear();
}

// Pre-order walk below `root`, one statx per item, links not followed, a folder that is its own
// ancestor (a bind-mount loop) not entered. Stops at the first folder that cannot be opened, or
// when `stop` is set, and answers false then.
template <typename Visit>
bool walkBelow(const QByteArray& root, bool wantPaths, Visit visit, const std::atomic<bool>* stop = nullptr) {
    ItemInfo top;
    if (!stat(root, top) || top.kind != Kind::Directory)
        return false;
    const int fd = openPath(root, O_RDONLY | O_DIRECTORY);
    DIR* rootDir = fd >= 0 ? ::fdopendir(fd) : nullptr;
    if (!rootDir) {
        if (fd >= 0)
            ::close(fd);
        return false;
    }
    std::vector<Frame> stack;
    stack.push_back({ rootDir, top.device, top.inode, wantPaths ? root : QByteArray() });
    QByteArray path;
    while (!stack.empty()) {
        if (stop && stop->load(std::memory_order_relaxed)) {
            closeAll(stack);
            return false;
        }
        const dirent* entry = ::readdir(stack.back().dir);
        if (!entry) {
            ::closedir(stack.back().dir);
            stack.pop_back();
            continue;
        }
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        const int dirFd = ::dirfd(stack.back().dir);
        ItemInfo info;
        const bool known = statAt(dirFd, name, info);
        if (wantPaths)
            path = PathBytes::appendingComponent(stack.back().path, QByteArray(name));
        visit(path, info, known);
        if (!known || info.kind != Kind::Directory)
            continue;
        bool loop = false;
        for (const Frame& frame : stack)
            loop = loop || (frame.device == info.device && frame.inode == info.inode);
        if (loop)
            continue;
        const int childFd = ::openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        DIR* child = childFd >= 0 ? ::fdopendir(childFd) : nullptr;
        if (!child) {
            if (childFd >= 0)
                ::close(childFd);
            closeAll(stack);
            return false;
        }
        stack.push_back({ child, info.device, info.inode, path });
    }
    return true;
}

} // namespace

UnitSum sumUnit(const QByteArray& path, SizeKey key, const std::atomic<bool>* stop) {
    UnitSum sum;
    sum.complete = walkBelow(
        path, false,
        [&](const QByteArray&, const ItemInfo& info, bool known) {
            ++sum.items;
            if (known && info.kind != Kind::Directory)
                sum.bytes += key == SizeKey::Logical ? info.size : info.allocated;
        },
        stop);
    return sum;
}

bool enumerateTree(const QByteArray& path, const std::function<void(const QByteArray&, const ItemInfo&)>& visit) {
    return walkBelow(path, true, [&](const QByteArray& itemPath, const ItemInfo& info, bool known) {
        if (known)
            visit(itemPath, info);
    });
}

qint64 fileSizeOf(const QByteArray& path) {
    ItemInfo info;
    if (!stat(path, info))
        return 0;
    if (info.kind == Kind::Directory)
        return sumUnit(path, SizeKey::Allocated).bytes;
    return info.allocated;
}

} // namespace FileSystem
