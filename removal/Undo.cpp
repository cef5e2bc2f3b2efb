#include "removal/Undo.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"
#include "removal/FileOperations.h"

#include <QCryptographicHash>
#include <QRandomGenerator>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Undo {

namespace {

bool present(const QByteArray& path) {
    struct stat st;
    return ::lstat(path.constData(), &st) == 0;
}

QByteArray linkText(const QByteArray& path) {
    QByteArray text(4096, Qt::Uninitialized);
    const ssize_t n = ::readlink(path.constData(), text.data(), static_cast<size_t>(text.size()));
    return n < 0 ? QByteArray() : text.left(n);
}

bool sameFile(const QByteArray& a, const QByteArray& b) {
    struct stat sa;
    struct stat sb;
    return ::lstat(a.constData(), &sa) == 0 && ::lstat(b.constData(), &sb) == 0 && sa.st_dev == sb.st_dev
        && sa.st_ino == sb.st_ino;
}

QByteArray md5Of(const QByteArray& path) {
    FileSystem::Fd fd(FileSystem::openPath(path, O_RDONLY));
    if (!fd.isValid())
        return {};
    QCryptographicHash hash(QCryptographicHash::Md5);
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return {};
        if (n == 0)
            break;
        hash.addData(QByteArrayView(buffer, n));
    }
    return hash.result().toHex();
}

QByteArray temporaryBeside(const QByteArray& path) {
    return PathBytes::appendingComponent(PathBytes::deletingLastPathComponent(path),
        ".twinsift-undo-" + QByteArray::number(QRandomGenerator::global()->generate64(), 16));
}

void setTimes(const QByteArray& path, qint64 modifiedNs) {
    const struct timespec times[2] = { { 0, UTIME_OMIT },
        { static_cast<time_t>(modifiedNs / 1000000000), static_cast<long>(modifiedNs % 1000000000) } };
    ::utimensat(AT_FDCWD, path.constData(), times, AT_SYMLINK_NOFOLLOW);
}

// Copies `from` (a file, a link or a whole folder, links not followed) to the new path `to`; 0 or
// errno. The top item gets `mode` and `modifiedNs`.
int copyItem(const QByteArray& from, const QByteArray& to, uint mode, qint64 modifiedNs, bool top) {
    struct stat st;
    if (::lstat(from.constData(), &st) != 0)
        return errno;
    const uint wanted = top && mode ? mode : static_cast<uint>(st.st_mode & 07777);
    const qint64 mtime = top && modifiedNs ? modifiedNs : st.st_mtim.tv_sec * qint64(1000000000) + st.st_mtim.tv_nsec;
    if (S_ISLNK(st.st_mode)) {
        const QByteArray text = linkText(from);
        return ::symlink(text.constData(), to.constData()) == 0 ? 0 : errno;
    }
    if (S_ISDIR(st.st_mode)) {
        if (::mkdir(to.constData(), 0700) != 0)
            return errno;
        const FileSystem::Fd folder(FileSystem::openPath(from, O_RDONLY | O_DIRECTORY));
        QList<QByteArray> names;
        if (!folder.isValid() || FileSystem::listNames(folder.get(), names) != 0)
            return EIO;
        for (const QByteArray& name : std::as_const(names)) {
            if (const int error = copyItem(
                    PathBytes::appendingComponent(from, name), PathBytes::appendingComponent(to, name), 0, 0, false))
                return error;
        }
        ::chmod(to.constData(), wanted);
        setTimes(to, mtime);
        return 0;
    }
    if (!S_ISREG(st.st_mode))
        return EINVAL;
    const FileSystem::Fd in(FileSystem::openPath(from, O_RDONLY));
    const FileSystem::Fd out(::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!in.isValid() || !out.isValid())
        return errno ? errno : EIO;
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(in.get(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return errno;
        if (n == 0)
            break;
        if (const int error = FileSystem::writeAll(out.get(), QByteArray::fromRawData(buffer, n)))
            return error;
    }
    ::fchmod(out.get(), wanted);
    ::fsync(out.get());
    setTimes(to, mtime);
    return 0;
}

// Makes the item again from its kept copy at a temporary name beside `path`, checked against the
// recorded digest; answers the temporary path, or empty with `reason` set.
QByteArray remake(const Journal::Entry& entry, QString& reason) {
    const QByteArray temp = temporaryBeside(entry.path);
    if (const int error = copyItem(entry.kept, temp, entry.mode, entry.modifiedNs, true)) {
        FileOperations::removeItem(temp);
        reason = QStringLiteral("the kept copy could not be copied: ") + FileOperations::errorText(error);
        return {};
    }
    if (!entry.digest.isEmpty() && md5Of(temp) != entry.digest) {
        FileOperations::removeItem(temp);
        reason = QStringLiteral("the kept copy no longer holds the removed bytes");
        return {};
    }
    return temp;
}

Result undoOne(const Journal::Entry& entry) {
    Result result;
    result.path = entry.path;
    result.action = entry.action;
    const QString& action = entry.action;
    if (action == QLatin1String("delete")) {
        result.reason = notRestorableText();
        return result;
    }
    if (!present(PathBytes::deletingLastPathComponent(entry.path))) {
        result.reason = QStringLiteral("its folder is gone");
        return result;
    }
    if (action == QLatin1String("trash")) {
        if (present(entry.path)) {
            result.reason = pathTakenText();
            return result;
        }
        if (!present(entry.leftBehind)) {
            result.reason = QStringLiteral("no longer in the trash");
            return result;
        }
        if (::renameat2(AT_FDCWD, entry.leftBehind.constData(), AT_FDCWD, entry.path.constData(), RENAME_NOREPLACE)
            != 0) {
            result.reason = FileOperations::errorText(errno);
            return result;
        }
        ::unlink(entry.trashInfo.constData());
        result.restored = true;
        if (!entry.digest.isEmpty() && md5Of(entry.path) != entry.digest)
            result.reason = QStringLiteral("put back, but its bytes differ from the journal's");
        return result;
    }
    // A link or link file stands in the item's place: it must still be the one made.
    const bool alias = action == QLatin1String("alias");
    const bool ours = alias                  ? !present(entry.path) && present(entry.leftBehind)
        : action == QLatin1String("symlink") ? linkText(entry.path) == entry.kept
                                             : sameFile(entry.path, entry.kept);
    if (!ours) {
        result.reason = pathTakenText();
        return result;
    }
    const QByteArray temp = remake(entry, result.reason);
    if (temp.isEmpty())
        return result;
    if (alias) {
        if (::renameat2(AT_FDCWD, temp.constData(), AT_FDCWD, entry.path.constData(), RENAME_NOREPLACE) != 0) {
            result.reason = FileOperations::errorText(errno);
            FileOperations::removeItem(temp);
            return result;
        }
        ::unlink(entry.leftBehind.constData());
    } else {
        struct stat made;
        const bool folder = ::lstat(temp.constData(), &made) == 0 && S_ISDIR(made.st_mode);
        // A folder cannot be renamed over the link: the two swap places and the link goes.
        const int moved = folder
            ? ::renameat2(AT_FDCWD, temp.constData(), AT_FDCWD, entry.path.constData(), RENAME_EXCHANGE)
            : ::rename(temp.constData(), entry.path.constData());
        if (moved != 0) {
            result.reason = FileOperations::errorText(errno);
            FileOperations::removeItem(temp);
            return result;
        }
        if (folder)
            ::unlink(temp.constData());
    }
    result.restored = true;
    return result;
}

} // namespace

QString notRestorableText() {
    return QStringLiteral("deleted for good: cannot be put back");
}

QString pathTakenText() {
    return QStringLiteral("its path is taken by something else now");
}

QList<Result> undo(const Journal::Removal& removal) {
    QList<Result> results;
    for (auto it = removal.entries.crbegin(); it != removal.entries.crend(); ++it) {
        if (it->state != Journal::Entry::State::Done)
            continue;
        const Result result = undoOne(*it);
        if (result.restored)
            Journal::markUndone(removal.file, it->seq);
        results.append(result);
    }
    return results;
}

} // namespace Undo
