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

Comparison compareOpenFiles(int a, int b, QCryptographicHash* hash = nullptr) {
    struct stat sa;
    struct stat sb;
    if (::fstat(a, &sa) != 0 || ::fstat(b, &sb) != 0)
        return Comparison::Unreadable;
    if (sa.st_size != sb.st_size)
        return Comparison::Different;
    if (sa.st_size > kChunk) {
        ::posix_fadvise(a, 0, 0, POSIX_FADV_SEQUENTIAL);
        ::posix_fadvise(b, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    const qsizetype chunk = std::min<qsizetype>(kChunk, static_cast<qsizetype>(sa.st_size) + 1);
    QByteArray bufferA(chunk, Qt::Uninitialized);
    QByteArray bufferB(chunk, Qt::Uninitialized);
    for (;;) {
        const ssize_t n = ::read(a, bufferA.data(), static_cast<size_t>(chunk));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return Comparison::Unreadable;
        // Read the same amount from the other file; it may come in pieces.
        ssize_t got = 0;
        while (got < n) {
            const ssize_t m = ::read(b, bufferB.data() + got, static_cast<size_t>(n - got));
            if (m < 0 && errno == EINTR)
                continue;
            if (m < 0)
                return Comparison::Unreadable;
            if (m == 0)
                return Comparison::Different;
            got += m;
        }
        if (n == 0) {
            char extra;
            const ssize_t m = ::read(b, &extra, 1);
            return m == 0 ? Comparison::Equal : (m < 0 ? Comparison::Unreadable : Comparison::Different);
        }
        if (std::memcmp(bufferA.constData(), bufferB.constData(), static_cast<size_t>(n)) != 0)
            return Comparison::Different;
        if (hash)
            hash->addData(QByteArrayView(bufferA.constData(), n));
    }
}

Comparison compareFilesAt(
    int dirA, const char* nameA, int dirB, const char* nameB, QCryptographicHash* hash = nullptr) {
    const FileSystem::Fd a(::openat(dirA, nameA, O_RDONLY | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    const FileSystem::Fd b(::openat(dirB, nameB, O_RDONLY | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    if (!a.isValid() || !b.isValid())
        return Comparison::Unreadable;
    return compareOpenFiles(a.get(), b.get(), hash);
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

Place Resolver::reach(const QByteArray& path) {
    Place place;
    place.path = path;
    QByteArray root;
    for (const QByteArray& candidate : std::as_const(m_roots)) {
        if (candidate.size() > root.size() && isBelowOrSame(candidate, path))
            root = candidate;
    }
    // The item's own folder is where descending stops; a target itself is reached from its parent.
    const QByteArray folder = PathBytes::deletingLastPathComponent(path);
    place.leaf = PathBytes::lastPathComponent(path);
    if (folder.isEmpty() || place.leaf.isEmpty()) {
        place.error = EINVAL;
        return place;
    }
    QByteArray start = root.isEmpty() || root == path ? folder : root;
    if (root.isEmpty() || !isBelowOrSame(start, folder))
        start = QByteArrayLiteral("/");
    const int startFd = startFolder(start, place.error);
    if (startFd < 0)
        return place;
    const QByteArray below = folder.mid(start == "/" ? 1 : start.size() + 1);
    if (below.isEmpty()) {
        place.folder = FileSystem::Fd(::fcntl(startFd, F_DUPFD_CLOEXEC, 0));
        if (!place.folder.isValid())
            place.error = errno;
        return place;
    }
    if (below.size() < PATH_MAX - 1) {
        struct open_how how { };
        how.flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
        how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS | RESOLVE_BENEATH;
        const long fd = ::syscall(SYS_openat2, startFd, below.constData(), &how, sizeof how);
        if (fd >= 0) {
            place.folder = FileSystem::Fd(static_cast<int>(fd));
            return place;
        }
        if (errno != ENOSYS && errno != EINVAL && errno != EPERM) {
            place.error = errno;
            return place;
        }
    }
    // Without openat2: one folder at a time.
    FileSystem::Fd current(::fcntl(startFd, F_DUPFD_CLOEXEC, 0));
    for (const QByteArray& component : below.split('/')) {
        if (component.isEmpty() || !current.isValid())
            continue;
        FileSystem::Fd next(::openat(current.get(), component.constData(), kFolderFlags));
        if (!next.isValid()) {
            place.error = errno;
            return place;
        }
        current = std::move(next);
    }
    if (!current.isValid())
        place.error = errno;
    place.folder = std::move(current);
    return place;
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

bool unchanged(const ItemIdentity& seen, const ItemIdentity& now) {
    if (!seen.known || !now.known || !seen.sameFileAs(now) || seen.folder != now.folder)
        return false;
    return seen.folder || (seen.size == now.size && seen.modifiedNs == now.modifiedNs);
}

Comparison compare(const Place& item, const Place& kept, bool folders, QByteArray* digest) {
    if (!folders) {
        QCryptographicHash hash(QCryptographicHash::Md5);
        const Comparison result = compareFilesAt(item.folder.get(), item.leaf.constData(), kept.folder.get(),
            kept.leaf.constData(), digest ? &hash : nullptr);
        if (digest && result == Comparison::Equal)
            *digest = hash.result().toHex();
        return result;
    }
    FileSystem::ItemInfo ia;
    FileSystem::ItemInfo ib;
    if (!FileSystem::statAt(item.folder.get(), item.leaf.constData(), ia)
        || !FileSystem::statAt(kept.folder.get(), kept.leaf.constData(), ib))
        return Comparison::Unreadable;
    const FileSystem::Fd a(::openat(item.folder.get(), item.leaf.constData(), kFolderFlags));
    const FileSystem::Fd b(::openat(kept.folder.get(), kept.leaf.constData(), kFolderFlags));
    if (!a.isValid() || !b.isValid())
        return Comparison::Unreadable;
    return compareFolders(a.get(), b.get(), ia.device, ib.device);
}

} // namespace ScannedItem
