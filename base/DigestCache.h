#pragma once

#include <QHash>
#include <QMutex>
#include <QString>
#include <array>
#include <atomic>
#include <memory>
#include <optional>

class QSqlQuery;

// Digests of file contents kept across runs in an SQLite file, so that a rescan of an unchanged
// tree reads no content. An entry belongs to one file identity (device and inode, not the path) and
// is valid only while the file's size, modification time and change time are exactly those it was
// stored with; anything else is a miss. The change time cannot be set by any program, so content
// rewritten under a restored modification time misses too. Moving or renaming a folder keeps the
// entries of the files inside it; renaming a file itself stamps its change time on Linux file
// systems, so that one file is read again.
//
// The file is opened in WAL mode with a busy timeout, so several processes may use it at once.
// Every failure (a missing, locked, unwritable, corrupt or full cache) writes one log line and
// turns the cache off for the rest of the run: the scan then reads the files, never trusting a
// half-read entry.
class DigestCache {
public:
    using Digest = std::array<uint8_t, 16>;

    struct Key {
        quint64 device = 0;
        quint64 inode = 0;
        qint64 size = 0;
        qint64 modifiedNs = 0;
        qint64 changedNs = 0;
    };
    // What is known of one file's content: digests of its first and last blocks and of the whole
    // (MD5, and the faster XXH3 of files compared only with each other).
    struct Entry {
        std::optional<quint64> first;
        std::optional<quint64> last;
        std::optional<Digest> whole;
        std::optional<Digest> fast;
    };

    // Looks entries up on the thread that made it (each pool thread has its own connection).
    class Reader {
    public:
        explicit Reader(DigestCache* cache);
        ~Reader();
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;
        std::optional<Entry> find(const Key& key);

    private:
        DigestCache* m_cache;
        QString m_connection;
        std::unique_ptr<QSqlQuery> m_query;
    };

    // $XDG_CACHE_HOME/twinsift, or ~/.cache/twinsift.
    static QString defaultFolder();
    static QString fileIn(const QString& folder);

    // Opens (creating when needed) the cache in `folder` and drops entries unseen for 90 days.
    // Null, after one log line, when the cache cannot be used.
    static std::unique_ptr<DigestCache> open(const QString& folder);
    // Writes the entries stored during the run (one transaction) and closes the file.
    ~DigestCache();
    DigestCache(const DigestCache&) = delete;
    DigestCache& operator=(const DigestCache&) = delete;

    // Queues what was learnt of a file; parts already queued for the same key are kept.
    void store(const Key& key, const Entry& entry);
    bool isUsable() const { return m_usable.load(std::memory_order_relaxed); }

    // Entries whose change time is this close to the present are not stored: the file may still
    // change within the same time-stamp tick, which no key could tell apart.
    void setSettleNs(qint64 settleNs) { m_settleNs = settleNs; }
    qint64 settleNs() const { return m_settleNs; }

    // Bytes the cache takes on disk (the database and its journal files), and removing them.
    static qint64 sizeOnDisk(const QString& folder);
    static bool clear(const QString& folder);

private:
    explicit DigestCache(QString folder);
    bool prepare();
    void flush();
    void fail(const QString& what);
    void touch(const Key& key);

    QString m_folder;
    QString m_connection;
    std::atomic<bool> m_usable { true };
    std::atomic<bool> m_failureLogged { false };
    qint64 m_settleNs = 2'000'000'000;
    qint64 m_now = 0; // seconds, the run's "seen" stamp
    QMutex m_mutex;
    struct Pending {
        Key key;
        Entry entry;
        bool touchOnly = false;
    };
    QHash<QPair<quint64, quint64>, Pending> m_pending;
};
