#include "detect/duplicates.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"
#include "detect/FileType.h"

#include <algorithm>

std::shared_ptr<duplicates> duplicates::initWithURL(const QList<QByteArray>& paths, qint64 size) {
    const qint64 now = currentTimeNs();
    QList<DuplicateFilePtr> members;
    members.reserve(paths.size());
    for (const QByteArray& path : paths) {
        FileSystem::ItemInfo info;
        const qint64 date = FileSystem::stat(path, info) ? info.creationNs() : now;
        auto member = std::make_shared<duplicateFile>(path, date);
        member->setIdentity(ItemIdentity::of(info));
        members.append(std::move(member));
    }
    std::stable_sort(members.begin(), members.end(),
        [](const DuplicateFilePtr& a, const DuplicateFilePtr& b) { return a->dateFileNs() < b->dateFileNs(); });

    auto group = std::make_shared<duplicates>();
    group->setOriginal(members.isEmpty() ? QByteArray() : members.first()->urlFile());
    group->setListAll(members);
    group->setSizeFile(size);
    group->setType(categoryOfItem(group->original()));
    return group;
}

std::optional<int> categoryOfItem(const QByteArray& path) {
    FileSystem::ItemInfo info;
    if (!FileSystem::stat(path, info))
        return std::nullopt;
    if (info.kind == FileSystem::Kind::Directory) {
        const QByteArray extension = PathBytes::pathExtension(path);
        if (PathBytes::isPackageExtension(extension) || extension == "framework")
            return FileType::Other;
        return FileType::Folder;
    }
    if (info.kind == FileSystem::Kind::Regular)
        return FileType::categoryOfRegularFile(path);
    return std::nullopt;
}
