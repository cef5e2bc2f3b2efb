#include "review/Selection.h"

#include "base/PathBytes.h"
#include "base/SettingsStore.h"
#include "review/Prompter.h"

#include <algorithm>

bool Selection::contains(const DuplicateFilePtr& file) const {
    return duplicateSelectedArray.contains(file);
}

qsizetype Selection::countSelected(const duplicates& group) const {
    // The choice is read once, in order, against the group's few records: no set of the whole
    // choice is made for one group.
    std::vector<const duplicateFile*> members;
    for (const DuplicateFilePtr& file : group.listAll())
        members.push_back(file.get());
    std::sort(members.begin(), members.end());
    members.erase(std::unique(members.begin(), members.end()), members.end());
    std::vector<bool> chosen(members.size());
    for (const DuplicateFilePtr& file : duplicateSelectedArray) {
        const auto found = std::lower_bound(members.begin(), members.end(), file.get());
        if (found != members.end() && *found == file.get())
            chosen[static_cast<size_t>(found - members.begin())] = true;
    }
    return std::count(chosen.begin(), chosen.end(), true);
}

void Selection::setProtectedFolders(const QList<QByteArray>& folders) {
    m_protectedFolders.clear();
    for (QByteArray folder : folders) {
        while (folder.size() > 1 && folder.endsWith('/'))
            folder.chop(1);
        m_protectedFolders.insert(folder);
    }
}

QByteArray Selection::protectingFolder(const QByteArray& path) const {
    return PathBytes::enclosingFolderIn(path, m_protectedFolders);
}

QList<DuplicateFilePtr> Selection::unprotected(const QList<DuplicateFilePtr>& files) const {
    if (m_protectedFolders.isEmpty())
        return files;
    QList<DuplicateFilePtr> out;
    for (const DuplicateFilePtr& file : files) {
        if (!isProtected(file))
            out.append(file);
    }
    return out;
}

QList<DuplicateFilePtr> Selection::keepRuleChoice(const duplicates& group, bool keepNewest) const {
    const QList<DuplicateFilePtr>& files = group.listAll();
    if (files.isEmpty())
        return {};
    const QList<DuplicateFilePtr> open = unprotected(files);
    if (open.size() != files.size())
        return open;
    return keepNewest ? files.first(files.size() - 1) : files.sliced(1);
}

void Selection::AutoSelectAction(const std::optional<QString>& chosenTitle, const DisplayList& duplicateDisplayArray) {
    duplicateSelectedArray.clear();
    if (chosenTitle)
        duplicateSelectedArray = autoSelection(*chosenTitle, duplicateDisplayArray);
}

QList<DuplicateFilePtr> Selection::autoSelection(
    const QString& chosenTitle, const DisplayList& duplicateDisplayArray) const {
    const bool keepNewest = chosenTitle == keepNewestTitle();
    QList<DuplicateFilePtr> chosen;
    chosen.reserve(duplicateDisplayArray.size());
    for (const DuplicateGroupPtr& group : duplicateDisplayArray) {
        const QList<DuplicateFilePtr>& files = group->listAll();
        if (!m_protectedFolders.isEmpty()) {
            chosen.append(keepRuleChoice(*group, keepNewest));
            continue;
        }
        // Without protected folders the rule keeps one end of the group: its files are taken as
        // they are, without a list made for each group.
        const auto from = files.begin() + (keepNewest || files.isEmpty() ? 0 : 1);
        const auto to = files.end() - (keepNewest && !files.isEmpty() ? 1 : 0);
        for (auto file = from; file < to; ++file)
            chosen.append(*file);
    }
    return chosen;
}

void Selection::keepSegmentAction(const duplicates& group, int segment) {
    removeFilesOf(group);
    if (segment == 0)
        return;
    duplicateSelectedArray.append(keepRuleChoice(group, segment == 1));
}

Selection::CheckState Selection::checkBoxActionMain(const duplicates& group, CheckState boxState) {
    // With protected copies the box never shows On: a click on it once every other copy is chosen
    // takes them all out again.
    const QList<DuplicateFilePtr> open = unprotected(group.listAll());
    if (boxState != CheckState::Off && open.size() != group.listAll().size()
        && countSelected(group) == static_cast<qsizetype>(open.size()))
        boxState = CheckState::Off;
    removeFilesOf(group);
    if (boxState == CheckState::Mixed) {
        // Rebuilt as a set: the group's files and the rest, each record once.
        QList<DuplicateFilePtr> united;
        std::unordered_set<const duplicateFile*> seen;
        for (const DuplicateFilePtr& file : duplicateSelectedArray + open) {
            if (seen.insert(file.get()).second)
                united.append(file);
        }
        duplicateSelectedArray = united;
        return setStateOfCheckBox(group);
    }
    if (boxState == CheckState::On) {
        duplicateSelectedArray.append(open);
        // A group whose copies are all protected offers nothing to choose.
        return setStateOfCheckBox(group);
    }
    return boxState;
}

void Selection::checkBoxActionFromTableRow(const duplicates& group, qsizetype index) {
    if (index < 0 || index >= group.listAll().size())
        return;
    const DuplicateFilePtr& file = group.listAll().at(index);
    if (duplicateSelectedArray.removeAll(file) == 0 && !isProtected(file))
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
