#include "review/ListSelection.h"

#include "engine/ScanState.h"

#include <QSet>
#include <algorithm>

namespace {

// Paths are unique within a result, so a file is known by its path; the rules over every group use
// these sets so that they stay linear in the number of files.
QSet<QByteArray> urlsOf(const QList<FileDictionary>& files) {
    QSet<QByteArray> urls;
    urls.reserve(files.size());
    for (const FileDictionary& file : files)
        urls.insert(file.url);
    return urls;
}

} // namespace

ListSelection::ListSelection(ScanState& state)
    : m_state(state) { }

qsizetype ListSelection::selectedCountIn(const GroupDictionary& group) const {
    return std::count_if(group.SameFileList.begin(), group.SameFileList.end(),
        [this](const FileDictionary& file) { return contains(file); });
}

qint64 ListSelection::selectedBytes() const {
    qint64 sum = 0;
    for (const FileDictionary& file : SelectedFileFolderArray)
        sum += file.FileSize;
    return sum;
}

void ListSelection::chooseAll(const GroupDictionary& group) {
    for (const FileDictionary& file : group.SameFileList) {
        if (!contains(file))
            SelectedFileFolderArray.append(file);
    }
}

void ListSelection::dropAll(const GroupDictionary& group) {
    for (const FileDictionary& file : group.SameFileList)
        SelectedFileFolderArray.removeAll(file);
}

GroupDictionary* ListSelection::currentGroup() {
    if (ReloadRow < 0 || ReloadRow >= m_state.DuplicateFileFolderArray.size())
        return nullptr;
    return &m_state.DuplicateFileFolderArray[ReloadRow];
}

void ListSelection::chooseAllKeeping(bool keepNewest, bool keepOldest) {
    QSet<QByteArray> chosen = urlsOf(SelectedFileFolderArray);
    QSet<QByteArray> kept;
    for (const GroupDictionary& group : m_state.DuplicateFileFolderArray) {
        for (const FileDictionary& file : group.SameFileList) {
            if (!chosen.contains(file.url)) {
                chosen.insert(file.url);
                SelectedFileFolderArray.append(file);
            }
        }
        if (keepNewest && !group.SameFileList.isEmpty())
            kept.insert(group.SameFileList.last().url);
        if (keepOldest && !group.SameFileList.isEmpty())
            kept.insert(group.SameFileList.first().url);
    }
    if (!kept.isEmpty())
        SelectedFileFolderArray.removeIf([&kept](const FileDictionary& file) { return kept.contains(file.url); });
}

void ListSelection::keepNewestAction() {
    chooseAllKeeping(true, false);
}

void ListSelection::keepOldestAction() {
    chooseAllKeeping(false, true);
}

bool ListSelection::keepNoneAction() {
    if (alertSelectAll && !alertSelectAll())
        return false;
    chooseAllKeeping(false, false);
    return true;
}

bool ListSelection::SegmentKeepAction(int segment) {
    const GroupDictionary* group = currentGroup();
    if (!group)
        return false;
    switch (segment) {
    case 0:
        dropAll(*group);
        break;
    case 1:
        if (selectedCountIn(*group) == group->SameFileList.size())
            return false;
        if (!alertSelectAll || alertSelectAll())
            chooseAll(*group);
        break;
    case 2:
    case 3:
        chooseAll(*group);
        if (!group->SameFileList.isEmpty())
            SelectedFileFolderArray.removeAll(segment == 2 ? group->SameFileList.last() : group->SameFileList.first());
        break;
    default:
        break;
    }
    return true;
}

bool ListSelection::addInSelectedDuplicateList(qsizetype index) {
    const GroupDictionary* group = currentGroup();
    if (!group || index < 0 || index >= group->SameFileList.size())
        return false;
    const FileDictionary& file = group->SameFileList.at(index);
    if (contains(file)) {
        SelectedFileFolderArray.removeAll(file);
        return false;
    }
    const bool lastUnchosen = selectedCountIn(*group) == group->SameFileList.size() - 1;
    if (lastUnchosen && alertSelectAll && !alertSelectAll())
        return false;
    SelectedFileFolderArray.append(file);
    return true;
}

void ListSelection::DeselectAllFromDuplicateList() {
    QSet<QByteArray> listed;
    for (const GroupDictionary& group : m_state.DuplicateFileFolderArray) {
        for (const FileDictionary& file : group.SameFileList)
            listed.insert(file.url);
    }
    SelectedFileFolderArray.removeIf([&listed](const FileDictionary& file) { return listed.contains(file.url); });
}

void ListSelection::SetAsOriginal(qsizetype row) {
    GroupDictionary* group = currentGroup();
    if (!group || row < 0 || row >= group->SameFileList.size())
        return;
    const FileDictionary former = group->original;
    const FileDictionary chosen = group->SameFileList.at(row);
    group->original = chosen;
    const qsizetype at = SelectedFileFolderArray.indexOf(chosen);
    if (at < 0)
        return;
    SelectedFileFolderArray.removeAll(chosen);
    if (!contains(former))
        SelectedFileFolderArray.insert(std::min(at, SelectedFileFolderArray.size()), former);
}
