#include "removal/RemovalReview.h"

#include "engine/ScanState.h"
#include "removal/RemovalPlan.h"
#include "removal/RemovalTexts.h"
#include "review/LetGo.h"
#include "review/ResultLists.h"
#include "review/Selection.h"

#include <QSet>
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

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

void RemovalReview::updatePlan() {
    takePlan(RemovalPlan(
        m_selection.duplicateSelectedArray, m_state.duplicateMainArray, m_state.settings.protectedFolderList));
}

void RemovalReview::takePlan(const RemovalPlan& plan) {
    m_leftReasons = leftReasonsOf(plan);
}

RemovalReview::LeftReasons RemovalReview::leftReasonsOf(const RemovalPlan& plan) {
    LeftReasons reasons;
    for (const RemovalPlan::Item& item : plan.items()) {
        if (item.isLeft())
            reasons.emplace(item.file.get(), item.leftReason);
    }
    return reasons;
}

QString RemovalReview::leftReasonAtRow(qsizetype row) const {
    const DuplicateFilePtr file = fileAtRow(row);
    const auto found = file ? m_leftReasons.find(file.get()) : m_leftReasons.end();
    return found == m_leftReasons.end() ? QString() : found->second;
}

std::optional<RemovalReview::CloseDecision> RemovalReview::removefromlist(qsizetype row, bool replan) {
    if (row < 0 || row >= numberOfRows())
        return std::nullopt;
    m_selection.duplicateSelectedArray.removeAt(row);
    if (replan)
        updatePlan();
    if (m_selection.duplicateSelectedArray.isEmpty())
        return closewindow(false);
    return std::nullopt;
}

std::optional<RemovalReview::CloseDecision> RemovalReview::removeSelectedFiles(Prompter& prompter) {
    const std::optional<RemovalActions::Action> action = askConfirmation(prompter);
    if (!action)
        return std::nullopt;
    runAction(*action);
    return refreshAndReload();
}

std::optional<RemovalActions::Action> RemovalReview::askConfirmation(Prompter& prompter) {
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
    return RemovalActions::actionForTitle(alert.popUpItems.value(answer.popUpIndex));
}

void RemovalReview::chageAlertText(Prompter::Alert& alert) const {
    const QString chosen = alert.popUpItems.value(alert.popUpIndex);
    const RemovalTexts::Confirmation texts
        = RemovalTexts::confirmation(RemovalActions::actionForTitle(chosen), numberOfRows());
    alert.messageText = texts.messageText;
    alert.informativeText = texts.informativeText;
}

QList<RemovalActions::Outcome> RemovalReview::runAction(RemovalActions::Action action) {
    lastOutcomes = RemovalActions::run(action, m_selection.duplicateSelectedArray, m_state.duplicateMainArray,
        m_state.scanRoots, m_state.settings.protectedFolderList);
    return lastOutcomes;
}

RemovalReview::CloseDecision RemovalReview::refreshAndReload() {
    // Only what the last action really removed leaves its group; with no action run, every listed
    // file does.
    const QList<DuplicateFilePtr> removed = lastOutcomes.isEmpty()
        ? m_selection.duplicateSelectedArray
        : removedBy(lastOutcomes, m_state.duplicateMainArray);
    lastOutcomes.clear();
    return takeUpdate(updateAfter(m_state.duplicateMainArray, removed));
}

QList<DuplicateFilePtr> RemovalReview::removedBy(
    const QList<RemovalActions::Outcome>& outcomes, const QList<DuplicateGroupPtr>& groups) {
    QList<DuplicateFilePtr> removed;
    QSet<QByteArray> goneFolders;
    for (const RemovalActions::Outcome& outcome : outcomes) {
        if (!outcome.done)
            continue;
        removed.append(outcome.file);
        if (outcome.file->identity().folder)
            goneFolders.insert(outcome.file->urlFile());
    }
    // Copies of other groups that lay inside a folder that went are gone with it.
    if (goneFolders.isEmpty())
        return removed;
    for (const DuplicateGroupPtr& group : groups) {
        for (const DuplicateFilePtr& member : group->listAll()) {
            const QByteArray& path = member->urlFile();
            for (qsizetype slash = path.lastIndexOf('/'); slash > 0; slash = path.lastIndexOf('/', slash - 1)) {
                if (goneFolders.contains(path.left(slash))) {
                    removed.append(member);
                    break;
                }
            }
        }
    }
    return removed;
}

RemovalReview::Update RemovalReview::updateAfter(
    const QList<DuplicateGroupPtr>& groups, const QList<DuplicateFilePtr>& removed) {
    // Each removed record's group, found once. Instead of taking a changed group out of the list and
    // appending it again for every file (slow for large lists), the list is rebuilt at the end:
    // unchanged groups in their order, then the changed ones in the order of their last change;
    // ended groups are left out. That is the order the remove-and-append steps produce.
    std::unordered_set<const duplicateFile*> removedRecords;
    for (const DuplicateFilePtr& file : removed)
        removedRecords.insert(file.get());
    std::unordered_map<const duplicateFile*, const duplicates*> groupOf;
    for (const DuplicateGroupPtr& group : groups) {
        for (const DuplicateFilePtr& member : group->listAll()) {
            if (removedRecords.count(member.get()))
                groupOf.emplace(member.get(), group.get());
        }
    }
    // A group that loses files is a new record: the old one stays as it was for whatever still
    // shows it.
    std::unordered_map<const duplicates*, DuplicateGroupPtr> changed;
    std::unordered_set<const duplicates*> ended;
    std::unordered_map<const duplicates*, qsizetype> lastChange;
    qsizetype changes = 0;
    for (const DuplicateFilePtr& file : removed) {
        const auto found = groupOf.find(file.get());
        if (found == groupOf.end() || ended.count(found->second))
            continue;
        const duplicates* old = found->second;
        auto now = changed.find(old);
        const duplicates& current = now == changed.end() ? *old : *now->second;
        // A record listed twice is found no more.
        if (!current.listAll().contains(file))
            continue;
        if (current.listAll().size() <= 2) {
            ended.insert(old);
            continue;
        }
        if (now == changed.end())
            now = changed.emplace(old, std::make_shared<duplicates>(*old)).first;
        duplicates& group = *now->second;
        QList<DuplicateFilePtr> rest = group.listAll();
        rest.removeAll(file);
        group.setListAll(rest);
        if (group.original() == file->urlFile())
            group.setOriginal(rest.first()->urlFile());
        lastChange[old] = changes++;
    }

    Update update;
    QList<std::pair<qsizetype, DuplicateGroupPtr>> moved;
    update.groups.reserve(groups.size());
    for (const DuplicateGroupPtr& group : groups) {
        if (ended.count(group.get()))
            continue;
        const auto change = lastChange.find(group.get());
        if (change == lastChange.end())
            update.groups.append(group);
        else
            moved.append({ change->second, changed.at(group.get()) });
    }
    std::sort(moved.begin(), moved.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& entry : std::as_const(moved))
        update.groups.append(entry.second);
    // The totals are those of the groups really left, counted as the scan counts them.
    for (const DuplicateGroupPtr& group : std::as_const(update.groups)) {
        update.members += static_cast<quint64>(group->listAll().size());
        update.wasted += static_cast<quint64>(group->sizeFile()) * static_cast<quint64>(group->listAll().size());
    }
    return update;
}

RemovalReview::CloseDecision RemovalReview::takeUpdate(Update update) {
    // Nothing may read the groups on another thread while they change.
    m_lists.resultWillChange();
    m_state.duplicateMainArray = std::move(update.groups);
    m_state.totalDuplicateCount = update.members;
    m_state.wastedSpaceDuplicates = update.wasted;
    QList<DuplicateFilePtr> chosen = std::exchange(m_selection.duplicateSelectedArray, {});
    if (chosen.size() >= ResultLists::kBackgroundFrom)
        letGoElsewhere(std::move(chosen));
    m_leftReasons.clear();
    return closewindow();
}

RemovalReview::CloseDecision RemovalReview::closewindow(bool listChanged) {
    CloseDecision decision;
    decision.listChanged = listChanged;
    if (m_state.duplicateMainArray.isEmpty()) {
        decision.allRemoved = true;
        decision.typewindow = 0;
        decision.typetoolbar = 0;
        return decision;
    }
    if (listChanged)
        m_lists.rebuildDisplayList();
    decision.typetoolbar = m_selection.toolbarState();
    return decision;
}
