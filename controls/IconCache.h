#pragma once

#include <QByteArray>
#include <QHash>
#include <QIcon>

// Icons of files by path, looked up once: finding a file's type reads its first bytes, too slow to
// repeat for every row painted while a long list scrolls. The cache forgets everything once it
// holds `limit` icons.
class IconCache {
public:
    explicit IconCache(qsizetype limit = 4096)
        : m_limit(limit) { }

    QIcon iconForPath(const QByteArray& path);
    void clear() { m_icons.clear(); }

private:
    qsizetype m_limit;
    QHash<QByteArray, QIcon> m_icons;
};
