#include "review/ResultLists.h"

#include "base/Log.h"
#include "base/PathBytes.h"
#include "engine/ScanState.h"
#include "review/Selection.h"
#include "review/TextCompare.h"

#include <algorithm>
#include <functional>

ResultLists::ResultLists(ScanState& state, const Selection& selection)
    : m_state(state)
    , m_selection(selection) { }

void ResultLists::resetSortAndFilter() {
    typesort = OriginalFilename;
    typesortorder = Ascending;
    typefilter = AllTypes;
}

bool ResultLists::sortDuplicatesFor(quint64 tag) {
    if (tag == typesortorder || tag == typesort) {
        Log::line(QStringLiteral("no need to sort"));
        return false;
    }
    if (tag == Ascending || tag == Descending)
        typesortorder = tag;
    else
        typesort = tag;
    Log::line(QStringLiteral("sorting"));
    return true;
}

bool ResultLists::filterUsingTypeAction(quint64 tag) {
    if (tag == typefilter)
        return false;
    typefilter = tag;
    getDiplayListAndReloadMainList();
    return true;
}

void ResultLists::getDiplayListAndReloadMainList() {
    selectedMain = 0;
    duplicateDisplayArray = m_state.duplicateMainArray;
    filteredDuplicateArray(duplicateDisplayArray);
    sortedDuplicateArray(duplicateDisplayArray);
}

QList<DuplicateGroupPtr>& ResultLists::filteredDuplicateArray(QList<DuplicateGroupPtr>& groups) const {
    if (typefilter != AllTypes) {
        groups.removeIf([this](const DuplicateGroupPtr& group) {
            return !group->type() || static_cast<quint64>(*group->type()) != typefilter;
        });
    }
    if (!searchText.isEmpty() && !groups.isEmpty()) {
        const QString needle = TextCompare::foldedNeedle(searchText);
        groups.removeIf([&needle](const DuplicateGroupPtr& group) {
            const QList<DuplicateFilePtr>& files = group->listAll();
            return std::none_of(files.begin(), files.end(), [&needle](const DuplicateFilePtr& file) {
                return TextCompare::containsFolded(PathBytes::display(file->urlFile()), needle);
            });
        });
    }
    return groups;
}

QList<DuplicateGroupPtr>& ResultLists::sortedDuplicateArray(QList<DuplicateGroupPtr>& groups) const {
    const bool descending = typesortorder != Ascending;
    switch (typesort) {
    case OriginalFilename: {
        // Each name is folded once, not once per comparison; equal names keep their order in both
        // directions.
        QList<std::pair<QList<char32_t>, DuplicateGroupPtr>> keyed;
        keyed.reserve(groups.size());
        for (const DuplicateGroupPtr& group : std::as_const(groups))
            keyed.append(
                { TextCompare::caseInsensitiveKey(PathBytes::display(PathBytes::lastPathComponent(group->original()))),
                    group });
        std::stable_sort(keyed.begin(), keyed.end(),
            [descending](const auto& a, const auto& b) { return descending ? b.first < a.first : a.first < b.first; });
        for (qsizetype i = 0; i < keyed.size(); ++i)
            groups[i] = keyed[i].second;
        return groups;
    }
    case DuplicateType: {
        // An unset type sorts below every number.
        std::stable_sort(
            groups.begin(), groups.end(), [descending](const DuplicateGroupPtr& a, const DuplicateGroupPtr& b) {
                return descending ? b->type() < a->type() : a->type() < b->type();
            });
        return groups;
    }
    case WastedSize:
    case DuplicateCount:
    case DuplicateSelected:
        break;
    default:
        Log::line(QStringLiteral("error"));
        return groups;
    }

    // Key 4 counts through one set of the chosen records made for the whole sort: going through the
    // selection once per group would take quadratic time on large results.
    const std::unordered_set<const duplicateFile*> chosen
        = typesort == DuplicateSelected ? m_selection.chosenSet() : std::unordered_set<const duplicateFile*>();
    std::function<quint64(const duplicates&)> key;
    if (typesort == WastedSize)
        key = [](const duplicates& g) {
            return static_cast<quint64>(g.sizeFile()) * static_cast<quint64>(g.listAll().size());
        };
    else if (typesort == DuplicateCount)
        key = [](const duplicates& g) { return static_cast<quint64>(g.listAll().size()); };
    else
        key = [&chosen](const duplicates& g) { return static_cast<quint64>(Selection::countIn(g, chosen)); };

    // The two-outcome comparator drives the stable sort the way a merge sort applies it: the right
    // element is placed first exactly when the comparator says the left one goes after it.
    QList<std::pair<quint64, DuplicateGroupPtr>> keyed;
    keyed.reserve(groups.size());
    for (const DuplicateGroupPtr& group : groups)
        keyed.append({ key(*group), group });
    std::stable_sort(keyed.begin(), keyed.end(),
        [descending](const auto& x, const auto& y) { return leftGoesAfterRight(y.first, x.first, descending); });
    for (qsizetype i = 0; i < keyed.size(); ++i)
        groups[i] = keyed[i].second;
    return groups;
}
