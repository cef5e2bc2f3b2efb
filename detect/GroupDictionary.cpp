#include "detect/GroupDictionary.h"

#include "detect/FileType.h"
#include "detect/duplicates.h"

std::optional<QString> typeTextOfItem(const QByteArray& path) {
    const std::optional<int> category = categoryOfItem(path);
    if (!category)
        return std::nullopt;
    return FileType::typeTextOfCategory(*category);
}
