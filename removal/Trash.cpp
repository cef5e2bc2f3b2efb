#include "removal/Trash.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Trash {

namespace {

// Makes the folder and any missing parent (mode 0700 for what is made). Answers 0 or errno.
int makePath(const QByteArray& path) {
    struct stat st;
    if (::lstat(path.constData(), &st) == 0)
        return S_ISDIR(st.st_mode) ? 0 : ENOTDIR;
    const QByteArray parent = PathBytes::deletingLastPathComponent(path);
    if (!parent.isEmpty() && parent != path) {
        if (const int error = makePath(parent))
            return error;
    }
    if (::mkdir(path.constData(), 0700) != 0 && errno != EEXIST)
        return errno;
    return 0;
}

// A folder at `path` that is a real folder (not a link); made with mode 0700 when missing.
int ensureOwnFolder(const QByteArray& path) {
    struct stat st;
    if (::lstat(path.constData(), &st) != 0) {
        if (errno != ENOENT)
            return errno;
        if (::mkdir(path.constData(), 0700) != 0)
            return errno;
        if (::lstat(path.constData(), &st) != 0)
            return errno;
    }
    if (!S_ISDIR(st.st_mode))
        return ENOTDIR;
    if (st.st_uid != ::getuid())
        return EPERM;
    return 0;
}

// The trash for an item on another mount than the home trash.
int topDirectoryTrash(const QByteArray& topdir, QByteArray& trash) {
    const QByteArray uid = QByteArray::number(static_cast<qulonglong>(::getuid()));
    const QByteArray shared = PathBytes::appendingComponent(topdir, ".Trash");
    struct stat st;
    if (::lstat(shared.constData(), &st) == 0 && S_ISDIR(st.st_mode) && (st.st_mode & S_ISVTX)) {
        const QByteArray own = PathBytes::appendingComponent(shared, uid);
        if (ensureOwnFolder(own) == 0) {
            trash = own;
            return 0;
        }
    }
    trash = PathBytes::appendingComponent(topdir, ".Trash-" + uid);
    return ensureOwnFolder(trash);
}

FileSystem::Fd openSubfolder(const QByteArray& trash, const char* name, int& error) {
    const QByteArray path = PathBytes::appendingComponent(trash, name);
    if (::mkdir(path.constData(), 0700) != 0 && errno != EEXIST) {
        error = errno;
        return FileSystem::Fd();
    }
    FileSystem::Fd fd(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    error = fd.isValid() ? 0 : errno;
    return fd;
}

} // namespace

QByteArray homeTrashDirectory() {
    QByteArray dataHome = qgetenv("XDG_DATA_HOME");
    if (!dataHome.startsWith('/'))
        dataHome = qgetenv("HOME") + "/.local/share";
    return PathBytes::appendingComponent(PathBytes::normalized(dataHome, "/"), "Trash");
}

QByteArray topDirectoryOf(const QByteArray& path, dev_t device) {
    QByteArray top = PathBytes::deletingLastPathComponent(path);
    if (top.isEmpty())
        return QByteArrayLiteral("/");
    while (top != "/") {
        const QByteArray parent = PathBytes::deletingLastPathComponent(top);
        FileSystem::ItemInfo info;
        if (!FileSystem::stat(parent, info) || info.device != device)
            break;
        top = parent;
    }
    return top;
}

QByteArray trashInfo(const QByteArray& originalPath, const QDateTime& deletedAt) {
    return "[Trash Info]\nPath=" + PathBytes::percentEncoded(originalPath)
        + "\nDeletionDate=" + deletedAt.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1() + '\n';
}

QByteArray candidateName(const QByteArray& name, int n) {
    if (n <= 1)
        return name;
    const QByteArray extension = PathBytes::pathExtension(name);
    const QByteArray number = QByteArray::number(n);
    if (extension.isEmpty())
        return name + '.' + number;
    return name.left(name.size() - extension.size()) + number + '.' + extension;
}

Result moveToTrash(const QByteArray& path) {
    Result result;
    FileSystem::ParentRef parent = FileSystem::parentOf(path);
    struct stat item;
    if (!parent.ok || ::fstatat(parent.dirFd, parent.leaf.constData(), &item, AT_SYMLINK_NOFOLLOW) != 0) {
        result.error = errno ? errno : ENOENT;
        return result;
    }

    const QByteArray home = homeTrashDirectory();
    struct stat homeStat;
    if (makePath(home) == 0 && ::stat(home.constData(), &homeStat) == 0 && homeStat.st_dev == item.st_dev) {
        result.trashDirectory = home;
    } else if (const int error = topDirectoryTrash(topDirectoryOf(path, item.st_dev), result.trashDirectory)) {
        result.error = error;
        return result;
    }

    int error = 0;
    FileSystem::Fd files = openSubfolder(result.trashDirectory, "files", error);
    FileSystem::Fd info = files.isValid() ? openSubfolder(result.trashDirectory, "info", error) : FileSystem::Fd();
    if (error) {
        result.error = error;
        return result;
    }

    const QByteArray name = PathBytes::lastPathComponent(path);
    const QByteArray contents = trashInfo(path, QDateTime::currentDateTime());
    QByteArray chosen;
    for (int n = 1; chosen.isEmpty(); ++n) {
        const QByteArray candidate = candidateName(name, n);
        const QByteArray infoName = candidate + ".trashinfo";
        FileSystem::Fd fd(
            ::openat(info.get(), infoName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!fd.isValid()) {
            if (errno == EEXIST && n < 100000)
                continue;
            result.error = errno;
            return result;
        }
        struct stat taken;
        const bool clash = ::fstatat(files.get(), candidate.constData(), &taken, AT_SYMLINK_NOFOLLOW) == 0;
        const int writeError = clash ? 0 : FileSystem::writeAll(fd.get(), contents);
        if (clash || writeError) {
            ::unlinkat(info.get(), infoName.constData(), 0);
            if (writeError) {
                result.error = writeError;
                return result;
            }
            continue;
        }
        chosen = candidate;
    }

    if (::renameat(parent.dirFd, parent.leaf.constData(), files.get(), chosen.constData()) != 0) {
        result.error = errno;
        const QByteArray infoName = chosen + ".trashinfo";
        ::unlinkat(info.get(), infoName.constData(), 0);
        return result;
    }
    result.trashedPath
        = PathBytes::appendingComponent(PathBytes::appendingComponent(result.trashDirectory, "files"), chosen);
    return result;
}

} // namespace Trash
