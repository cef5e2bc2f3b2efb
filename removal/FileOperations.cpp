#include "removal/FileOperations.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"

#include <QList>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace FileOperations {

namespace {

// Empties the open folder `dirFd` (on `device`) and answers the first error met.
int removeContents(int dirFd, dev_t device) {
    const int listFd = ::dup(dirFd);
    DIR* dir = listFd >= 0 ? ::fdopendir(listFd) : nullptr;
    if (!dir) {
        const int error = errno;
        if (listFd >= 0)
            ::close(listFd);
        return error;
    }
    QList<QByteArray> names;
    while (const dirent* entry = ::readdir(dir)) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        names.append(QByteArray(name));
    }
    ::closedir(dir);

    int firstError = 0;
    for (const QByteArray& name : names) {
        struct stat st;
        if (::fstatat(dirFd, name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT && !firstError)
                firstError = errno;
            continue;
        }
        int error = 0;
        if (S_ISDIR(st.st_mode)) {
            if (st.st_dev != device) {
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
    struct stat st;
    if (::fstatat(parent.dirFd, parent.leaf.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    if (!S_ISDIR(st.st_mode))
        return ::unlinkat(parent.dirFd, parent.leaf.constData(), 0) == 0 ? 0 : errno;
    FileSystem::Fd folder(
        ::openat(parent.dirFd, parent.leaf.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.isValid())
        return errno;
    const int error = removeContents(folder.get(), st.st_dev);
    if (error)
        return error;
    return ::unlinkat(parent.dirFd, parent.leaf.constData(), AT_REMOVEDIR) == 0 ? 0 : errno;
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
    FileSystem::Fd fd(
        ::openat(parent.dirFd, parent.leaf.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!fd.isValid())
        return errno;
    const int error = FileSystem::writeAll(fd.get(), aliasFileContents(target));
    if (error)
        ::unlinkat(parent.dirFd, parent.leaf.constData(), 0);
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
