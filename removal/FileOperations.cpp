#include "removal/FileOperations.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"

#include <QList>
#include <QRandomGenerator>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace FileOperations {

namespace {

// Empties the open folder `dirFd` (on `device`) and answers the first error met. A folder that is
// the root of another mount (a bind mount of the same file system included) is never entered.
int removeContents(int dirFd, dev_t device) {
    QList<QByteArray> names;
    if (const int error = FileSystem::listNames(dirFd, names))
        return error;
    int firstError = 0;
    for (const QByteArray& name : std::as_const(names)) {
        FileSystem::ItemInfo info;
        if (!FileSystem::statAt(dirFd, name.constData(), info)) {
            if (errno != ENOENT && !firstError)
                firstError = errno;
            continue;
        }
        int error = 0;
        if (info.kind == FileSystem::Kind::Directory) {
            if (info.device != device || info.mountRoot) {
                error = EXDEV;
            } else {
                FileSystem::Fd child(
                    ::openat(dirFd, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
                if (!child.isValid())
                    error = errno;
                else
                    error = removeContents(child.get(), device);
                if (!error && ::unlinkat(dirFd, name.constData(), AT_REMOVEDIR) != 0)
                    error = errno;
            }
        } else if (::unlinkat(dirFd, name.constData(), 0) != 0) {
            error = errno;
        }
        if (error && !firstError)
            firstError = error;
    }
    return firstError;
}

// Makes an item at a free temporary name with `make` (which answers 0 or errno, EEXIST for a name
// taken) and answers that name in `name`.
int makeAtFreeName(const std::function<int(const char*)>& make, QByteArray& name) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        name = ".twinsift-" + QByteArray::number(QRandomGenerator::global()->generate64(), 16) + ".tmp";
        const int error = make(name.constData());
        if (error != EEXIST)
            return error;
    }
    return EEXIST;
}

// A desktop-entry string value: backslash, line breaks and tabs escaped, a leading space kept.
QByteArray desktopEntryValue(const QString& text) {
    QByteArray out;
    const QByteArray utf8 = text.toUtf8();
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const char c = utf8[i];
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else if (c == '\t')
            out += "\\t";
        else if (c == ' ' && i == 0)
            out += "\\s";
        else
            out += c;
    }
    return out;
}

} // namespace

int removeItem(const QByteArray& path) {
    FileSystem::ParentRef parent = FileSystem::parentOf(path);
    if (!parent.ok)
        return errno ? errno : ENOENT;
    return removeAt(parent.dirFd, parent.leaf);
}

int removeAt(int dirFd, const QByteArray& leaf) {
    FileSystem::ItemInfo info;
    if (!FileSystem::statAt(dirFd, leaf.constData(), info))
        return errno;
    if (info.kind != FileSystem::Kind::Directory)
        return ::unlinkat(dirFd, leaf.constData(), 0) == 0 ? 0 : errno;
    FileSystem::Fd folder(::openat(dirFd, leaf.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.isValid())
        return errno;
    const int error = removeContents(folder.get(), info.device);
    if (error)
        return error;
    return ::unlinkat(dirFd, leaf.constData(), AT_REMOVEDIR) == 0 ? 0 : errno;
}

int replaceAt(int dirFd, const QByteArray& leaf, const std::function<int(int, const char*)>& make) {
    FileSystem::ItemInfo item;
    if (!FileSystem::statAt(dirFd, leaf.constData(), item))
        return errno;
    QByteArray temp;
    if (const int error = makeAtFreeName([&](const char* name) { return make(dirFd, name); }, temp))
        return error;
    const auto dropTemp = [&] { ::unlinkat(dirFd, temp.constData(), 0); };
    if (item.kind != FileSystem::Kind::Directory) {
        // One rename puts the link in the file's place: there is never a moment with neither.
        if (::renameat(dirFd, temp.constData(), dirFd, leaf.constData()) == 0)
            return 0;
        const int error = errno;
        dropTemp();
        return error;
    }
    // A folder cannot be renamed over: the two swap places in one step, then the old folder goes
    // from its temporary name.
    if (::renameat2(dirFd, temp.constData(), dirFd, leaf.constData(), RENAME_EXCHANGE) == 0)
        return removeAt(dirFd, temp);
    if (errno != EINVAL && errno != ENOSYS) {
        const int error = errno;
        dropTemp();
        return error;
    }
    // No exchange on this file system: the folder steps aside, the link takes its name, and the
    // folder comes back when that fails.
    QByteArray aside;
    int error = makeAtFreeName(
        [&](const char* name) {
            return ::renameat2(dirFd, leaf.constData(), dirFd, name, RENAME_NOREPLACE) == 0 ? 0 : errno;
        },
        aside);
    if (error) {
        dropTemp();
        return error;
    }
    if (::renameat(dirFd, temp.constData(), dirFd, leaf.constData()) != 0) {
        error = errno;
        ::renameat(dirFd, aside.constData(), dirFd, leaf.constData());
        dropTemp();
        return error;
    }
    return removeAt(dirFd, aside);
}

bool exists(const QByteArray& path) {
    FileSystem::ItemInfo info;
    return FileSystem::stat(path, info);
}

QByteArray aliasFileContents(const QByteArray& target) {
    return "[Desktop Entry]\nType=Link\nName="
        + desktopEntryValue(PathBytes::display(PathBytes::lastPathComponent(target)))
        + "\nURL=" + PathBytes::fileUrl(target) + '\n';
}

int writeAliasFile(const QByteArray& aliasPath, const QByteArray& target) {
    FileSystem::ParentRef parent = FileSystem::parentOf(aliasPath);
    if (!parent.ok)
        return errno ? errno : ENOENT;
    return writeAliasFileAt(parent.dirFd, parent.leaf, target);
}

int writeAliasFileAt(int dirFd, const QByteArray& aliasLeaf, const QByteArray& target) {
    FileSystem::Fd fd(
        ::openat(dirFd, aliasLeaf.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!fd.isValid())
        return errno;
    const int error = FileSystem::writeAll(fd.get(), aliasFileContents(target));
    if (error)
        ::unlinkat(dirFd, aliasLeaf.constData(), 0);
    return error;
}

int makeSymbolicLink(const QByteArray& path, const QByteArray& target) {
    FileSystem::ParentRef parent = FileSystem::parentOf(path);
    if (!parent.ok)
        return errno ? errno : ENOENT;
    return ::symlinkat(target.constData(), parent.dirFd, parent.leaf.constData()) == 0 ? 0 : errno;
}

int makeHardLink(const QByteArray& path, const QByteArray& existing) {
    FileSystem::ParentRef from = FileSystem::parentOf(existing);
    FileSystem::ParentRef to = FileSystem::parentOf(path);
    if (!from.ok || !to.ok)
        return errno ? errno : ENOENT;
    return ::linkat(from.dirFd, from.leaf.constData(), to.dirFd, to.leaf.constData(), 0) == 0 ? 0 : errno;
}

QString errorText(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

} // namespace FileOperations
