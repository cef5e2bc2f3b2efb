#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

// The older list model's group, built by the list scan: members ("SameFileList") sorted by date,
// the first of them as "original". Members compare by value, as dictionaries do.
struct FileDictionary {
    QByteArray url;
    qint64 dateNs = 0;
    qint64 FileSize = 0;
    // "Folder", "Photo", "Media", "Text" or "Other"; absent for items that are neither folder nor file.
    std::optional<QString> type;

    friend bool operator==(const FileDictionary& a, const FileDictionary& b) = default;
};

struct GroupDictionary {
    QList<FileDictionary> SameFileList;
    FileDictionary original;

    friend bool operator==(const GroupDictionary& a, const GroupDictionary& b) = default;
};

// The member type text of the older list (archives fall to "Other").
std::optional<QString> typeTextOfItem(const QByteArray& path);
