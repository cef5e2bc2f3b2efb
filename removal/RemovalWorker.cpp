#include "removal/RemovalWorker.h"

#include "base/Log.h"
#include "base/PathBytes.h"
#include "removal/RemovalRun.h"

#include <QMutexLocker>
#include <QThread>

RemovalWorker::RemovalWorker(RemovalActions::Action action, const QList<DuplicateFilePtr>& files,
    const QList<DuplicateGroupPtr>& groups, const QList<QByteArray>& roots, const QList<QByteArray>& protectedFolders,
    QObject* parent)
    : QObject(parent)
    , m_action(action)
    , m_files(files)
    , m_groups(groups)
    , m_roots(roots)
    , m_protected(protectedFolders) { }

RemovalWorker::~RemovalWorker() {
    cancel();
    wait();
}

QString RemovalWorker::cancelledText() {
    return QStringLiteral("cancelled");
}

void RemovalWorker::start() {
    m_thread.reset(QThread::create([this] { run(); }));
    // Queued to this object's thread: the owner hears of the end where it lives.
    connect(m_thread.get(), &QThread::finished, this, &RemovalWorker::finished);
    m_thread->start();
}

void RemovalWorker::cancel() {
    m_cancel = true;
}

bool RemovalWorker::wait(int timeoutMs) {
    if (!m_thread)
        return true;
    return m_thread->wait(timeoutMs < 0 ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(timeoutMs));
}

QByteArray RemovalWorker::currentPath() const {
    QMutexLocker lock(&m_mutex);
    return m_current;
}

QList<RemovalActions::Outcome> RemovalWorker::outcomes() const {
    QMutexLocker lock(&m_mutex);
    return m_outcomes;
}

void RemovalWorker::run() {
    auto removal = std::make_unique<RemovalRun>(m_action, m_files, m_groups, m_roots, m_protected);
    m_total = removal->total();
    while (!removal->atEnd() && !m_cancel.load()) {
        {
            QMutexLocker lock(&m_mutex);
            m_current = removal->next().file->urlFile();
        }
        removal->step();
        m_done = removal->done();
    }
    removal->stop();
    QList<RemovalActions::Outcome> outcomes = removal->outcomes();
    // What was not reached stays as it is, and says so.
    for (qsizetype i = 0; i < outcomes.size(); ++i) {
        RemovalActions::Outcome& outcome = outcomes[i];
        if (outcome.file)
            continue;
        const RemovalPlan::Item& item = removal->plan().items()[static_cast<size_t>(i)];
        outcome.file = item.file;
        outcome.keptCopy = item.kept ? item.kept->urlFile() : QByteArray();
        outcome.left = true;
        outcome.error = item.isLeft() ? item.leftReason : cancelledText();
    }
    if (m_cancel.load() && removal->done() < removal->total())
        Log::line(QStringLiteral("removal cancelled after %1 of %2 items").arg(removal->done()).arg(removal->total()));
    QMutexLocker lock(&m_mutex);
    m_outcomes = std::move(outcomes);
    m_current.clear();
    m_run = std::move(removal);
    m_finished = true;
}
