#pragma once

#include "detect/duplicates.h"
#include "review/DisplayList.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QThreadPool>
#include <functional>
#include <memory>

struct ScanState;
class Selection;

// The groups the result screen shows: `duplicateDisplayArray`, always a filtered and sorted view of
// the scan's `duplicateMainArray`, rebuilt whenever the sort key, the direction, the type filter or
// the search text changes. The main array itself is never reordered or filtered here.
//
// What a rebuild needs is worked out once per result and kept: each group's category and the order
// of the names (a ResultIndex), the folded paths for the search (a SearchIndex), the order of each
// sort key and direction once asked for, and the groups matching the last search text. A rebuild
// then only picks the matching groups out of a kept order. Where something is still missing and the
// result is large, the rebuild runs on a thread of its own and the new list replaces the shown one
// at once when it is ready; a newer rebuild makes an older one stop, and its list is never shown.
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
    // Results with fewer groups are rebuilt at once on the calling thread.
    static constexpr qsizetype kBackgroundFrom = 20000;

    ResultLists(ScanState& state, const Selection& selection);
    // Stops the work in hand and waits for it.
    ~ResultLists();

    DisplayList duplicateDisplayArray;
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
    // other tag), logs "sorting" and answers true: the screen then rebuilds the list 0.1 s later.
    // Either way the sort menu shows the new state at once.
    bool sortDuplicatesFor(quint64 tag);
    // The title at index `typesort` is the pop-up's title; an item is checked when its tag is the
    // active key or direction.
    bool isSortItemChecked(quint64 tag) const { return tag == typesort || tag == typesortorder; }

    // A type-filter button's action with its tag. Pressing the active filter changes nothing and
    // answers false (the button goes back on); otherwise the filter becomes the tag and the answer
    // is true (the buttons then act as a radio group). filterUsingTypeAction also rebuilds the list
    // at once; with setTypeFilter the caller rebuilds it.
    bool filterUsingTypeAction(quint64 tag);
    bool setTypeFilter(quint64 tag);

    // Rebuilds `duplicateDisplayArray` from all groups, filtered then sorted, and sets the current
    // row to 0, on this thread whatever it costs.
    void getDiplayListAndReloadMainList();
    // The same, on a thread of its own when that could take long. Answers true when the list was
    // rebuilt at once; otherwise the listener hears of it (on the thread that set it) once the new
    // list is in place, unless a newer rebuild or a change of the result came first.
    bool rebuildDisplayList();
    void setDisplayListener(QObject* context, std::function<void()> listener);
    // Whether a rebuild is under way on the other thread.
    bool isBusy() const { return m_busy; }
    // After a scan: works out what the first rebuild needs, in the background.
    void prepare();
    // Before the groups change (a new scan, a removal): stops the work in hand, waits for it and
    // forgets what was worked out for the groups as they were.
    void resultWillChange();

    // The order that keys 1, 2 and 4 use, kept as the program has always had it: it only ever
    // answers "same" (false) or "the left group goes after the right one" (true), the latter when
    // descending differs from (right < left). Descending thus puts the left after the right for
    // equal keys too, which reverses ties.
    static bool leftGoesAfterRight(quint64 left, quint64 right, bool descending) {
        return descending != (right < left);
    }

    struct Work;
    struct Request;

private:
    Request request() const;
    // Whether the request can be answered from what is kept, without long work.
    bool isQuick(const Request& request) const;
    void forgetIfChanged();

    ScanState& m_state;
    const Selection& m_selection;
    std::shared_ptr<Work> m_work;
    std::shared_ptr<std::atomic<bool>> m_stopCurrent;
    quint64 m_generation = 0;
    bool m_busy = false;
    QThreadPool m_pool;
    // Makes the search's index after a scan, while the rebuilds go on in m_pool.
    QThreadPool m_searchPool;
    // Lives on the thread that made the lists: finished rebuilds are handed over through it.
    std::unique_ptr<QObject> m_receiver;
    QPointer<QObject> m_listenerContext;
    std::function<void()> m_listener;
};
