#include "detect/duplicateFile.h"

#include "base/FileSystem.h"

#include <chrono>

duplicateFile::duplicateFile() {
    initWithURL(m_urlFile, m_dateNs);
}

duplicateFile::duplicateFile(const QByteArray& url, qint64 dateNs) {
    initWithURL(url, dateNs);
}

void duplicateFile::initWithURL(const QByteArray& url, qint64 dateNs) {
    setUrlFile(url);
    setDateFile(dateNs);
}

QDateTime duplicateFile::dateFile() const {
    return QDateTime::fromMSecsSinceEpoch(m_dateNs / 1000000, Qt::UTC);
}

qint64 currentTimeNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

ItemIdentity ItemIdentity::of(const FileSystem::ItemInfo& info) {
    ItemIdentity identity;
    if (info.kind == FileSystem::Kind::Missing)
        return identity;
    identity.device = info.device;
    identity.inode = info.inode;
    identity.size = info.size;
    identity.modifiedNs = info.modifiedNs;
    identity.folder = info.kind == FileSystem::Kind::Directory;
    identity.known = true;
    return identity;
}

ItemIdentity identityOfPath(const QByteArray& path) {
    FileSystem::ItemInfo info;
    FileSystem::stat(path, info);
    return ItemIdentity::of(info);
}

qint64 creationDateNsOf(const QByteArray& path) {
    FileSystem::ItemInfo info;
    if (!FileSystem::stat(path, info))
        return currentTimeNs();
    return info.creationNs();
}
