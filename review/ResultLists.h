#pragma once

#include "detect/duplicates.h"

#include <QList>
#include <QString>

struct ScanState;
class Selection;

// The groups the result screen shows: `duplicateDisplayArray`, always a filtered and sorted copy of
// the scan's `duplicateMainArray`, rebuilt whenever the sort key, the direction, the type filter or
// the search text changes. The main array itself is never reordered or filtered here.
class ResultLists {
public:
    // Sort keys and directions: the tags of the sort menu's items.
    enum SortTag : quint64 {
        OriginalFilename = 0,
        WastedSize = 1,
        DuplicateCount = 2,
        DuplicateType = 3,
        DuplicateSelected = 4,
        Ascending = 5,
        Descending = 6,
    };
    static constexpr quint64 AllTypes = 10;

    ResultLists(ScanState& state, const Selection& selection);

    QList<DuplicateGroupPtr> duplicateDisplayArray;
    quint64 typesort = OriginalFilename;
    quint64 typesortorder = Ascending;
    quint64 typefilter = AllTypes;
    // The search field's text, taken as it stands.
    QString searchText;
    // The result screen's current group row; every rebuild sets it back to 0.
    qsizetype selectedMain = 0;

    // Name, ascending, all types: the state of a fresh result (at launch and before each scan).
    void resetSortAndFilter();

    // The sort menu's action with the item's tag. Logs "no need to sort" and answers false when the
    // tag is the active key or direction; otherwise takes it as the new direction (5, 6) or key (any
    // other tag), logs "sorting" and answers true: the screen then rebuilds the list 0.1 s later
    // with getDiplayListAndReloadMainList. Either way the sort menu shows the new state at once.
    bool sortDuplicatesFor(quint64 tag);
    // The title at index `typesort` is the pop-up's title; an item is checked when its tag is the
    // active key or direction.
    bool isSortItemChecked(quint64 tag) const { return tag == typesort || tag == typesortorder; }

    // A type-filter button's action with its tag. Pressing the active filter changes nothing and
    // answers false (the button goes back on); otherwise the filter becomes the tag, the list is
    // rebuilt at once and the answer is true (the buttons then act as a radio group).
    bool filterUsingTypeAction(quint64 tag);

    // Rebuilds `duplicateDisplayArray` from all groups, filtered then sorted, and sets the current
    // row to 0; the screen reloads the group table and scrolls to row 0.
    void getDiplayListAndReloadMainList();

    // Keeps the groups of the active type (all for 10), then, with a search text, the groups having
    // a file whose displayed path contains it ignoring case. Works in place; returns the same list.
    QList<DuplicateGroupPtr>& filteredDuplicateArray(QList<DuplicateGroupPtr>& groups) const;
    // Sorts in place by `typesort` and `typesortorder` with a stable sort; logs "error" and leaves
    // the order for an unknown key. Returns the same list.
    QList<DuplicateGroupPtr>& sortedDuplicateArray(QList<DuplicateGroupPtr>& groups) const;

    // The order that keys 1, 2 and 4 use, kept as the program has always had it: it only ever
    // answers "same" (false) or "the left group goes after the right one" (true), the latter when
    // descending differs from (right < left). Descending thus puts the left after the right for
    // equal keys too, which reverses ties.
    static bool leftGoesAfterRight(quint64 left, quint64 right, bool descending) {
        return descending != (right < left);
    }

private:
    ScanState& m_state;
    const Selection& m_selection;
};
