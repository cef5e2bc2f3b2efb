#include "detect/IgnoredTypes.h"

#include "base/PathBytes.h"

bool IgnoredTypes::matches(QByteArrayView path) const {
    if (m_types.isEmpty())
        return false;
    const QByteArrayView extension = PathBytes::extensionView(path);
    const std::string_view key(extension.data(), static_cast<size_t>(extension.size()));
    const auto known = m_known.find(key);
    if (known != m_known.end())
        return known->second;
    const bool ignored = m_types.contains(QString::fromUtf8(extension).toLower());
    m_known.emplace(std::string(key), ignored);
    return ignored;
}
