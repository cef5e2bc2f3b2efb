#pragma once

#include "detect/Fingerprint.h"

#include <QByteArray>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

// Hashes files on every core while the walk goes on. Each job names a file, its length as the walk
// saw it, and the slot that receives its scan fingerprint (FileHash::scanFingerprint); the slot must stay where it is
// until waitForAll() returns. Each finished file adds one to the given counter. The largest pending file is taken
// first, so that one big file does not keep a single core busy at the end.
class HashPool {
public:
    struct Job {
        QByteArray path;
        Fingerprint* slot;
        qint64 size = 0;
    };

    explicit HashPool(std::atomic<qint64>& finishedCounter, int threads = 0);
    ~HashPool();
    HashPool(const HashPool&) = delete;
    HashPool& operator=(const HashPool&) = delete;

    void submit(std::vector<Job>&& jobs);
    void submit(Job&& job);
    void waitForAll();

private:
    void work();

    std::atomic<qint64>& m_finished;
    std::mutex m_mutex;
    std::condition_variable m_hasWork;
    std::condition_variable m_idle;
    std::vector<Job> m_queue; // a max-heap by size
    size_t m_running = 0;
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};
