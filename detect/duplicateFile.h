#pragma once

#include <QByteArray>
#include <QDateTime>
#include <memory>

// One member of a duplicate group: its path and its creation date. The selection holds these
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

private:
    QByteArray m_urlFile;
    qint64 m_dateNs = 0;
};

using DuplicateFilePtr = std::shared_ptr<duplicateFile>;

// The creation date the scan records for an item: the birth time, else the modification time where
// the file system keeps no birth time, else the current time when the item cannot be examined.
qint64 creationDateNsOf(const QByteArray& path);
qint64 currentTimeNs();
