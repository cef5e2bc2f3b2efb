#pragma once

#include "detect/GroupDictionary.h"

#include <QList>
#include <functional>

struct ScanState;

// The older list model's selection: `SelectedFileFolderArray`, file dictionaries chosen from the
// groups of `DuplicateFileFolderArray` (the list scan and the photo-library scan). Dictionaries
// compare by value. Here, unlike the result screen, choosing the last unchosen copy of a group is
// confirmed first through `alertSelectAll`.
class ListSelection {
public:
    explicit ListSelection(ScanState& state);

    QList<FileDictionary> SelectedFileFolderArray;
    // The list's current group row.
    qsizetype ReloadRow = 0;
    // The select-all question (see alertSelectAll); answers yes when unset.
    std::function<bool()> alertSelectAll;

    bool contains(const FileDictionary& file) const { return SelectedFileFolderArray.contains(file); }
    qsizetype selectedCountIn(const GroupDictionary& group) const;
    // The sum of "FileSize" over the chosen files.
    qint64 selectedBytes() const;
    // The Remove toolbar item is enabled exactly when something is chosen.
    bool removeEnabled() const { return !SelectedFileFolderArray.isEmpty(); }

    // In every group choose all files but the newest (last) / the oldest (first).
    void keepNewestAction();
    void keepOldestAction();
    // Every file of every group, after the select-all question says yes; answers that answer.
    bool keepNoneAction();
    // The keep segments of the current group: 0 none chosen, 1 all (asked first; nothing happens
    // when all are chosen already), 2 keep the newest, 3 keep the oldest, others change nothing.
    // Answers whether the rows and the status line must be refreshed (all but the early return).
    bool SegmentKeepAction(int segment);
    // The file check box at `index` of the current group. A chosen file is dropped; an unchosen one
    // is added, unless it is the group's last unchosen file and the question is answered no.
    // Answers the check box's state afterwards (true: on).
    bool addInSelectedDuplicateList(qsizetype index);
    // Drops every file of every group from the selection.
    void DeselectAllFromDuplicateList();
    // Makes the file at `row` of the current group its original (the list keeps its order). When
    // the new original was chosen, it leaves the selection and the former original takes its place.
    void SetAsOriginal(qsizetype row);

private:
    GroupDictionary* currentGroup();
    // Chooses every file of every group, then drops the newest and/or the oldest of each.
    void chooseAllKeeping(bool keepNewest, bool keepOldest);
    void chooseAll(const GroupDictionary& group);
    void dropAll(const GroupDictionary& group);

    ScanState& m_state;
};
