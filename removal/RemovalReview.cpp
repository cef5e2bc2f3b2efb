#include "removal/RemovalReview.h"

#include "engine/ScanState.h"
#include "removal/RemovalTexts.h"
#include "review/ResultLists.h"
#include "review/Selection.h"

namespace {

// Counters never wrap below zero, whatever stale entries the selection held.
void subtract(std::atomic<quint64>& counter, quint64 amount) {
    const quint64 value = counter.load();
    counter = value > amount ? value - amount : 0;
}

} // namespace

RemovalReview::RemovalReview(
    ScanState& state, Selection& selection, ResultLists& lists, const QList<FileDictionary>& SelectedFileFolderArray)
    : m_state(state)
    , m_selection(selection)
    , m_lists(lists)
    , m_SelectedFileFolderArray(SelectedFileFolderArray) { }

qsizetype RemovalReview::numberOfRows() const {
    return m_selection.duplicateSelectedArray.size();
}

DuplicateFilePtr RemovalReview::fileAtRow(qsizetype row) const {
    if (row < 0 || row >= numberOfRows())
        return nullptr;
    return m_selection.duplicateSelectedArray.at(row);
}

std::optional<RemovalReview::CloseDecision> RemovalReview::removefromlist(qsizetype row) {
    if (row < 0 || row >= numberOfRows())
        return std::nullopt;
    m_selection.duplicateSelectedArray.removeAt(row);
    if (m_selection.duplicateSelectedArray.isEmpty())
        return closewindow();
    return std::nullopt;
}

std::optional<RemovalReview::CloseDecision> RemovalReview::removeSelectedFiles(Prompter& prompter) {
    Prompter::Alert alert;
    alert.popUpItems = RemovalActions::actionTitles();
    alert.popUpIndex = 0;
    alert.popUpChanged = [this](Prompter::Alert& changed) { chageAlertText(changed); };
    // The first texts count the older list's selection; the pop-up's rewrites count the listed files.
    const RemovalTexts::Confirmation first
        = RemovalTexts::confirmation(RemovalActions::Action::MoveToTrash, m_SelectedFileFolderArray.size());
    alert.messageText = first.messageText;
    alert.informativeText = first.informativeText;
    alert.buttons = { QStringLiteral("Yes"), QStringLiteral("No") };

    const Prompter::AlertAnswer answer = prompter.runAlert(alert);
    if (answer.response != Prompter::FirstButton)
        return std::nullopt;
    const QString chosen = alert.popUpItems.value(answer.popUpIndex);
    runAction(RemovalActions::actionForTitle(chosen));
    return refreshAndReload();
}

void RemovalReview::chageAlertText(Prompter::Alert& alert) const {
    const QString chosen = alert.popUpItems.value(alert.popUpIndex);
    const RemovalTexts::Confirmation texts
        = RemovalTexts::confirmation(RemovalActions::actionForTitle(chosen), numberOfRows());
    alert.messageText = texts.messageText;
    alert.informativeText = texts.informativeText;
}

QList<RemovalActions::Outcome> RemovalReview::runAction(RemovalActions::Action action) {
    lastOutcomes = RemovalActions::run(action, m_selection.duplicateSelectedArray, m_state.duplicateMainArray);
    return lastOutcomes;
}

RemovalReview::CloseDecision RemovalReview::refreshAndReload() {
    const QList<DuplicateFilePtr> listed = m_selection.duplicateSelectedArray;
    for (const DuplicateFilePtr& file : listed) {
        const DuplicateGroupPtr group = RemovalActions::groupOf(m_state.duplicateMainArray, file);
        if (!group)
            continue;
        m_state.duplicateMainArray.removeOne(group);
        const quint64 size = static_cast<quint64>(group->sizeFile());
        if (group->listAll().size() <= 2) {
            subtract(m_state.wastedSpaceDuplicates, size * static_cast<quint64>(group->listAll().size()));
            continue;
        }
        QList<DuplicateFilePtr> rest = group->listAll();
        rest.removeAll(file);
        group->setListAll(rest);
        if (group->original() == file->urlFile())
            group->setOriginal(rest.first()->urlFile());
        m_state.duplicateMainArray.append(group);
        subtract(m_state.wastedSpaceDuplicates, size);
    }
    subtract(m_state.totalDuplicateCount, static_cast<quint64>(listed.size()));
    m_selection.duplicateSelectedArray.clear();
    return closewindow();
}

RemovalReview::CloseDecision RemovalReview::closewindow() {
    CloseDecision decision;
    if (m_state.duplicateMainArray.isEmpty()) {
        decision.allRemoved = true;
        decision.typewindow = 0;
        decision.typetoolbar = 0;
        return decision;
    }
    m_lists.getDiplayListAndReloadMainList();
    decision.typetoolbar = m_selection.toolbarState();
    return decision;
}
