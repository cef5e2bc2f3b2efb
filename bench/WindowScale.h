#pragma once

// What window_scale's runs share: a prompter that says yes, the window thread's pulse and CPU
// time, the process's memory, and one step of a run with its report line.
#include "review/Prompter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <time.h>

namespace WindowScale {

// Says yes to every question, with the pop-up's first item: the removal moves to the trash.
class YesPrompter : public Prompter {
public:
    AlertAnswer runAlert(Alert&) override { return { FirstButton, false, 0 }; }
    PanelAnswer runOpenPanel(const OpenPanel&) override { return {}; }
};

// CPU time of the calling thread: what the window's thread worked, whatever else the machine ran.
inline qint64 threadCpuMs() {
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<qint64>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// The resident memory of the process now, and the most it has had.
inline qint64 statusBytes(const char* field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(static_cast<qsizetype>(qstrlen(field))).trimmed().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}
inline qint64 residentBytes() {
    return statusBytes("VmRSS:");
}
inline qint64 peakResidentBytes() {
    return statusBytes("VmHWM:");
}

// The interface thread's pulse: the longest gap between two ticks since the last reset.
class Heartbeat : public QObject {
public:
    Heartbeat() {
        m_clock.start();
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(10);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            const qint64 now = m_clock.elapsed();
            m_longest = std::max(m_longest, now - m_last);
            m_last = now;
        });
        m_timer.start();
    }
    void reset() {
        m_last = m_clock.elapsed();
        m_longest = 0;
    }
    // The gap still open counts too: a step that ends while the thread is busy.
    qint64 longest() const { return std::max(m_longest, m_clock.elapsed() - m_last); }

private:
    QElapsedTimer m_clock;
    QTimer m_timer;
    qint64 m_last = 0;
    qint64 m_longest = 0;
};

// Runs the event loop until `done` holds (looked at every 5 ms), at most `timeoutMs`.
inline bool waitFor(const std::function<bool()>& done, int timeoutMs = 120000) {
    if (done())
        return true;
    QEventLoop loop;
    QTimer poll;
    QElapsedTimer clock;
    clock.start();
    bool ok = false;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        ok = done();
        if (ok || clock.elapsed() > timeoutMs)
            loop.quit();
    });
    poll.start(5);
    loop.exec();
    return ok;
}

struct Report {
    qint64 longestGap = 0;
    void step(const char* name, Heartbeat& beat, const std::function<void()>& act, const std::function<bool()>& done,
        qint64* elapsedOut = nullptr) {
        QElapsedTimer clock;
        beat.reset();
        clock.start();
        const qint64 cpuBefore = threadCpuMs();
        act();
        const bool ok = waitFor(done);
        const qint64 elapsed = clock.elapsed();
        const qint64 gap = beat.longest();
        const qint64 cpu = threadCpuMs() - cpuBefore;
        longestGap = std::max(longestGap, gap);
        std::printf("%-28s longest gap %5lld ms, done in %6lld ms, window thread busy %5lld ms%s\n", name,
            static_cast<long long>(gap), static_cast<long long>(elapsed), static_cast<long long>(cpu),
            ok ? "" : " (TIMED OUT)");
        std::fflush(stdout);
        if (elapsedOut)
            *elapsedOut = elapsed;
        // The window settles before the next step.
        waitFor([&clock, elapsed] { return clock.elapsed() > elapsed + 100; });
    }
};

// Runs the synthetic result of `count` groups, `real` of them real files that it then removes.
int runSynthetic(qsizetype count, qsizetype real);
// Scans `folder` in the window as a user would (minimum size 0) and drives its result.
int runScan(const QByteArray& folder);

} // namespace WindowScale
