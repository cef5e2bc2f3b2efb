#include "engine/HashPool.h"

#include "detect/FileHash.h"

#include <algorithm>

namespace {

bool smaller(const HashPool::Job& a, const HashPool::Job& b) {
    return a.size < b.size;
}

} // namespace

HashPool::HashPool(std::atomic<qint64>& finishedCounter, int threads)
    : m_finished(finishedCounter) {
    if (threads <= 0)
        threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    for (int i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { work(); });
}

HashPool::~HashPool() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_hasWork.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void HashPool::submit(std::vector<Job>&& jobs) {
    if (jobs.empty())
        return;
    {
        std::lock_guard lock(m_mutex);
        for (Job& job : jobs) {
            m_queue.push_back(std::move(job));
            std::push_heap(m_queue.begin(), m_queue.end(), smaller);
        }
    }
    m_hasWork.notify_all();
}

void HashPool::submit(Job&& job) {
    {
        std::lock_guard lock(m_mutex);
        m_queue.push_back(std::move(job));
        std::push_heap(m_queue.begin(), m_queue.end(), smaller);
    }
    m_hasWork.notify_one();
}

void HashPool::waitForAll() {
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return m_queue.empty() && m_running == 0; });
}

void HashPool::work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_hasWork.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
        if (m_queue.empty())
            return;
        std::pop_heap(m_queue.begin(), m_queue.end(), smaller);
        Job job = std::move(m_queue.back());
        m_queue.pop_back();
        ++m_running;
        lock.unlock();

        *job.slot = FileHash::scanFingerprint(job.path, job.size);
        m_finished.fetch_add(1, std::memory_order_relaxed);

        lock.lock();
        --m_running;
        if (m_queue.empty() && m_running == 0)
            m_idle.notify_all();
    }
}
