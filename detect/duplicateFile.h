#pragma once

#include <QByteArray>
#include <QDateTime>
#include <memory>
#include <sys/types.h>

namespace FileSystem {
struct ItemInfo;
}

// What the scan saw of an item: which file it is (device and inode), its length and modification
// time, and whether it is a folder. A removal acts on an item only while it is still this one.
struct ItemIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    qint64 size = 0;
    qint64 modifiedNs = 0;
    bool folder = false;
    bool known = false; // false for a record made without looking at the disk

    static ItemIdentity of(const FileSystem::ItemInfo& info);
    // The same file (device and inode), whatever its path.
    bool sameFileAs(const ItemIdentity& other) const {
        return known && other.known && device == other.device && inode == other.inode;
    }
};

// One member of a duplicate group: its path, its creation date and what the scan saw of it. The selection holds these
// records themselves, so two records for one path are still two different members.
class duplicateFile {
public:
    duplicateFile();
    duplicateFile(const QByteArray& url, qint64 dateNs);

    // Sets both fields through their setters.
    void initWithURL(const QByteArray& url, qint64 dateNs);

    const QByteArray& urlFile() const { return m_urlFile; }
    void setUrlFile(const QByteArray& url) { m_urlFile = url; }
    // Nanoseconds since 1970, UTC.
    qint64 dateFileNs() const { return m_dateNs; }
    void setDateFile(qint64 dateNs) { m_dateNs = dateNs; }
    QDateTime dateFile() const;

    const ItemIdentity& identity() const { return m_identity; }
    void setIdentity(const ItemIdentity& identity) { m_identity = identity; }

private:
    QByteArray m_urlFile;
    qint64 m_dateNs = 0;
    ItemIdentity m_identity;
};

using DuplicateFilePtr = std::shared_ptr<duplicateFile>;

// The creation date the scan records for an item: the birth time, else the modification time where
// the file system keeps no birth time, else the current time when the item cannot be examined.
qint64 creationDateNsOf(const QByteArray& path);
// The identity of the item at `path` now (links not followed); unknown when nothing is there.
ItemIdentity identityOfPath(const QByteArray& path);
qint64 currentTimeNs();
