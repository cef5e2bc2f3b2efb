#pragma once

#include <QByteArray>
#include <QList>
#include <QTemporaryDir>
#include <dirent.h>

// The names in an open folder, without "." and "..", as bytes; closes the folder.
QList<QByteArray> takeEntryNames(DIR* dir);

// A folder tree made on disk for one test: files with given bytes, folders, links, hidden items
// and names that are not valid UTF-8. Paths are bytes, relative to the tree's root unless absolute.
class TempTree {
public:
    TempTree();
    ~TempTree();
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    bool isValid() const { return m_dir.isValid(); }
    const QByteArray& root() const { return m_root; }
    QByteArray path(const QByteArray& relative) const;

    // Each returns the item's absolute path; missing parent folders are made.
    QByteArray file(const QByteArray& relative, const QByteArray& content);
    QByteArray sizedFile(const QByteArray& relative, qint64 size, char fill = 'x');
    QByteArray folder(const QByteArray& relative);
    QByteArray symlink(const QByteArray& relative, const QByteArray& target);
    QByteArray fifo(const QByteArray& relative);

    bool exists(const QByteArray& relative) const;
    QByteArray read(const QByteArray& relative) const;

private:
    int openParent(const QByteArray& absolute, QByteArray& leaf);

    QTemporaryDir m_dir;
    QByteArray m_root;
};

// Points XDG_CONFIG_HOME, XDG_DATA_HOME and XDG_CACHE_HOME at fresh temporary folders while it lives.
class TempEnvironment {
public:
    TempEnvironment();
    ~TempEnvironment();
    QByteArray configHome() const { return m_config.path().toUtf8(); }
    QByteArray dataHome() const { return m_data.path().toUtf8(); }
    QByteArray cacheHome() const { return m_cache.path().toUtf8(); }

private:
    QTemporaryDir m_config;
    QTemporaryDir m_data;
    QTemporaryDir m_cache;
    QByteArray m_oldConfig;
    QByteArray m_oldData;
    QByteArray m_oldCache;
};
