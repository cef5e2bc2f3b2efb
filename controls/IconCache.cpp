#include "controls/IconCache.h"

#include "controls/AppIcons.h"

QIcon IconCache::iconForPath(const QByteArray& path) {
    const auto found = m_icons.constFind(path);
    if (found != m_icons.constEnd())
        return *found;
    if (m_icons.size() >= m_limit)
        m_icons.clear();
    const QIcon icon = AppIcons::iconForPath(path);
    m_icons.insert(path, icon);
    return icon;
}
