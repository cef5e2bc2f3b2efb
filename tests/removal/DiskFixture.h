#pragma once

#include "support/TempTree.h"

#include <QByteArray>
#include <QMap>
#include <QRandomGenerator>
#include <QThread>
#include <dirent.h>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

// A tmpfs mounted on a folder for one test (tests run as root); `ok` is false where mounting is
// not allowed, and the test skips then. Unmounted when it goes.
class TmpfsMount {
public:
    explicit TmpfsMount(const QByteArray& folder)
        : m_folder(folder) {
        ::mkdir(folder.constData(), 0755);
        ok = ::mount("none", folder.constData(), "tmpfs", 0, "mode=0755") == 0;
    }
    ~TmpfsMount() {
        if (ok)
            ::umount2(m_folder.constData(), MNT_DETACH);
    }
    TmpfsMount(const TmpfsMount&) = delete;
    TmpfsMount& operator=(const TmpfsMount&) = delete;

    bool remountReadOnly() {
        return ::mount("none", m_folder.constData(), "tmpfs", MS_REMOUNT | MS_RDONLY, "mode=0755") == 0;
    }

    bool ok = false;

private:
    QByteArray m_folder;
};

// Everything below a folder: relative path -> "f:<content>", "d" or "l:<target>".
inline void snapshotInto(const QByteArray& root, const QByteArray& relative, QMap<QByteArray, QByteArray>& out) {
    const QByteArray folder = relative.isEmpty() ? root : root + '/' + relative;
    DIR* dir = ::opendir(folder.constData());
    if (!dir)
        return;
    const QList<QByteArray> names = takeEntryNames(dir);
    for (const QByteArray& name : names) {
        const QByteArray rel = relative.isEmpty() ? name : relative + '/' + name;
        const QByteArray path = root + '/' + rel;
        struct stat st;
        if (::lstat(path.constData(), &st) != 0)
            continue;
        if (S_ISDIR(st.st_mode)) {
            out[rel] = "d";
            snapshotInto(root, rel, out);
        } else if (S_ISLNK(st.st_mode)) {
            char target[4096];
            const ssize_t n = ::readlink(path.constData(), target, sizeof target);
            out[rel] = "l:" + QByteArray(target, n > 0 ? n : 0);
        } else {
            QByteArray content;
            const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
            char buffer[4096];
            ssize_t n;
            while (fd >= 0 && (n = ::read(fd, buffer, sizeof buffer)) > 0)
                content.append(buffer, n);
            if (fd >= 0)
                ::close(fd);
            out[rel] = "f:" + content;
        }
    }
}

inline QMap<QByteArray, QByteArray> snapshot(const QByteArray& root) {
    QMap<QByteArray, QByteArray> out;
    snapshotInto(root, QByteArray(), out);
    return out;
}

inline QByteArray randomBytes(int size) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& c : bytes)
        c = static_cast<char>(QRandomGenerator::global()->generate());
    return bytes;
}

// A copy directly in "t" of a file that also lies in two folders that are copies of each other, made
// in an order that groups the file before the folders: t/f3.jpg, t/B/screens/f3.jpg and
// t/A/screens/f3.jpg (oldest to newest) with `f3`, both screens folders holding g.jpg with `g`, and
// t/A/only-a.txt holding "a\n".
struct NestedCopies {
    QByteArray f3 = randomBytes(50000);
    QByteArray g = randomBytes(30000);

    explicit NestedCopies(TempTree& tree) {
        tree.folder("t/A/screens");
        QThread::msleep(20);
        tree.folder("t/B/screens");
        tree.file("t/A/only-a.txt", "a\n");
        tree.file("t/f3.jpg", f3);
        QThread::msleep(20);
        tree.file("t/B/screens/f3.jpg", f3);
        QThread::msleep(20);
        tree.file("t/A/screens/f3.jpg", f3);
        tree.file("t/A/screens/g.jpg", g);
        tree.file("t/B/screens/g.jpg", g);
    }
};
