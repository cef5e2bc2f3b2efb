#pragma once

#include <QThread>
#include <QtGlobal>
#include <algorithm>
#include <thread>
#include <vector>

// Work over the groups of a large result, shared out among the cores.
namespace SplitWork {

// Below this many items one thread does it all: starting threads would cost more than it saves.
constexpr qsizetype kSplitFrom = 50000;

// How many consecutive ranges `count` items are cut into.
inline int partsFor(qsizetype count) {
    return count < kSplitFrom ? 1 : std::clamp(QThread::idealThreadCount(), 1, 4);
}

// Runs work(part, begin, end) over `parts` consecutive ranges of [0, count), the first on the
// calling thread and the others on threads of their own, and returns when all have ended.
template <typename Work> void run(qsizetype count, int parts, const Work& work) {
    const qsizetype step = (count + parts - 1) / std::max(parts, 1);
    std::vector<std::thread> others;
    for (int part = 1; part < parts; ++part) {
        const qsizetype begin = std::min(count, step * part);
        others.emplace_back([&work, part, begin, end = std::min(count, begin + step)] { work(part, begin, end); });
    }
    work(0, qsizetype(0), std::min(count, step));
    for (std::thread& thread : others)
        thread.join();
}

} // namespace SplitWork
