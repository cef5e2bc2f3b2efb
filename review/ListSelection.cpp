#include "review/ListSelection.h"

#include "engine/ScanState.h"

#include <algorithm>

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

void ListSelection::keepNewestAction() {
    for (const GroupDictionary& group : m_state.DuplicateFileFolderArray) {
        chooseAll(group);
        if (!group.SameFileList.isEmpty())
            SelectedFileFolderArray.removeAll(group.SameFileList.last());
    }
}

void ListSelection::keepOldestAction() {
    for (const GroupDictionary& group : m_state.DuplicateFileFolderArray) {
        chooseAll(group);
        if (!group.SameFileList.isEmpty())
            SelectedFileFolderArray.removeAll(group.SameFileList.first());
    }
}

bool ListSelection::keepNoneAction() {
    if (alertSelectAll && !alertSelectAll())
        return false;
    for (const GroupDictionary& group : m_state.DuplicateFileFolderArray)
        chooseAll(group);
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
    for (const GroupDictionary& group : m_state.DuplicateFileFolderArray)
        dropAll(group);
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
