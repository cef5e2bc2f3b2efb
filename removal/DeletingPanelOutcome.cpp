// The review sheet from the end of a removal on: the groups brought up to date on another thread,
// the list of what was done and what was left, and the status line in every state.
#include "removal/DeletingPanel.h"

#include "base/PathBytes.h"
#include "controls/StripedProgressBar.h"
#include "engine/ScanState.h"
#include "removal/RemovalListModel.h"
#include "removal/RemovalTexts.h"
#include "removal/RemovalWorker.h"
#include "review/StatusTexts.h"

#include <QLabel>
#include <QListView>
#include <QPushButton>

void DeletingPanel::removalFinished() {
    m_progressTimer.stop();
    m_lastOutcomes = m_worker->outcomes();
    m_worker.reset();
    setRemoving(false);
    updateGroups();
    // Everything done: the sheet closes as soon as the groups are up to date. Anything left or
    // failed: the sheet says what was done with each item first.
    const bool allDone = std::all_of(m_lastOutcomes.cbegin(), m_lastOutcomes.cend(),
        [](const RemovalActions::Outcome& outcome) { return outcome.done; });
    if (allDone)
        m_closeWhenUpdated = true;
    else
        showOutcome();
    updateStatus();
}

void DeletingPanel::updateGroups() {
    m_updating = true;
    m_decision.reset();
    // The groups are read, never changed, on the other thread: the window goes on drawing them
    // until the update replaces them.
    m_planPool.start([this, groups = m_state.duplicateMainArray, outcomes = m_lastOutcomes] {
        auto update = std::make_shared<RemovalReview::Update>(
            RemovalReview::updateAfter(groups, RemovalReview::removedBy(outcomes, groups)));
        // Handed over on the sheet's thread; the sheet waits for this pool before it goes.
        QMetaObject::invokeMethod(
            this, [this, update] { groupsUpdated(std::move(*update)); }, Qt::QueuedConnection);
    });
}

void DeletingPanel::groupsUpdated(RemovalReview::Update update) {
    m_updating = false;
    m_decision = m_review.takeUpdate(std::move(update));
    if (m_closeWhenUpdated) {
        m_closeWhenUpdated = false;
        finish(*m_decision);
        return;
    }
    m_done->setEnabled(true);
    updateStatus();
}

void DeletingPanel::showOutcome() {
    m_showingOutcome = true;
    const qsizetype done = std::count_if(m_lastOutcomes.cbegin(), m_lastOutcomes.cend(),
        [](const RemovalActions::Outcome& outcome) { return outcome.done; });
    m_model->showOutcomes(m_lastOutcomes, RemovalTexts::doneText(m_action));
    m_tableDeletefileList->scrollToTop();
    m_heading->setText(RemovalTexts::outcomeHeading(done, m_lastOutcomes.size()));
    m_back->hide();
    m_tDelete->hide();
    m_tDelete->setDefault(false);
    m_done->show();
    m_done->setDefault(true);
    m_done->setFocus(Qt::OtherFocusReason);
}

void DeletingPanel::closeOutcome() {
    if (m_decision) {
        finish(*m_decision);
        return;
    }
    // The groups are not in place yet: the sheet closes as soon as they are.
    m_closeWhenUpdated = true;
    m_done->setEnabled(false);
    updateStatus();
}

void DeletingPanel::leaveOutcome() {
    m_showingOutcome = false;
    m_decision.reset();
    m_done->hide();
    m_done->setDefault(false);
    m_done->setEnabled(true);
    m_back->show();
    m_tDelete->show();
    m_tDelete->setDefault(true);
    m_heading->setText(QStringLiteral("Files chosen for removal"));
}

void DeletingPanel::updateStatus() {
    if (m_worker) {
        const qsizetype done = m_worker->done();
        const qsizetype total = m_worker->total();
        m_status->setText(m_worker->isCancelled() ? QStringLiteral("Stopping after the item in hand…")
                                                  : QStringLiteral("%1 of %2")
                                                        .arg(StatusTexts::decimalNumber(static_cast<qint64>(done)),
                                                            StatusTexts::decimalNumber(static_cast<qint64>(total))));
        m_progress->setValue(total ? double(done) / double(total) : 0.0);
        const QFontMetrics metrics(m_current->font());
        m_current->setText(metrics.elidedText(
            PathBytes::display(m_worker->currentPath()), Qt::ElideMiddle, std::max(100, m_current->width())));
        return;
    }
    if (m_showingOutcome) {
        qsizetype done = 0;
        qsizetype left = 0;
        for (const RemovalActions::Outcome& outcome : std::as_const(m_lastOutcomes)) {
            done += outcome.done;
            left += outcome.left;
        }
        QString text = RemovalTexts::outcomeSummary(m_action, done, left, m_lastOutcomes.size() - done - left);
        if (m_updating)
            text += QStringLiteral("; bringing the list up to date…");
        m_status->setText(text);
        return;
    }
    if (m_updating) {
        m_status->setText(QStringLiteral("Bringing the list up to date…"));
        m_tDelete->setEnabled(false);
        return;
    }
    const qsizetype rows = m_review.numberOfRows();
    QString text = rows == 1 ? QStringLiteral("1 file")
                             : QStringLiteral("%1 files").arg(StatusTexts::decimalNumber(static_cast<qint64>(rows)));
    if (m_checking) {
        m_status->setText(text + QStringLiteral(", checking which must stay…"));
        m_tDelete->setEnabled(false);
        return;
    }
    // Files the removal will not touch, so that every content keeps a copy, are said before asking.
    if (const qsizetype left = m_review.leftCount())
        text += QStringLiteral(", %1 left alone to keep a copy of every content")
                    .arg(StatusTexts::decimalNumber(static_cast<qint64>(left)));
    m_status->setText(text);
    m_tDelete->setEnabled(rows > 0);
}
