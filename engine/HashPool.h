#pragma once

#include "base/DigestCache.h"
#include "detect/Fingerprint.h"
#include "detect/FolderTree.h"

#include <QByteArray>
#include <QList>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

// What a look at a file's first or last block found. `location` is where the file starts on disk
// (its first physical block, or its inode number where the file system does not tell), the key of
// disk-order reads.
struct BlockProbe {
    quint64 first = 0;
    quint64 last = 0;
    quint64 location = 0;
    bool failed = false; // the file could not be looked at: it takes `failure` as its fingerprint
    Fingerprint failure = Fingerprint::noHash();
};

// Reads files on a set of threads while the walk goes on. A whole-file job writes the file's digest
// into its slot ("NOHash" when it cannot be read) and adds one to the given counter; a block job
// writes the digest of the first or last block into its probe. Slots and probes must stay where
// they are until waitForAll() returns.
//
// On solid-state disks every core reads and the largest pending file is taken first, so that one
// big file does not keep a single core busy at the end. On a rotational disk one thread reads, in
// the order of the jobs' `order` keys (then as submitted), so that the head sweeps the disk once.
//
// With a digest cache, each file is looked up under the key the walk saw before it is opened, and
// what is read is stored for the next run.
class HashPool {
public:
    static constexpr qint64 kBlock = 4096;

    // A whole read gives the file's MD5, or for files whose digest only decides whether they match
    // each other (no folder fingerprint takes it in) a 128-bit XXH3, many times faster to compute.
    enum class Part : uint8_t { Whole, WholeFast, FirstBlock, LastBlock };
    struct Job {
        QByteArray path; // or, for a file in a walked folder, that folder and its place there:
        const FolderTreeNode* folder = nullptr;
        qint32 child = -1;
        Fingerprint* slot = nullptr; // whole-file jobs
        BlockProbe* probe = nullptr; // block jobs
        DigestCache::Key key; // the file as the walk saw it; its length is the length to read
        quint64 order = 0;
        Part part = Part::Whole;

        QByteArray filePath() const;
    };

    struct Options {
        int threads = 0; // 0: one per core
        bool diskOrder = false;
        DigestCache* cache = nullptr;
        std::atomic<qint64>* bytesRead = nullptr; // content bytes read, when given
    };

    HashPool(std::atomic<qint64>& finishedCounter, Options options);
    explicit HashPool(std::atomic<qint64>& finishedCounter)
        : HashPool(finishedCounter, Options {}) { }
    ~HashPool();
    HashPool(const HashPool&) = delete;
    HashPool& operator=(const HashPool&) = delete;

    // One reader per rotational disk when every target lies on such a disk (sysfs
    // `queue/rotational`), otherwise every core.
    static Options optionsForTargets(const QList<QByteArray>& targets);

    // Jobs the digest cache answers (once it is loaded) are done at once, on the calling thread.
    void submit(std::vector<Job>&& jobs);
    void submit(Job&& job);
    void waitForAll();
    // Blocks while more than `limit` jobs wait, so that a walk far ahead of the reads does not
    // hold every file's job in memory at once.
    void waitForRoom(size_t limit);

    // The digest of a block as probes hold it (its 64-bit XXH3).
    static quint64 blockDigest(const char* data, qint64 length);

private:
    struct Queued {
        Job job;
        quint64 serial;
    };
    bool before(const Queued& a, const Queued& b) const;
    void push(Job&& job);
    void work();

    std::atomic<qint64>& m_finished;
    Options m_options;
    std::mutex m_mutex;
    std::condition_variable m_hasWork;
    std::condition_variable m_idle;
    std::condition_variable m_room;
    size_t m_roomWanted = 0; // the queue length a waitForRoom() call waits for, 0 for none
    std::vector<Queued> m_queue; // a heap: the next job to read on top
    quint64 m_serial = 0;
    size_t m_running = 0;
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};
