#pragma once

#include <QHash>
#include <QString>
#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

// Digests of file contents kept across runs in an SQLite file, so that a rescan of an unchanged
// tree reads no content. An entry belongs to one file identity (device and inode, not the path) and
// is valid only while the file's size, modification time and change time are exactly those it was
// stored with; anything else is a miss. The change time cannot be set by any program, so content
// rewritten under a restored modification time misses too. Moving or renaming a folder keeps the
// entries of the files inside it; renaming a file itself stamps its change time on Linux file
// systems, so that one file is read again.
//
// Opening the cache starts reading every entry into memory on a thread of its own, while the scan
// walks; a look-up waits for that load and then costs a binary search, far less than opening the
// file. What the run learns is written back by a third thread in batches, each one transaction in
// key order, so that neither memory nor the write-ahead log grows with the whole run.
//
// The file is opened in WAL mode with a busy timeout, so several processes may use it at once.
// Every failure (a missing, locked, unwritable, corrupt or full cache) writes one log line and
// turns the cache off for the rest of the run: the scan then reads the files, never trusting a
// half-read entry.
class QSqlDatabase;

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

    // $XDG_CACHE_HOME/twinsift, or ~/.cache/twinsift.
    static QString defaultFolder();
    static QString fileIn(const QString& folder);

    // Opens (creating when needed) the cache in `folder`, drops entries unseen for 90 days and
    // starts loading the rest. Null, after one log line, when the cache cannot be used.
    static std::unique_ptr<DigestCache> open(const QString& folder);
    // Writes what is still queued and closes the file. Runs on the thread that opened the cache.
    ~DigestCache();
    DigestCache(const DigestCache&) = delete;
    DigestCache& operator=(const DigestCache&) = delete;

    // The entry stored under exactly this key; waits for the load to end. Any thread.
    std::optional<Entry> find(const Key& key);
    // Queues what was learnt of a file; parts already known for the same key are kept. Any thread.
    void store(const Key& key, const Entry& entry);
    bool isUsable() const { return m_usable.load(std::memory_order_relaxed); }
    // Whether the load has ended, so that find() would not wait.
    bool isLoaded() const { return m_loadEnded.load(std::memory_order_acquire); }

    // Entries whose change time is this close to the present are not stored: the file may still
    // change within the same time-stamp tick, which no key could tell apart.
    void setSettleNs(qint64 settleNs) { m_settleNs = settleNs; }
    qint64 settleNs() const { return m_settleNs; }

    // Bytes the cache takes on disk (the database and its journal files), and removing them.
    static qint64 sizeOnDisk(const QString& folder);
    static bool clear(const QString& folder);

private:
    // One stored entry as held in memory, sorted by device and inode.
    struct Row {
        quint64 device;
        quint64 inode;
        qint64 size;
        qint64 modifiedNs;
        qint64 changedNs;
        qint64 seen;
        quint64 first;
        quint64 last;
        Digest whole;
        Digest fast;
        uint8_t parts; // which of the four digests are known
    };

    explicit DigestCache(QString folder);
    bool prepare();
    void load();
    void waitForLoad();
    // The loaded row stored under exactly this key.
    const Row* rowOf(const Key& key) const;
    void queue(const Row& row);
    void writeBatches();
    void write(std::vector<Row>& batch, QSqlDatabase& db);
    void fail(const QString& what);
    void touch(const Key& key);

    QString m_folder;
    QString m_connection;
    std::atomic<bool> m_usable { true };
    std::atomic<bool> m_failureLogged { false };
    qint64 m_settleNs = 2'000'000'000;
    qint64 m_now = 0; // seconds, the run's "seen" stamp

    std::vector<Row> m_rows;
    std::thread m_loader;
    std::mutex m_loadMutex;
    std::condition_variable m_loadDone;
    bool m_loaded = false;
    std::atomic<bool> m_loadEnded { false };

    // Rows to write (a row with no parts only refreshes its entry's "seen" stamp), in batches.
    std::mutex m_writeMutex;
    std::condition_variable m_hasBatch;
    std::vector<Row> m_pending;
    std::vector<std::vector<Row>> m_batches;
    bool m_closing = false;
    std::thread m_writer;
    // Rows written in this run that lack a whole digest: later parts of the same file merge in.
    QHash<QPair<quint64, quint64>, Row> m_partial;
};
