#include "removal/ScannedItem.h"

#include "base/PathBytes.h"

#include <QCryptographicHash>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ScannedItem {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr qsizetype kChunk = 1 << 20;

bool isBelowOrSame(const QByteArray& root, const QByteArray& path) {
    if (root == "/")
        return path.startsWith('/');
    return path == root || (path.startsWith(root) && path.at(root.size()) == '/');
}

// Opens `path` as a folder with every link in it followed, for paths of any length.
FileSystem::Fd openFollowing(const QByteArray& path) {
    if (path.size() < PATH_MAX - 1)
        return FileSystem::Fd(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    FileSystem::ParentRef parent = FileSystem::parentOf(path);
    if (!parent.ok)
        return FileSystem::Fd();
    return FileSystem::Fd(::openat(parent.dirFd, parent.leaf.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

Comparison compareFolders(int a, int b, dev_t deviceA, dev_t deviceB);

// Reads into `buffer` until `want` bytes are in, the file ends, or `enough` bytes are in: a file
// expected to end there is not read once more only to see its end. Answers the bytes read, or -1.
qint64 readUpTo(int fd, char* buffer, qint64 want, qint64 enough) {
    qint64 got = 0;
    while (got < want) {
        const ssize_t n = ::read(fd, buffer + got, static_cast<size_t>(want - got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -1;
        if (n == 0)
            break;
        got += n;
        if (got >= enough)
            break;
    }
    return got;
}

// Two files expected to be `size` bytes long, compared from where each stands.
Comparison compareOpenFiles(int a, int b, qint64 size, QCryptographicHash* hash = nullptr) {
    if (size > kChunk) {
        ::posix_fadvise(a, 0, 0, POSIX_FADV_SEQUENTIAL);
        ::posix_fadvise(b, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    // One pair of buffers per thread, as large as the largest file compared so far (up to a chunk):
    // a removal of many small files allocates nothing per file.
    thread_local std::vector<char> bufferA;
    thread_local std::vector<char> bufferB;
    const size_t needed = static_cast<size_t>(std::min<qint64>(kChunk, size + 1));
    if (bufferA.size() < needed) {
        bufferA.resize(needed);
        bufferB.resize(needed);
    }
    qint64 left = size;
    for (;;) {
        // The last chunk asks for one byte more than is left, so a file that grew shows.
        const qint64 want = std::min<qint64>(kChunk, left + 1);
        const qint64 enough = std::min(want, left);
        const qint64 n = readUpTo(a, bufferA.data(), want, enough);
        const qint64 m = readUpTo(b, bufferB.data(), want, enough);
        if (n < 0 || m < 0)
            return Comparison::Unreadable;
        if (n != m || n > left || std::memcmp(bufferA.data(), bufferB.data(), static_cast<size_t>(n)) != 0)
            return Comparison::Different;
        if (hash)
            hash->addData(QByteArrayView(bufferA.data(), n));
        left -= n;
        if (left == 0)
            return Comparison::Equal;
        if (n < enough)
            return Comparison::Different; // both ended early: they shrank since
    }
}

Comparison compareFilesAt(
    int dirA, const char* nameA, int dirB, const char* nameB, QCryptographicHash* hash = nullptr) {
    const FileSystem::Fd a(::openat(dirA, nameA, O_RDONLY | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    const FileSystem::Fd b(::openat(dirB, nameB, O_RDONLY | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    if (!a.isValid() || !b.isValid())
        return Comparison::Unreadable;
    struct stat sa;
    struct stat sb;
    if (::fstat(a.get(), &sa) != 0 || ::fstat(b.get(), &sb) != 0)
        return Comparison::Unreadable;
    if (sa.st_size != sb.st_size)
        return Comparison::Different;
    return compareOpenFiles(a.get(), b.get(), sa.st_size, hash);
}

QByteArray linkText(int dirFd, const char* name, bool& ok) {
    QByteArray text(4096, Qt::Uninitialized);
    for (;;) {
        const ssize_t n = ::readlinkat(dirFd, name, text.data(), static_cast<size_t>(text.size()));
        if (n < 0) {
            ok = false;
            return {};
        }
        if (n < text.size()) {
            text.truncate(n);
            ok = true;
            return text;
        }
        text.resize(text.size() * 2);
    }
}

// Compares the children called `name` of two open folders.
Comparison compareChildren(int a, int b, const QByteArray& name, dev_t deviceA, dev_t deviceB) {
    FileSystem::ItemInfo ia;
    FileSystem::ItemInfo ib;
    if (!FileSystem::statAt(a, name.constData(), ia) || !FileSystem::statAt(b, name.constData(), ib))
        return Comparison::Unreadable;
    if (ia.kind != ib.kind)
        return Comparison::Different;
    switch (ia.kind) {
    case FileSystem::Kind::Regular:
        if (ia.size != ib.size)
            return Comparison::Different;
        return compareFilesAt(a, name.constData(), b, name.constData());
    case FileSystem::Kind::Symlink: {
        bool okA = false;
        bool okB = false;
        const QByteArray textA = linkText(a, name.constData(), okA);
        const QByteArray textB = linkText(b, name.constData(), okB);
        if (!okA || !okB)
            return Comparison::Unreadable;
        return textA == textB ? Comparison::Equal : Comparison::Different;
    }
    case FileSystem::Kind::Directory: {
        if (ia.mountRoot || ib.mountRoot || ia.device != deviceA || ib.device != deviceB)
            return Comparison::OtherMount;
        const FileSystem::Fd childA(::openat(a, name.constData(), kFolderFlags));
        const FileSystem::Fd childB(::openat(b, name.constData(), kFolderFlags));
        if (!childA.isValid() || !childB.isValid())
            return Comparison::Unreadable;
        return compareFolders(childA.get(), childB.get(), deviceA, deviceB);
    }
    case FileSystem::Kind::Other: {
        struct stat sa;
        struct stat sb;
        if (::fstatat(a, name.constData(), &sa, AT_SYMLINK_NOFOLLOW) != 0
            || ::fstatat(b, name.constData(), &sb, AT_SYMLINK_NOFOLLOW) != 0)
            return Comparison::Unreadable;
        return (sa.st_mode & S_IFMT) == (sb.st_mode & S_IFMT) && sa.st_rdev == sb.st_rdev ? Comparison::Equal
                                                                                          : Comparison::Different;
    }
    case FileSystem::Kind::Missing:
        break;
    }
    return Comparison::Unreadable;
}

Comparison compareFolders(int a, int b, dev_t deviceA, dev_t deviceB) {
    QList<QByteArray> namesA;
    QList<QByteArray> namesB;
    if (FileSystem::listNames(a, namesA) != 0 || FileSystem::listNames(b, namesB) != 0)
        return Comparison::Unreadable;
    if (namesA.size() != namesB.size())
        return Comparison::Different;
    std::sort(namesA.begin(), namesA.end());
    std::sort(namesB.begin(), namesB.end());
    if (namesA != namesB)
        return Comparison::Different;
    // A difference anywhere decides; a folder that cannot be read is only reported when nothing
    // differs, so the more telling reason wins.
    Comparison worst = Comparison::Equal;
    for (const QByteArray& name : std::as_const(namesA)) {
        const Comparison result = compareChildren(a, b, name, deviceA, deviceB);
        if (result == Comparison::Different)
            return result;
        if (result != Comparison::Equal && worst == Comparison::Equal)
            worst = result;
    }
    return worst;
}

} // namespace

int Resolver::startFolder(const QByteArray& start, int& error) {
    auto found = m_starts.find(start);
    if (found == m_starts.end()) {
        FileSystem::Fd fd
            = start == "/" ? FileSystem::Fd(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) : openFollowing(start);
        if (!fd.isValid()) {
            error = errno;
            return -1;
        }
        found = m_starts.emplace(start, std::move(fd)).first;
    }
    return found->second.get();
}

Resolver::Route Resolver::routeTo(const QByteArray& path) const {
    Route route;
    QByteArray root;
    for (const QByteArray& candidate : std::as_const(m_roots)) {
        if (candidate.size() > root.size() && isBelowOrSame(candidate, path))
            root = candidate;
    }
    // The item's own folder is where descending stops; a target itself is reached from its parent.
    const QByteArray folder = PathBytes::deletingLastPathComponent(path);
    route.leaf = PathBytes::lastPathComponent(path);
    if (folder.isEmpty() || route.leaf.isEmpty()) {
        route.error = EINVAL;
        return route;
    }
    route.start = root.isEmpty() || root == path ? folder : root;
    if (root.isEmpty() || !isBelowOrSame(route.start, folder))
        route.start = QByteArrayLiteral("/");
    route.below = folder.mid(route.start == "/" ? 1 : route.start.size() + 1);
    return route;
}

FileSystem::Fd Resolver::openBelow(int startFd, const QByteArray& below, int& error) {
    if (below.isEmpty()) {
        FileSystem::Fd fd(::fcntl(startFd, F_DUPFD_CLOEXEC, 0));
        if (!fd.isValid())
            error = errno;
        return fd;
    }
    if (below.size() < PATH_MAX - 1) {
        struct open_how how { };
        how.flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
        how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS | RESOLVE_BENEATH;
        const long fd = ::syscall(SYS_openat2, startFd, below.constData(), &how, sizeof how);
        if (fd >= 0)
            return FileSystem::Fd(static_cast<int>(fd));
        if (errno != ENOSYS && errno != EINVAL && errno != EPERM) {
            error = errno;
            return FileSystem::Fd();
        }
    }
    // Without openat2: one folder at a time.
    FileSystem::Fd current(::fcntl(startFd, F_DUPFD_CLOEXEC, 0));
    for (const QByteArray& component : below.split('/')) {
        if (component.isEmpty() || !current.isValid())
            continue;
        FileSystem::Fd next(::openat(current.get(), component.constData(), kFolderFlags));
        if (!next.isValid()) {
            error = errno;
            return next;
        }
        current = std::move(next);
    }
    if (!current.isValid())
        error = errno;
    return current;
}

Place Resolver::reach(const QByteArray& path) {
    constexpr size_t kKeptOpen = 4;
    Place place;
    place.path = path;
    const qsizetype slash = path.lastIndexOf('/');
    if (slash > 0 && slash + 1 < path.size()) {
        // A folder reached for an earlier item: the check just before acting (stillLeadsTo) tells
        // whether its path still leads to it.
        const QByteArrayView folder(path.constData(), slash);
        for (auto it = m_folders.rbegin(); it != m_folders.rend(); ++it) {
            if (it->path == folder) {
                place.folder = it->fd;
                place.leaf = path.mid(slash + 1);
                place.cached = true;
                return place;
            }
        }
    }
    const Route route = routeTo(path);
    place.leaf = route.leaf;
    place.error = route.error;
    if (place.error)
        return place;
    const int startFd = startFolder(route.start, place.error);
    if (startFd < 0)
        return place;
    FileSystem::Fd fd = openBelow(startFd, route.below, place.error);
    struct stat st;
    if (!fd.isValid() || ::fstat(fd.get(), &st) != 0)
        return place;
    OpenFolder open { PathBytes::deletingLastPathComponent(path), std::make_shared<FileSystem::Fd>(std::move(fd)),
        st.st_dev, st.st_ino, startFd, route.below };
    place.folder = open.fd;
    if (m_folders.size() >= kKeptOpen)
        m_folders.erase(m_folders.begin());
    m_folders.push_back(std::move(open));
    return place;
}

bool Resolver::leadsTo(int startFd, const QByteArray& below, dev_t device, ino_t inode) {
    struct stat now;
    bool found = false;
    if (below.isEmpty()) {
        found = ::fstat(startFd, &now) == 0;
    } else if (below.size() < PATH_MAX - 1) {
        // One look-up by name, the last folder not followed: a folder swapped for a link or for
        // another folder no longer matches. The action itself goes through the open folder, so
        // whatever the path passes through cannot redirect it.
        found = ::fstatat(startFd, below.constData(), &now, AT_SYMLINK_NOFOLLOW) == 0;
    } else {
        int error = 0;
        const FileSystem::Fd fd = openBelow(startFd, below, error);
        found = fd.isValid() && ::fstat(fd.get(), &now) == 0;
    }
    return found && now.st_dev == device && now.st_ino == inode;
}

bool Resolver::stillLeadsTo(const Place& place) {
    if (!place.ok())
        return false;
    const auto open = std::find_if(
        m_folders.begin(), m_folders.end(), [&](const OpenFolder& folder) { return folder.fd == place.folder; });
    if (open != m_folders.end()) {
        if (leadsTo(open->startFd, open->below, open->device, open->inode))
            return true;
        m_folders.erase(open);
        return false;
    }
    struct stat held;
    const Route route = routeTo(place.path);
    int error = route.error;
    const int startFd = error ? -1 : startFolder(route.start, error);
    return startFd >= 0 && ::fstat(place.fd(), &held) == 0 && leadsTo(startFd, route.below, held.st_dev, held.st_ino);
}

Place reach(const QByteArray& path, const QList<QByteArray>& roots) {
    Resolver resolver(roots);
    return resolver.reach(path);
}

ItemIdentity identityAt(int dirFd, const QByteArray& leaf) {
    FileSystem::ItemInfo info;
    FileSystem::statAt(dirFd, leaf.constData(), info);
    return ItemIdentity::of(info);
}

namespace {

void describe(Look& look, const struct stat& st) {
    look.identity.device = st.st_dev;
    look.identity.inode = st.st_ino;
    look.identity.size = st.st_size;
    look.identity.modifiedNs = st.st_mtim.tv_sec * qint64(1000000000) + st.st_mtim.tv_nsec;
    look.identity.folder = S_ISDIR(st.st_mode);
    look.identity.known = true;
    look.mode = st.st_mode & 07777;
}

} // namespace

Look look(const Place& place, bool folder) {
    Look result;
    if (!place.ok())
        return result;
    struct stat st;
    if (!folder) {
        result.file = FileSystem::Fd(
            ::openat(place.fd(), place.leaf.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        if (result.file.isValid() && ::fstat(result.file.get(), &st) == 0) {
            describe(result, st);
            return result;
        }
        result.file = FileSystem::Fd();
    }
    // A folder, or what could not be opened (a link, something unreadable, nothing at all).
    if (::fstatat(place.fd(), place.leaf.constData(), &st, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0)
        describe(result, st);
    return result;
}

bool unchanged(const ItemIdentity& seen, const ItemIdentity& now) {
    if (!seen.known || !now.known || !seen.sameFileAs(now) || seen.folder != now.folder)
        return false;
    return seen.folder || (seen.size == now.size && seen.modifiedNs == now.modifiedNs);
}

Comparison compare(const Place& item, const Place& kept, bool folders, QByteArray* digest) {
    if (!folders) {
        QCryptographicHash hash(QCryptographicHash::Md5);
        const Comparison result = compareFilesAt(
            item.fd(), item.leaf.constData(), kept.fd(), kept.leaf.constData(), digest ? &hash : nullptr);
        if (digest && result == Comparison::Equal)
            *digest = hash.result().toHex();
        return result;
    }
    FileSystem::ItemInfo ia;
    FileSystem::ItemInfo ib;
    if (!FileSystem::statAt(item.fd(), item.leaf.constData(), ia)
        || !FileSystem::statAt(kept.fd(), kept.leaf.constData(), ib))
        return Comparison::Unreadable;
    const FileSystem::Fd a(::openat(item.fd(), item.leaf.constData(), kFolderFlags));
    const FileSystem::Fd b(::openat(kept.fd(), kept.leaf.constData(), kFolderFlags));
    if (!a.isValid() || !b.isValid())
        return Comparison::Unreadable;
    return compareFolders(a.get(), b.get(), ia.device, ib.device);
}

Comparison compareOpen(int a, int b, qint64 size, QByteArray* digest) {
    thread_local QCryptographicHash hash(QCryptographicHash::Md5);
    hash.reset();
    const Comparison result = compareOpenFiles(a, b, size, digest ? &hash : nullptr);
    if (digest && result == Comparison::Equal)
        *digest = hash.result().toHex();
    return result;
}

} // namespace ScannedItem
