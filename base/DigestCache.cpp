#include "base/DigestCache.h"

#include "base/Log.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <algorithm>
#include <cstring>
#include <tuple>

namespace {

// Version 3: one packed value per file, block digests in XXH3, files of every length.
constexpr int kSchemaVersion = 3;
constexpr qint64 kExpirySeconds = 90 * 24 * 3600;
// A hit refreshes its entry's "seen" stamp only when that is older than this, so that a rescan of
// an unchanged tree writes next to nothing.
constexpr qint64 kTouchSeconds = 24 * 3600;
constexpr int kBusyTimeoutMs = 3000;

enum Part : uint8_t { FirstPart = 1, LastPart = 2, WholePart = 4, FastPart = 8 };

// The stored value of an entry: device, inode, size, modification and change time, first and last
// block digests (eight bytes each, little-endian), whole and fast digests (sixteen bytes each) and
// one byte saying which digests are known. One column instead of ten keeps the load at start cheap.
constexpr qsizetype kPackedSize = 7 * 8 + 2 * 16 + 1;

void put64(char*& out, quint64 value) {
    for (int i = 0; i < 8; ++i)
        *out++ = static_cast<char>(value >> (8 * i));
}

quint64 get64(const char*& in) {
    quint64 value = 0;
    for (int i = 0; i < 8; ++i)
        value |= static_cast<quint64>(static_cast<uint8_t>(*in++)) << (8 * i);
    return value;
}

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
    DigestCache* loading = cache.get();
    cache->m_loader = std::thread([loading] { loading->load(); });
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
                                   "seen INTEGER NOT NULL, entry BLOB NOT NULL, PRIMARY KEY (device, inode)) "
                                   "WITHOUT ROWID"))
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

// Reads every entry on the loader thread, through a connection of its own.
void DigestCache::load() {
    const QString connection = newConnectionName();
    {
        QSqlDatabase db = openConnection(connection, fileIn(m_folder));
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (!db.isOpen()) {
            fail(db.lastError().text());
        } else if (!query.exec(QStringLiteral("SELECT entry, seen FROM digests ORDER BY device, inode"))) {
            fail(query.lastError().text());
        } else {
            while (query.next()) {
                const QByteArray packed = query.value(0).toByteArray();
                if (packed.size() != kPackedSize)
                    continue; // not written by this layout: as good as missing
                const char* in = packed.constData();
                Row row;
                row.device = get64(in);
                row.inode = get64(in);
                row.size = static_cast<qint64>(get64(in));
                row.modifiedNs = static_cast<qint64>(get64(in));
                row.changedNs = static_cast<qint64>(get64(in));
                row.first = get64(in);
                row.last = get64(in);
                std::memcpy(row.whole.data(), in, row.whole.size());
                in += row.whole.size();
                std::memcpy(row.fast.data(), in, row.fast.size());
                in += row.fast.size();
                row.parts = static_cast<uint8_t>(*in);
                row.seen = query.value(1).toLongLong();
                m_rows.push_back(row);
            }
            if (query.lastError().isValid())
                fail(query.lastError().text());
        }
        query.finish();
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    // The primary key orders the rows already; sorting again only guards the binary search.
    auto less = [](const Row& a, const Row& b) { return std::tie(a.device, a.inode) < std::tie(b.device, b.inode); };
    if (!std::is_sorted(m_rows.begin(), m_rows.end(), less))
        std::sort(m_rows.begin(), m_rows.end(), less);
    std::lock_guard lock(m_loadMutex);
    m_loaded = true;
    m_loadEnded.store(true, std::memory_order_release);
    m_loadDone.notify_all();
}

void DigestCache::waitForLoad() {
    std::unique_lock lock(m_loadMutex);
    m_loadDone.wait(lock, [this] { return m_loaded; });
}

const DigestCache::Row* DigestCache::rowOf(const Key& key) const {
    const auto it = std::lower_bound(m_rows.begin(), m_rows.end(), key,
        [](const Row& row, const Key& id) { return std::tie(row.device, row.inode) < std::tie(id.device, id.inode); });
    if (it == m_rows.end() || it->device != key.device || it->inode != key.inode || it->size != key.size
        || it->modifiedNs != key.modifiedNs || it->changedNs != key.changedNs)
        return nullptr;
    return &*it;
}

DigestCache::~DigestCache() {
    if (m_loader.joinable())
        m_loader.join();
    if (isUsable())
        flush();
    QSqlDatabase::database(m_connection, false).close();
    QSqlDatabase::removeDatabase(m_connection);
}

std::optional<DigestCache::Entry> DigestCache::find(const Key& key) {
    if (!isUsable())
        return std::nullopt;
    waitForLoad();
    const Row* row = isUsable() ? rowOf(key) : nullptr;
    if (!row)
        return std::nullopt;
    Entry entry;
    if (row->parts & FirstPart)
        entry.first = row->first;
    if (row->parts & LastPart)
        entry.last = row->last;
    if (row->parts & WholePart)
        entry.whole = row->whole;
    if (row->parts & FastPart)
        entry.fast = row->fast;
    if (row->seen < m_now - kTouchSeconds)
        touch(key);
    return entry;
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
    const bool prepared = insert.prepare(QStringLiteral(
                              "INSERT OR REPLACE INTO digests (device, inode, seen, entry) VALUES (?, ?, ?, ?)"))
        && update.prepare(QStringLiteral("UPDATE digests SET seen = ? WHERE device = ? AND inode = ?"));
    if (!prepared) {
        fail(insert.lastError().text() + update.lastError().text());
        db.rollback();
        return;
    }
    QByteArray packed(kPackedSize, Qt::Uninitialized);
    for (const Pending& pending : std::as_const(m_pending)) {
        const Key& k = pending.key;
        bool ok;
        if (pending.touchOnly) {
            update.addBindValue(m_now);
            update.addBindValue(static_cast<qint64>(k.device));
            update.addBindValue(static_cast<qint64>(k.inode));
            ok = update.exec();
        } else {
            // A row of the same file with another key is replaced; parts of the same key loaded at
            // the start are kept where this run learnt nothing new.
            Entry e = pending.entry;
            if (const Row* row = rowOf(k)) {
                if (!e.first && (row->parts & FirstPart))
                    e.first = row->first;
                if (!e.last && (row->parts & LastPart))
                    e.last = row->last;
                if (!e.whole && (row->parts & WholePart))
                    e.whole = row->whole;
                if (!e.fast && (row->parts & FastPart))
                    e.fast = row->fast;
            }
            char* out = packed.data();
            put64(out, k.device);
            put64(out, k.inode);
            put64(out, static_cast<quint64>(k.size));
            put64(out, static_cast<quint64>(k.modifiedNs));
            put64(out, static_cast<quint64>(k.changedNs));
            put64(out, e.first.value_or(0));
            put64(out, e.last.value_or(0));
            const Digest none {};
            std::memcpy(out, e.whole.value_or(none).data(), none.size());
            out += none.size();
            std::memcpy(out, e.fast.value_or(none).data(), none.size());
            out += none.size();
            *out = static_cast<char>((e.first ? FirstPart : 0) | (e.last ? LastPart : 0) | (e.whole ? WholePart : 0)
                | (e.fast ? FastPart : 0));
            insert.addBindValue(static_cast<qint64>(k.device));
            insert.addBindValue(static_cast<qint64>(k.inode));
            insert.addBindValue(m_now);
            insert.addBindValue(packed);
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
