#include "removal/Trash.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"

#include <QMutex>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>

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

QMutex counterMutex;
std::unordered_map<std::string, int> nextNumbers;

int firstNumberFor(const std::string& key) {
    QMutexLocker lock(&counterMutex);
    const auto found = nextNumbers.find(key);
    return found == nextNumbers.end() ? 1 : found->second;
}

void rememberNumber(const std::string& key, int next) {
    QMutexLocker lock(&counterMutex);
    nextNumbers[key] = next;
}

// The folder `name` in the open folder `parentFd`, made with mode 0700 when missing, never reached
// through a link; with `mustOwn` it has to belong to the user. Answers an invalid descriptor and
// sets `error` on failure.
FileSystem::Fd openOwnFolderAt(int parentFd, const char* name, bool mustOwn, int& error) {
    if (::mkdirat(parentFd, name, 0700) != 0 && errno != EEXIST) {
        error = errno;
        return FileSystem::Fd();
    }
    FileSystem::Fd fd(::openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.isValid()) {
        error = errno;
        return fd;
    }
    struct stat st;
    if (::fstat(fd.get(), &st) != 0 || (mustOwn && st.st_uid != ::getuid())) {
        error = EPERM;
        return FileSystem::Fd();
    }
    error = 0;
    return fd;
}

// The trash for an item on another mount than the home trash: $topdir/.Trash/$uid when .Trash is
// a real sticky folder (not a link), else $topdir/.Trash-$uid, a real folder of the user's own.
FileSystem::Fd topDirectoryTrash(const QByteArray& topdir, QByteArray& trash, int& error) {
    const QByteArray uid = QByteArray::number(static_cast<qulonglong>(::getuid()));
    FileSystem::Fd top(::open(topdir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!top.isValid()) {
        error = errno;
        return top;
    }
    FileSystem::Fd shared(::openat(top.get(), ".Trash", O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat st;
    if (shared.isValid() && ::fstat(shared.get(), &st) == 0 && (st.st_mode & S_ISVTX)) {
        FileSystem::Fd own = openOwnFolderAt(shared.get(), uid.constData(), true, error);
        if (own.isValid()) {
            trash = PathBytes::appendingComponent(PathBytes::appendingComponent(topdir, ".Trash"), uid);
            return own;
        }
    }
    const QByteArray name = ".Trash-" + uid;
    trash = PathBytes::appendingComponent(topdir, name);
    return openOwnFolderAt(top.get(), name.constData(), true, error);
}

} // namespace

QByteArray homeTrashDirectory() {
    // Asked for every item trashed: worked out again only when the environment changed.
    static QMutex mutex;
    static std::string lastDataHome;
    static std::string lastHome;
    static QByteArray last;
    const char* dataHomeVariable = std::getenv("XDG_DATA_HOME");
    const char* homeVariable = std::getenv("HOME");
    const char* dataHomeNow = dataHomeVariable ? dataHomeVariable : "";
    const char* homeNow = homeVariable ? homeVariable : "";
    QMutexLocker lock(&mutex);
    if (last.isEmpty() || lastDataHome != dataHomeNow || lastHome != homeNow) {
        QByteArray dataHome(dataHomeNow);
        if (!dataHome.startsWith('/'))
            dataHome = QByteArray(homeNow) + "/.local/share";
        last = PathBytes::appendingComponent(PathBytes::normalized(dataHome, "/"), "Trash");
        lastDataHome = dataHomeNow;
        lastHome = homeNow;
    }
    return last;
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

namespace {

QByteArray infoText(const QByteArray& originalPath, const QByteArray& deletionDate) {
    return "[Trash Info]\nPath=" + PathBytes::percentEncoded(originalPath) + "\nDeletionDate=" + deletionDate + '\n';
}

QByteArray dateText(const QDateTime& time) {
    return time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1();
}

} // namespace

QByteArray trashInfo(const QByteArray& originalPath, const QDateTime& deletedAt) {
    return infoText(originalPath, dateText(deletedAt));
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
    FileSystem::ParentRef parent = FileSystem::parentOf(path);
    struct stat item;
    if (!parent.ok || ::fstatat(parent.dirFd, parent.leaf.constData(), &item, AT_SYMLINK_NOFOLLOW) != 0) {
        Result result;
        result.error = errno ? errno : ENOENT;
        return result;
    }
    return moveToTrashAt(parent.dirFd, parent.leaf, path, item.st_dev);
}

namespace {

// The trash an item on `device` goes to, with its files/ and info/ folders open.
struct OpenTrash {
    QByteArray directory;
    FileSystem::Fd files;
    FileSystem::Fd info;
};

std::shared_ptr<const OpenTrash> openTrashFor(const QByteArray& path, dev_t device, int& error) {
    auto trash = std::make_shared<OpenTrash>();
    FileSystem::Fd folder;
    const QByteArray home = homeTrashDirectory();
    struct stat homeStat;
    if (makePath(home) == 0) {
        folder = FileSystem::Fd(::open(home.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder.isValid() && (::fstat(folder.get(), &homeStat) != 0 || homeStat.st_dev != device))
            folder = FileSystem::Fd();
    }
    if (folder.isValid()) {
        trash->directory = home;
    } else {
        folder = topDirectoryTrash(topDirectoryOf(path, device), trash->directory, error);
        if (!folder.isValid())
            return nullptr;
    }
    trash->files = openOwnFolderAt(folder.get(), "files", true, error);
    trash->info = trash->files.isValid() ? openOwnFolderAt(folder.get(), "info", true, error) : FileSystem::Fd();
    if (!trash->info.isValid())
        return nullptr;
    return trash;
}

// The trash folders found for a device stay open for the next item of the same removal; they are
// looked for again when the home trash setting changed or a folder was deleted meanwhile.
QMutex trashesMutex;
std::map<std::pair<std::string, dev_t>, std::shared_ptr<const OpenTrash>> openTrashes;

// With `recheck`, folders kept open are used only while they still exist (a trash emptied by
// deleting its folders is made again); without, they are taken as they are, and an item whose info
// file cannot be made in them is tried once more with the check.
std::shared_ptr<const OpenTrash> trashFor(const QByteArray& path, dev_t device, bool recheck, int& error) {
    // The trash of the item before, most often the one this item goes to.
    thread_local QByteArray lastHome;
    thread_local dev_t lastDevice = 0;
    thread_local std::shared_ptr<const OpenTrash> last;
    const QByteArray home = homeTrashDirectory();
    if (!recheck && last && device == lastDevice && home == lastHome)
        return last;
    const std::pair<std::string, dev_t> key { home.toStdString(), device };
    std::shared_ptr<const OpenTrash> trash;
    {
        QMutexLocker lock(&trashesMutex);
        const auto found = openTrashes.find(key);
        struct stat files;
        struct stat info;
        if (found != openTrashes.end()
            && (!recheck
                || (::fstat(found->second->files.get(), &files) == 0 && files.st_nlink > 0
                    && ::fstat(found->second->info.get(), &info) == 0 && info.st_nlink > 0)))
            trash = found->second;
    }
    if (!trash) {
        trash = openTrashFor(path, device, error);
        if (!trash)
            return nullptr;
        QMutexLocker lock(&trashesMutex);
        openTrashes[key] = trash;
    }
    lastHome = home;
    lastDevice = device;
    last = trash;
    return trash;
}

// The deletion date as the info file writes it, in local time; made once a second, not per item.
QByteArray deletionDateNow() {
    static QMutex mutex;
    static qint64 second = -1;
    static QByteArray text;
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    QMutexLocker lock(&mutex);
    if (now != second) {
        second = now;
        text = dateText(QDateTime::fromSecsSinceEpoch(now));
    }
    return text;
}

} // namespace

namespace {

Result moveToTrashIn(
    const OpenTrash& trash, int dirFd, const QByteArray& leaf, const QByteArray& path, bool& trashGone);

} // namespace

Result moveToTrashAt(int dirFd, const QByteArray& leaf, const QByteArray& path, dev_t device) {
    for (const bool recheck : { false, true }) {
        int error = 0;
        const std::shared_ptr<const OpenTrash> trash = trashFor(path, device, recheck, error);
        if (!trash) {
            Result result;
            result.error = error ? error : EPERM;
            return result;
        }
        bool trashGone = false;
        Result result = moveToTrashIn(*trash, dirFd, leaf, path, trashGone);
        if (!trashGone || recheck)
            return result;
    }
    return {};
}

namespace {

// Renames `leaf` of `fromFd` to `name` in `toFd` unless `name` is taken there: 0, EEXIST when it is
// taken, or errno. Where the file system cannot refuse a rename by itself, the name is looked up
// first.
int moveWithoutReplacing(int fromFd, const QByteArray& leaf, int toFd, const QByteArray& name) {
    if (::renameat2(fromFd, leaf.constData(), toFd, name.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    struct stat taken;
    if (::fstatat(toFd, name.constData(), &taken, AT_SYMLINK_NOFOLLOW) == 0)
        return EEXIST;
    return ::renameat(fromFd, leaf.constData(), toFd, name.constData()) == 0 ? 0 : errno;
}

// `trashGone` is set when the trash's own folders went away (nothing was moved).
Result moveToTrashIn(
    const OpenTrash& trash, int dirFd, const QByteArray& leaf, const QByteArray& path, bool& trashGone) {
    Result result;
    result.trashDirectory = trash.directory;
    const FileSystem::Fd& files = trash.files;
    const FileSystem::Fd& info = trash.info;

    const QByteArray name = PathBytes::lastPathComponent(path);
    const QByteArray contents = infoText(path, deletionDateNow());
    // The first number worth trying for this name: past every name this program took in this trash,
    // so a trash holding many items of one name costs no probing. The .trashinfo file is still made
    // with O_EXCL, so an entry another program made meanwhile is never overwritten.
    std::string counterKey = result.trashDirectory.toStdString();
    counterKey += '\0';
    counterKey.append(name.constData(), static_cast<size_t>(name.size()));
    QByteArray chosen;
    const int start = firstNumberFor(counterKey);
    int n = start;
    for (; chosen.isEmpty(); ++n) {
        const QByteArray candidate = candidateName(name, n);
        const QByteArray infoName = candidate + ".trashinfo";
        FileSystem::Fd fd(
            ::openat(info.get(), infoName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!fd.isValid()) {
            if (errno == EEXIST && n - start < 100000)
                continue;
            result.error = errno;
            // A folder deleted while open takes no new entries.
            trashGone = errno == ENOENT;
            return result;
        }
        if (const int writeError = FileSystem::writeAll(fd.get(), contents)) {
            ::unlinkat(info.get(), infoName.constData(), 0);
            result.error = writeError;
            return result;
        }
        fd = FileSystem::Fd();
        // The item takes the name in files/ only when nothing has it (an entry whose info file went
        // missing): the rename itself refuses, so nothing there is ever replaced.
        const int moved = moveWithoutReplacing(dirFd, leaf, files.get(), candidate);
        if (moved == 0) {
            chosen = candidate;
            continue;
        }
        ::unlinkat(info.get(), infoName.constData(), 0);
        if (moved == EEXIST && n - start < 100000)
            continue;
        result.error = moved;
        struct stat folder;
        trashGone = moved == ENOENT && ::fstat(files.get(), &folder) == 0 && folder.st_nlink == 0;
        return result;
    }
    rememberNumber(counterKey, n);
    result.trashedPath = result.trashDirectory + "/files/" + chosen;
    result.infoPath = result.trashDirectory + "/info/" + chosen + ".trashinfo";
    return result;
}

} // namespace

} // namespace Trash
