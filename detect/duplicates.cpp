#include "detect/duplicates.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"
#include "detect/FileType.h"

#include <algorithm>
#include <numeric>
#include <vector>

std::shared_ptr<duplicates> duplicates::initWithURL(
    const QList<QByteArray>& paths, qint64 size, const FileSystem::ItemInfo* firstInfo) {
    const qint64 now = currentTimeNs();
    QList<DuplicateFilePtr> members;
    members.reserve(paths.size());
    // The original's kind decides the category: kept from the look at each member.
    std::vector<FileSystem::ItemInfo> infos(static_cast<size_t>(paths.size()));
    for (qsizetype i = 0; i < paths.size(); ++i) {
        FileSystem::ItemInfo& info = infos[static_cast<size_t>(i)];
        bool known;
        if (i == 0 && firstInfo) {
            info = *firstInfo;
            known = info.kind != FileSystem::Kind::Missing;
        } else {
            known = FileSystem::stat(paths[i], info);
        }
        auto member = std::make_shared<duplicateFile>(paths[i], known ? info.creationNs() : now);
        member->setIdentity(ItemIdentity::of(info));
        members.append(std::move(member));
    }
    std::vector<qsizetype> order(static_cast<size_t>(paths.size()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
        [&](qsizetype a, qsizetype b) { return members[a]->dateFileNs() < members[b]->dateFileNs(); });
    QList<DuplicateFilePtr> sorted;
    sorted.reserve(members.size());
    for (qsizetype i : order)
        sorted.append(members[i]);

    auto group = std::make_shared<duplicates>();
    if (!order.empty()) {
        group->setOriginal(sorted.first()->urlFile());
        group->setType(categoryOfItem(group->original(), infos[static_cast<size_t>(order.front())]));
    }
    group->setListAll(sorted);
    group->setSizeFile(size);
    return group;
}

std::optional<int> categoryOfItem(const QByteArray& path) {
    FileSystem::ItemInfo info;
    FileSystem::stat(path, info);
    return categoryOfItem(path, info);
}

std::optional<int> categoryOfItem(const QByteArray& path, const FileSystem::ItemInfo& info) {
    if (info.kind == FileSystem::Kind::Missing)
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
