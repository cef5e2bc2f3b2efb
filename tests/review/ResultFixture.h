#pragma once

#include "base/Log.h"
#include "detect/duplicates.h"
#include "engine/ScanState.h"
#include "review/DisplayList.h"

#include <QStringList>
#include <memory>
#include <optional>

// Groups made in memory: members dated one second apart in the order given, the first the original.
inline DuplicateGroupPtr makeGroup(const QList<QByteArray>& paths, qint64 size, std::optional<int> type = 70) {
    auto group = std::make_shared<duplicates>();
    QList<DuplicateFilePtr> members;
    qint64 date = 1700000000LL * 1000000000LL;
    for (const QByteArray& path : paths) {
        members.append(std::make_shared<duplicateFile>(path, date));
        date += 1000000000LL;
    }
    group->setListAll(members);
    group->setOriginal(paths.first());
    group->setSizeFile(size);
    group->setType(type);
    return group;
}

// The last path component of each group's original, to compare orders at a glance.
inline QStringList originalNames(const QList<DuplicateGroupPtr>& groups) {
    QStringList names;
    for (const DuplicateGroupPtr& group : groups)
        names.append(QString::fromUtf8(group->original().mid(group->original().lastIndexOf('/') + 1)));
    return names;
}
inline QStringList originalNames(const DisplayList& groups) {
    return originalNames(groups.toList());
}

// Collects the log lines written while it lives.
class LogCapture {
public:
    LogCapture() {
        Log::setSink([this](const QString& line) { lines.append(line); });
    }
    ~LogCapture() { Log::setSink({}); }
    QStringList lines;
};
