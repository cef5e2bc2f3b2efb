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

qint64 creationDateNsOf(const QByteArray& path) {
    FileSystem::ItemInfo info;
    if (!FileSystem::stat(path, info))
        return currentTimeNs();
    return info.creationNs();
}
