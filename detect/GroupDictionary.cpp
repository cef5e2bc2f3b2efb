#include "detect/GroupDictionary.h"

#include "detect/FileType.h"
#include "engine/FileSystem.h"
#include "engine/PathBytes.h"

std::optional<QString> typeTextOfItem(const QByteArray& path) {
    FileSystem::ItemInfo info;
    if (!FileSystem::stat(path, info))
        return std::nullopt;
    if (info.kind == FileSystem::Kind::Directory) {
        const QByteArray extension = PathBytes::pathExtension(path);
        if (PathBytes::isPackageExtension(extension) || extension == "framework")
            return QStringLiteral("Other");
        return QStringLiteral("Folder");
    }
    if (info.kind == FileSystem::Kind::Regular)
        return FileType::typeTextOfRegularFile(path);
    return std::nullopt;
}
