#pragma once

#include "base/FileSystem.h"
#include "detect/duplicateFile.h"

#include <QList>
#include <optional>

// A duplicate group: members sorted by creation date (oldest first), the size of one member, the
// original (the oldest member, the copy kept by default) and the category number decided from the
// original alone.
class duplicates {
public:
    // Builds the group from paths of equal fingerprint: reads each creation date, sorts the members
    // (stable, so equal dates keep the given order) and classifies the original.
    // `firstInfo`, when given, is what a look at the first path found just before.
    static std::shared_ptr<duplicates> initWithURL(
        const QList<QByteArray>& paths, qint64 size, const FileSystem::ItemInfo* firstInfo = nullptr);

    const QList<DuplicateFilePtr>& listAll() const { return m_listAll; }
    void setListAll(const QList<DuplicateFilePtr>& list) { m_listAll = list; }
    qint64 sizeFile() const { return m_sizeFile; }
    void setSizeFile(qint64 size) { m_sizeFile = size; }
    const QByteArray& original() const { return m_original; }
    void setOriginal(const QByteArray& url) { m_original = url; }
    // Unset when the original is neither a folder nor a regular file.
    std::optional<int> type() const { return m_type; }
    void setType(std::optional<int> type) { m_type = type; }

private:
    QList<DuplicateFilePtr> m_listAll;
    qint64 m_sizeFile = 0;
    QByteArray m_original;
    std::optional<int> m_type;
};

using DuplicateGroupPtr = std::shared_ptr<duplicates>;

// The category of an item: 20 folder, 70 bundle or framework, the file classes for regular files,
// nothing for anything else.
std::optional<int> categoryOfItem(const QByteArray& path);
std::optional<int> categoryOfItem(const QByteArray& path, const FileSystem::ItemInfo& info);
