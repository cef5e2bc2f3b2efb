#include "base/DigestCache.h"

#include "base/Log.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <cstring>

namespace {

constexpr int kSchemaVersion = 2;
constexpr qint64 kExpirySeconds = 90 * 24 * 3600;
// A hit refreshes its entry's "seen" stamp only when that is older than this, so that a rescan of
// an unchanged tree writes next to nothing.
constexpr qint64 kTouchSeconds = 24 * 3600;
constexpr int kBusyTimeoutMs = 3000;

std::atomic<quint64> connectionSerial { 0 };

QString newConnectionName() {
    return QStringLiteral("twinsift-digest-cache-%1").arg(connectionSerial.fetch_add(1));
}

QSqlDatabase openConnection(const QString& name, const QString& file) {
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(file);
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(kBusyTimeoutMs));
    db.open();
    return db;
}

QVariant blockValue(const std::optional<quint64>& value) {
    return value ? QVariant(static_cast<qint64>(*value)) : QVariant(QMetaType(QMetaType::LongLong));
}

QVariant digestValue(const std::optional<DigestCache::Digest>& digest) {
    if (!digest)
        return QVariant(QMetaType(QMetaType::QByteArray));
    return QByteArray(reinterpret_cast<const char*>(digest->data()), static_cast<qsizetype>(digest->size()));
}

std::optional<DigestCache::Digest> digestOf(const QVariant& value) {
    const QByteArray bytes = value.toByteArray();
    if (bytes.size() != 16)
        return std::nullopt;
    DigestCache::Digest digest;
    std::memcpy(digest.data(), bytes.constData(), digest.size());
    return digest;
}

std::optional<quint64> blockOf(const QVariant& value) {
    if (value.isNull())
        return std::nullopt;
    return static_cast<quint64>(value.toLongLong());
}

} // namespace

QString DigestCache::defaultFolder() {
    QString base = qEnvironmentVariable("XDG_CACHE_HOME");
    if (base.isEmpty() || !QDir::isAbsolutePath(base))
        base = QDir::homePath() + QStringLiteral("/.cache");
    return base + QStringLiteral("/twinsift");
}

QString DigestCache::fileIn(const QString& folder) {
    return folder + QStringLiteral("/digests.sqlite");
}

DigestCache::DigestCache(QString folder)
    : m_folder(std::move(folder))
    , m_connection(newConnectionName())
    , m_now(QDateTime::currentSecsSinceEpoch()) { }

std::unique_ptr<DigestCache> DigestCache::open(const QString& folder) {
    std::unique_ptr<DigestCache> cache(new DigestCache(folder));
    if (!cache->prepare())
        return nullptr;
    return cache;
}

void DigestCache::fail(const QString& what) {
    m_usable.store(false, std::memory_order_relaxed);
    if (!m_failureLogged.exchange(true))
        Log::line(QStringLiteral("digest cache %1 not used: %2").arg(fileIn(m_folder), what));
}

bool DigestCache::prepare() {
    if (!QDir().mkpath(m_folder)) {
        fail(QStringLiteral("cannot create its folder"));
        return false;
    }
    QSqlDatabase db = openConnection(m_connection, fileIn(m_folder));
    if (!db.isOpen()) {
        fail(db.lastError().text());
        return false;
    }
    QSqlQuery query(db);
    auto run = [&](const QString& statement) {
        if (query.exec(statement))
            return true;
        fail(query.lastError().text());
        return false;
    };
    if (!run(QStringLiteral("PRAGMA journal_mode=WAL")) || !query.next()
        || query.value(0).toString().compare(QLatin1String("wal"), Qt::CaseInsensitive) != 0) {
        fail(QStringLiteral("no write-ahead log"));
        return false;
    }
    if (!run(QStringLiteral("PRAGMA synchronous=NORMAL")) || !run(QStringLiteral("PRAGMA user_version")))
        return false;
    const int version = query.next() ? query.value(0).toInt() : -1;
    if (version != kSchemaVersion) {
        // An empty file, or one written by another layout: start afresh.
        if (!run(QStringLiteral("DROP TABLE IF EXISTS digests"))
            || !run(QStringLiteral("CREATE TABLE digests (device INTEGER NOT NULL, inode INTEGER NOT NULL, "
                                   "size INTEGER NOT NULL, mtime INTEGER NOT NULL, ctime INTEGER NOT NULL, "
                                   "first INTEGER, last INTEGER, whole BLOB, fast BLOB, seen INTEGER NOT NULL, "
                                   "PRIMARY KEY (device, inode)) WITHOUT ROWID"))
            || !run(QStringLiteral("CREATE INDEX digests_seen ON digests (seen)"))
            || !run(QStringLiteral("PRAGMA user_version=%1").arg(kSchemaVersion)))
            return false;
    }
    query.prepare(QStringLiteral("DELETE FROM digests WHERE seen < ?"));
    query.addBindValue(m_now - kExpirySeconds);
    if (!query.exec()) {
        fail(query.lastError().text());
        return false;
    }
    return true;
}

DigestCache::~DigestCache() {
    if (isUsable())
        flush();
    QSqlDatabase::database(m_connection, false).close();
    QSqlDatabase::removeDatabase(m_connection);
}

void DigestCache::store(const Key& key, const Entry& entry) {
    if (!isUsable())
        return;
    QMutexLocker lock(&m_mutex);
    Pending& pending = m_pending[qMakePair(key.device, key.inode)];
    const bool sameFile = std::memcmp(&pending.key, &key, sizeof key) == 0 && !pending.touchOnly;
    if (!sameFile)
        pending = Pending { key, Entry {}, false };
    pending.touchOnly = false;
    if (entry.first)
        pending.entry.first = entry.first;
    if (entry.last)
        pending.entry.last = entry.last;
    if (entry.whole)
        pending.entry.whole = entry.whole;
    if (entry.fast)
        pending.entry.fast = entry.fast;
}

void DigestCache::touch(const Key& key) {
    QMutexLocker lock(&m_mutex);
    const auto id = qMakePair(key.device, key.inode);
    if (!m_pending.contains(id))
        m_pending.insert(id, Pending { key, Entry {}, true });
}

void DigestCache::flush() {
    if (m_pending.isEmpty())
        return;
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    if (!db.transaction()) {
        fail(db.lastError().text());
        return;
    }
    QSqlQuery insert(db);
    QSqlQuery update(db);
    // A row of the same file with another key is replaced; parts of the same key already on disk
    // are kept where this run learnt nothing new.
    const bool prepared = insert.prepare(QStringLiteral(
                              "INSERT INTO digests (device, inode, size, mtime, ctime, first, last, whole, fast, seen) "
                              "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (device, inode) DO UPDATE SET "
                              "first = CASE WHEN size = excluded.size AND mtime = excluded.mtime AND ctime = "
                              "excluded.ctime THEN coalesce(excluded.first, first) ELSE excluded.first END, "
                              "last = CASE WHEN size = excluded.size AND mtime = excluded.mtime AND ctime = "
                              "excluded.ctime THEN coalesce(excluded.last, last) ELSE excluded.last END, "
                              "whole = CASE WHEN size = excluded.size AND mtime = excluded.mtime AND ctime = "
                              "excluded.ctime THEN coalesce(excluded.whole, whole) ELSE excluded.whole END, "
                              "fast = CASE WHEN size = excluded.size AND mtime = excluded.mtime AND ctime = "
                              "excluded.ctime THEN coalesce(excluded.fast, fast) ELSE excluded.fast END, "
                              "size = excluded.size, mtime = excluded.mtime, ctime = excluded.ctime, "
                              "seen = excluded.seen"))
        && update.prepare(QStringLiteral("UPDATE digests SET seen = ? WHERE device = ? AND inode = ?"));
    if (!prepared) {
        fail(insert.lastError().text() + update.lastError().text());
        db.rollback();
        return;
    }
    for (const Pending& pending : std::as_const(m_pending)) {
        const Key& k = pending.key;
        bool ok;
        if (pending.touchOnly) {
            update.addBindValue(m_now);
            update.addBindValue(static_cast<qint64>(k.device));
            update.addBindValue(static_cast<qint64>(k.inode));
            ok = update.exec();
        } else {
            const Entry& e = pending.entry;
            insert.addBindValue(static_cast<qint64>(k.device));
            insert.addBindValue(static_cast<qint64>(k.inode));
            insert.addBindValue(k.size);
            insert.addBindValue(k.modifiedNs);
            insert.addBindValue(k.changedNs);
            insert.addBindValue(blockValue(e.first));
            insert.addBindValue(blockValue(e.last));
            insert.addBindValue(digestValue(e.whole));
            insert.addBindValue(digestValue(e.fast));
            insert.addBindValue(m_now);
            ok = insert.exec();
        }
        if (!ok) {
            fail((pending.touchOnly ? update : insert).lastError().text());
            db.rollback();
            return;
        }
    }
    if (!db.commit()) {
        fail(db.lastError().text());
        db.rollback();
    }
    m_pending.clear();
}

DigestCache::Reader::Reader(DigestCache* cache)
    : m_cache(cache && cache->isUsable() ? cache : nullptr) {
    if (!m_cache)
        return;
    m_connection = newConnectionName();
    QSqlDatabase db = openConnection(m_connection, fileIn(m_cache->m_folder));
    m_query = std::make_unique<QSqlQuery>(db);
    if (!db.isOpen()
        || !m_query->prepare(QStringLiteral(
            "SELECT size, mtime, ctime, first, last, whole, fast, seen FROM digests WHERE device = ? AND inode = ?"))) {
        m_cache->fail(db.isOpen() ? m_query->lastError().text() : db.lastError().text());
        m_cache = nullptr;
    }
}

DigestCache::Reader::~Reader() {
    m_query.reset();
    if (!m_connection.isEmpty()) {
        QSqlDatabase::database(m_connection, false).close();
        QSqlDatabase::removeDatabase(m_connection);
    }
}

std::optional<DigestCache::Entry> DigestCache::Reader::find(const Key& key) {
    if (!m_cache || !m_cache->isUsable())
        return std::nullopt;
    m_query->addBindValue(static_cast<qint64>(key.device));
    m_query->addBindValue(static_cast<qint64>(key.inode));
    if (!m_query->exec()) {
        m_cache->fail(m_query->lastError().text());
        return std::nullopt;
    }
    std::optional<Entry> found;
    if (m_query->next() && m_query->value(0).toLongLong() == key.size
        && m_query->value(1).toLongLong() == key.modifiedNs && m_query->value(2).toLongLong() == key.changedNs) {
        Entry entry;
        entry.first = blockOf(m_query->value(3));
        entry.last = blockOf(m_query->value(4));
        entry.whole = digestOf(m_query->value(5));
        entry.fast = digestOf(m_query->value(6));
        if (m_query->value(7).toLongLong() < m_cache->m_now - kTouchSeconds)
            m_cache->touch(key);
        found = entry;
    }
    m_query->finish();
    return found;
}

namespace {

// The database and the journal files SQLite keeps beside it.
QStringList filesOf(const QString& folder) {
    const QString file = DigestCache::fileIn(folder);
    return { file, file + QStringLiteral("-wal"), file + QStringLiteral("-shm") };
}

} // namespace

qint64 DigestCache::sizeOnDisk(const QString& folder) {
    qint64 total = 0;
    for (const QString& part : filesOf(folder))
        total += QFileInfo(part).size();
    return total;
}

bool DigestCache::clear(const QString& folder) {
    bool ok = true;
    for (const QString& part : filesOf(folder)) {
        if (QFileInfo::exists(part) && !QFile::remove(part))
            ok = false;
    }
    return ok;
}
