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
    DigestCache* self = cache.get();
    cache->m_loader = std::thread([self] { self->load(); });
    cache->m_writer = std::thread([self] { self->writeBatches(); });
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
    {
        std::lock_guard lock(m_writeMutex);
        if (!m_pending.empty())
            m_batches.push_back(std::move(m_pending));
        m_closing = true;
    }
    m_hasBatch.notify_all();
    if (m_writer.joinable())
        m_writer.join();
    if (m_loader.joinable())
        m_loader.join();
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
    Row row {};
    row.device = key.device;
    row.inode = key.inode;
    row.size = key.size;
    row.modifiedNs = key.modifiedNs;
    row.changedNs = key.changedNs;
    if (entry.first) {
        row.first = *entry.first;
        row.parts |= FirstPart;
    }
    if (entry.last) {
        row.last = *entry.last;
        row.parts |= LastPart;
    }
    if (entry.whole) {
        row.whole = *entry.whole;
        row.parts |= WholePart;
    }
    if (entry.fast) {
        row.fast = *entry.fast;
        row.parts |= FastPart;
    }
    if (row.parts != 0)
        queue(row);
}

void DigestCache::touch(const Key& key) {
    Row row {};
    row.device = key.device;
    row.inode = key.inode;
    row.size = key.size;
    row.modifiedNs = key.modifiedNs;
    row.changedNs = key.changedNs;
    queue(row);
}

void DigestCache::queue(const Row& row) {
    constexpr size_t kBatch = 16384;
    std::lock_guard lock(m_writeMutex);
    m_pending.push_back(row);
    if (m_pending.size() >= kBatch) {
        m_batches.push_back(std::move(m_pending));
        m_pending = {};
        m_hasBatch.notify_one();
    }
}

// The writer thread: one connection of its own, one transaction per batch.
void DigestCache::writeBatches() {
    const QString connection = newConnectionName();
    {
        QSqlDatabase db;
        std::unique_lock lock(m_writeMutex);
        for (;;) {
            m_hasBatch.wait(lock, [this] { return m_closing || !m_batches.empty(); });
            if (m_batches.empty())
                break;
            std::vector<Row> batch = std::move(m_batches.front());
            m_batches.erase(m_batches.begin());
            lock.unlock();
            // Entries merge with what was loaded, so the load comes first.
            waitForLoad();
            if (isUsable()) {
                if (!db.isValid())
                    db = openConnection(connection, fileIn(m_folder));
                write(batch, db);
            }
            lock.lock();
        }
        lock.unlock();
        if (db.isValid())
            db.close();
    }
    QSqlDatabase::removeDatabase(connection);
}

void DigestCache::write(std::vector<Row>& batch, QSqlDatabase& db) {
    if (!db.isOpen() || !db.transaction()) {
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
    // In key order the table's pages are written once each; rows of one file merge, the parts
    // learnt last winning, and a row of another key (the file changed) replaces them.
    std::stable_sort(batch.begin(), batch.end(),
        [](const Row& a, const Row& b) { return std::tie(a.device, a.inode) < std::tie(b.device, b.inode); });
    auto sameKey = [](const Row& a, const Row& b) {
        return a.size == b.size && a.modifiedNs == b.modifiedNs && a.changedNs == b.changedNs;
    };
    auto mergeInto = [](Row& into, const Row& from) {
        if ((from.parts & FirstPart) && !(into.parts & FirstPart))
            into.first = from.first;
        if ((from.parts & LastPart) && !(into.parts & LastPart))
            into.last = from.last;
        if ((from.parts & WholePart) && !(into.parts & WholePart))
            into.whole = from.whole;
        if ((from.parts & FastPart) && !(into.parts & FastPart))
            into.fast = from.fast;
        into.parts |= from.parts;
    };
    QByteArray packed(kPackedSize, Qt::Uninitialized);
    for (size_t i = 0, j; i < batch.size(); i = j) {
        Row row = batch[i];
        for (j = i + 1; j < batch.size() && batch[j].device == row.device && batch[j].inode == row.inode; ++j) {
            Row later = batch[j];
            if (sameKey(later, row))
                mergeInto(later, row);
            else if (later.parts == 0)
                continue; // a refresh of an entry this batch replaces anyway
            row = later;
        }
        bool ok;
        if (row.parts == 0) {
            update.addBindValue(m_now);
            update.addBindValue(static_cast<qint64>(row.device));
            update.addBindValue(static_cast<qint64>(row.inode));
            ok = update.exec();
        } else {
            // Parts of the same key learnt earlier in this run, or loaded at its start, are kept.
            const auto id = qMakePair(row.device, row.inode);
            const auto earlier = m_partial.constFind(id);
            if (earlier != m_partial.cend() && sameKey(*earlier, row))
                mergeInto(row, *earlier);
            const Key key { row.device, row.inode, row.size, row.modifiedNs, row.changedNs };
            if (const Row* loaded = rowOf(key))
                mergeInto(row, *loaded);
            if (row.parts & (WholePart | FastPart))
                m_partial.remove(id);
            else
                m_partial.insert(id, row);
            char* out = packed.data();
            put64(out, row.device);
            put64(out, row.inode);
            put64(out, static_cast<quint64>(row.size));
            put64(out, static_cast<quint64>(row.modifiedNs));
            put64(out, static_cast<quint64>(row.changedNs));
            put64(out, (row.parts & FirstPart) ? row.first : 0);
            put64(out, (row.parts & LastPart) ? row.last : 0);
            const Digest none {};
            std::memcpy(out, ((row.parts & WholePart) ? row.whole : none).data(), none.size());
            out += none.size();
            std::memcpy(out, ((row.parts & FastPart) ? row.fast : none).data(), none.size());
            out += none.size();
            *out = static_cast<char>(row.parts);
            insert.addBindValue(static_cast<qint64>(row.device));
            insert.addBindValue(static_cast<qint64>(row.inode));
            insert.addBindValue(m_now);
            insert.addBindValue(packed);
            ok = insert.exec();
        }
        if (!ok) {
            fail((row.parts == 0 ? update : insert).lastError().text());
            db.rollback();
            return;
        }
    }
    if (!db.commit()) {
        fail(db.lastError().text());
        db.rollback();
    }
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
