#pragma once

#include "removal/RemovalActions.h"

#include <QMutex>
#include <QObject>
#include <atomic>
#include <memory>

class QThread;
class RemovalRun;

// Runs one removal on a thread of its own, so that a window stays live however long it takes. The
// plan is made on that thread before the first item is touched; then the items are handled one at
// a time. cancel() stops the run after the item in hand: the items not reached are reported as
// left alone ("cancelled"), never touched. The groups and the choice handed in are read, never
// changed, and must not change until finished() has been emitted.
class RemovalWorker : public QObject {
    Q_OBJECT

public:
    RemovalWorker(RemovalActions::Action action, const QList<DuplicateFilePtr>& files,
        const QList<DuplicateGroupPtr>& groups, const QList<QByteArray>& roots,
        const QList<QByteArray>& protectedFolders = {}, QObject* parent = nullptr);
    // Cancels and waits for the item in hand.
    ~RemovalWorker() override;

    void start();
    void cancel();
    bool isCancelled() const { return m_cancel.load(); }
    // Waits for the run to end (the item in hand, after a cancel); false when `timeoutMs` passed first.
    bool wait(int timeoutMs = -1);
    bool isFinished() const { return m_finished.load(); }

    // Live figures, for any thread: items handled and in all (0 until the plan is made), and the
    // path of the item in hand.
    qsizetype done() const { return m_done.load(); }
    qsizetype total() const { return m_total.load(); }
    QByteArray currentPath() const;

    // Once finished: one outcome per planned item, in the plan's order.
    QList<RemovalActions::Outcome> outcomes() const;

    static QString cancelledText();

signals:
    void finished();

private:
    void run();

    RemovalActions::Action m_action;
    QList<DuplicateFilePtr> m_files;
    QList<DuplicateGroupPtr> m_groups;
    QList<QByteArray> m_roots;
    QList<QByteArray> m_protected;
    std::unique_ptr<RemovalRun> m_run;
    std::unique_ptr<QThread> m_thread;
    std::atomic<bool> m_cancel { false };
    std::atomic<bool> m_finished { false };
    std::atomic<qsizetype> m_done { 0 };
    std::atomic<qsizetype> m_total { 0 };
    mutable QMutex m_mutex;
    QByteArray m_current;
    QList<RemovalActions::Outcome> m_outcomes;
};
