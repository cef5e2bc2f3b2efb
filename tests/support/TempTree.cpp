#include "support/TempTree.h"

#include <QtTest>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

QList<QByteArray> takeEntryNames(DIR* dir) {
    QList<QByteArray> names;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    ::closedir(dir);
    return names;
}

namespace {

// Removes everything below an open folder by bytes: QDir cannot see names that are not UTF-8.
void removeContents(int dirFd) {
    DIR* dir = ::fdopendir(::dup(dirFd));
    if (!dir)
        return;
    const QList<QByteArray> names = takeEntryNames(dir);
    for (const QByteArray& name : names) {
        if (::unlinkat(dirFd, name.constData(), 0) == 0)
            continue;
        const int child = ::openat(dirFd, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (child >= 0) {
            ::fchmod(child, 0755);
            removeContents(child);
            ::close(child);
        }
        ::unlinkat(dirFd, name.constData(), AT_REMOVEDIR);
    }
}

} // namespace

TempTree::TempTree()
    : m_root(m_dir.path().toUtf8()) {
    m_dir.setAutoRemove(false);
}

TempTree::~TempTree() {
    const int fd = ::open(m_root.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        removeContents(fd);
        ::close(fd);
    }
    ::rmdir(m_root.constData());
}

QByteArray TempTree::path(const QByteArray& relative) const {
    if (relative.startsWith('/'))
        return relative;
    return relative.isEmpty() ? m_root : m_root + '/' + relative;
}

int TempTree::openParent(const QByteArray& absolute, QByteArray& leaf) {
    // Component by component, so that paths longer than PATH_MAX can be made too.
    int fd = ::open(m_root.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const QList<QByteArray> parts = absolute.mid(m_root.size() + 1).split('/');
    for (qsizetype i = 0; i + 1 < parts.size(); ++i) {
        ::mkdirat(fd, parts[i].constData(), 0755);
        const int next = ::openat(fd, parts[i].constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(fd);
        if (next < 0)
            qFatal("cannot make folder %s", parts[i].constData());
        fd = next;
    }
    leaf = parts.last();
    return fd;
}

QByteArray TempTree::file(const QByteArray& relative, const QByteArray& content) {
    const QByteArray absolute = path(relative);
    QByteArray leaf;
    const int parent = openParent(absolute, leaf);
    const int fd = ::openat(parent, leaf.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ::close(parent);
    if (fd < 0)
        qFatal("cannot create %s", absolute.constData());
    qsizetype written = 0;
    while (written < content.size()) {
        const ssize_t n = ::write(fd, content.constData() + written, static_cast<size_t>(content.size() - written));
        if (n <= 0)
            qFatal("cannot write %s", absolute.constData());
        written += n;
    }
    ::close(fd);
    return absolute;
}

QByteArray TempTree::sizedFile(const QByteArray& relative, qint64 size, char fill) {
    return file(relative, QByteArray(size, fill));
}

QByteArray TempTree::folder(const QByteArray& relative) {
    const QByteArray absolute = path(relative);
    QByteArray leaf;
    const int parent = openParent(absolute + "/x", leaf);
    ::close(parent);
    return absolute;
}

QByteArray TempTree::symlink(const QByteArray& relative, const QByteArray& target) {
    const QByteArray absolute = path(relative);
    QByteArray leaf;
    const int parent = openParent(absolute, leaf);
    const int rc = ::symlinkat(target.constData(), parent, leaf.constData());
    ::close(parent);
    if (rc != 0)
        qFatal("cannot link %s", absolute.constData());
    return absolute;
}

QByteArray TempTree::fifo(const QByteArray& relative) {
    const QByteArray absolute = path(relative);
    QByteArray leaf;
    const int parent = openParent(absolute, leaf);
    const int rc = ::mkfifoat(parent, leaf.constData(), 0644);
    ::close(parent);
    if (rc != 0)
        qFatal("cannot make fifo %s", absolute.constData());
    return absolute;
}

bool TempTree::exists(const QByteArray& relative) const {
    struct stat st;
    return ::lstat(path(relative).constData(), &st) == 0;
}

QByteArray TempTree::read(const QByteArray& relative) const {
    QByteArray out;
    const int fd = ::open(path(relative).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return out;
    char buffer[65536];
    ssize_t n;
    while ((n = ::read(fd, buffer, sizeof buffer)) > 0)
        out.append(buffer, n);
    ::close(fd);
    return out;
}

TempEnvironment::TempEnvironment()
    : m_oldConfig(qgetenv("XDG_CONFIG_HOME"))
    , m_oldData(qgetenv("XDG_DATA_HOME"))
    , m_oldCache(qgetenv("XDG_CACHE_HOME")) {
    qputenv("XDG_CONFIG_HOME", m_config.path().toUtf8());
    qputenv("XDG_DATA_HOME", m_data.path().toUtf8());
    qputenv("XDG_CACHE_HOME", m_cache.path().toUtf8());
}

TempEnvironment::~TempEnvironment() {
    // The trash may hold names QDir cannot see; empty both folders by bytes first.
    for (const QTemporaryDir* dir : { &m_config, &m_data }) {
        const int fd = ::open(QFile::encodeName(dir->path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0) {
            removeContents(fd);
            ::close(fd);
        }
    }
    if (m_oldConfig.isNull())
        qunsetenv("XDG_CONFIG_HOME");
    else
        qputenv("XDG_CONFIG_HOME", m_oldConfig);
    if (m_oldData.isNull())
        qunsetenv("XDG_DATA_HOME");
    else
        qputenv("XDG_DATA_HOME", m_oldData);
    if (m_oldCache.isNull())
        qunsetenv("XDG_CACHE_HOME");
    else
        qputenv("XDG_CACHE_HOME", m_oldCache);
}
