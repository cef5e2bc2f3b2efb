#include "review/Selection.h"

#include "base/SettingsStore.h"
#include "review/Prompter.h"

bool Selection::contains(const DuplicateFilePtr& file) const {
    return duplicateSelectedArray.contains(file);
}

qsizetype Selection::countSelected(const duplicates& group) const {
    return countIn(group, chosenSet());
}

std::unordered_set<const duplicateFile*> Selection::chosenSet() const {
    std::unordered_set<const duplicateFile*> chosen;
    chosen.reserve(static_cast<size_t>(duplicateSelectedArray.size()));
    for (const DuplicateFilePtr& file : duplicateSelectedArray)
        chosen.insert(file.get());
    return chosen;
}

qsizetype Selection::countIn(const duplicates& group, const std::unordered_set<const duplicateFile*>& chosen) {
    std::unordered_set<const duplicateFile*> counted;
    for (const DuplicateFilePtr& file : group.listAll()) {
        if (chosen.count(file.get()))
            counted.insert(file.get());
    }
    return static_cast<qsizetype>(counted.size());
}

void Selection::AutoSelectAction(
    const std::optional<QString>& chosenTitle, const QList<DuplicateGroupPtr>& duplicateDisplayArray) {
    duplicateSelectedArray.clear();
    if (!chosenTitle)
        return;
    const bool keepNewest = *chosenTitle == keepNewestTitle();
    for (const DuplicateGroupPtr& group : duplicateDisplayArray) {
        const QList<DuplicateFilePtr>& files = group->listAll();
        if (files.isEmpty())
            continue;
        duplicateSelectedArray.append(keepNewest ? files.first(files.size() - 1) : files.sliced(1));
    }
}

void Selection::keepSegmentAction(const duplicates& group, int segment) {
    removeFilesOf(group);
    const QList<DuplicateFilePtr>& files = group.listAll();
    if (segment == 0 || files.isEmpty())
        return;
    duplicateSelectedArray.append(segment == 1 ? files.first(files.size() - 1) : files.sliced(1));
}

Selection::CheckState Selection::checkBoxActionMain(const duplicates& group, CheckState boxState) {
    removeFilesOf(group);
    if (boxState == CheckState::Mixed) {
        // Rebuilt as a set: the group's files and the rest, each record once.
        QList<DuplicateFilePtr> united;
        std::unordered_set<const duplicateFile*> seen;
        for (const DuplicateFilePtr& file : duplicateSelectedArray + group.listAll()) {
            if (seen.insert(file.get()).second)
                united.append(file);
        }
        duplicateSelectedArray = united;
        return CheckState::On;
    }
    if (boxState == CheckState::On)
        duplicateSelectedArray.append(group.listAll());
    return boxState;
}

void Selection::checkBoxActionFromTableRow(const duplicates& group, qsizetype index) {
    if (index < 0 || index >= group.listAll().size())
        return;
    const DuplicateFilePtr& file = group.listAll().at(index);
    if (duplicateSelectedArray.removeAll(file) == 0)
        duplicateSelectedArray.append(file);
}

Selection::CheckState Selection::setStateOfCheckBox(qsizetype countSelected, qsizetype fileCount) {
    if (countSelected == fileCount)
        return CheckState::On;
    return countSelected != 0 ? CheckState::Mixed : CheckState::Off;
}

Selection::CheckState Selection::setStateOfCheckBox(const duplicates& group) const {
    return setStateOfCheckBox(countSelected(group), group.listAll().size());
}

void Selection::removeFilesOf(const duplicates& group) {
    std::unordered_set<const duplicateFile*> members;
    for (const DuplicateFilePtr& file : group.listAll())
        members.insert(file.get());
    duplicateSelectedArray.removeIf([&](const DuplicateFilePtr& file) { return members.count(file.get()) > 0; });
}

bool alertSelectAll(Prompter& prompter, SettingsStore& store) {
    if (store.contains(QStringLiteral("showAgain")))
        return true;
    Prompter::Alert alert;
    alert.messageText = QStringLiteral("Are you sure, you want to select all duplicate items?");
    alert.informativeText
        = QStringLiteral("This will include all duplicates files including original files in deletable list.");
    alert.buttons = { QStringLiteral("OK"), QStringLiteral("Cancel") };
    alert.showsSuppressionButton = true;
    const Prompter::AlertAnswer answer = prompter.runAlert(alert);
    if (answer.response != Prompter::FirstButton)
        return false;
    if (answer.suppressed) {
        store.setValue(QStringLiteral("showAgain"), QStringLiteral("yes"));
        store.synchronize();
    }
    return true;
}
