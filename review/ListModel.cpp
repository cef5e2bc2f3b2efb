#include "review/ListModel.h"

#include "base/PathBytes.h"
#include "engine/ScanState.h"
#include "review/ListSelection.h"
#include "review/TextCompare.h"

#include <QSet>
#include <algorithm>
#include <numeric>
#include <vector>

ListModel::ListModel(ScanState& state, ListSelection& selection)
    : m_state(state)
    , m_selection(selection) { }

QString ListModel::SortItemList(qsizetype index) {
    if (index < 0 || index >= sortItemTitles.size())
        return QString();
    while (sortItemChecked.size() < sortItemTitles.size())
        sortItemChecked.append(false);
    if (index == 7 || index == 8) {
        a2z = index == 7;
        sortItemChecked[7] = index == 7;
        sortItemChecked[8] = index == 8;
    } else if (index <= 5) {
        if (sortItemTitles.at(index).isEmpty())
            index = 1;
        for (qsizetype i = 0; i <= 5 && i < sortItemChecked.size(); ++i)
            sortItemChecked[i] = i == index;
        typeSort = sortItemTitles.at(index);
    }
    const QString title = sortItemTitles.at(index);
    sortResult(title);
    return title;
}

void ListModel::sortResult(const QString& title) {
    if (!sortBy(title))
        sortBy(typeSort);
}

bool ListModel::sortBy(const QString& title) {
    // Every key is worked out once per group and the groups are then placed by a stable sort of
    // their indexes: folding texts at each comparison would cost seconds on large results.
    QList<GroupDictionary>& groups = m_state.DuplicateFileFolderArray;
    std::vector<qsizetype> order(static_cast<size_t>(groups.size()));
    std::iota(order.begin(), order.end(), qsizetype(0));
    const bool ascending = a2z;
    auto sortByNumber = [&](auto key) {
        std::vector<qint64> keys;
        keys.reserve(order.size());
        for (const GroupDictionary& group : std::as_const(groups))
            keys.push_back(key(group));
        std::stable_sort(order.begin(), order.end(), [&keys, ascending](qsizetype a, qsizetype b) {
            const auto left = static_cast<size_t>(a);
            const auto right = static_cast<size_t>(b);
            return ascending ? keys[left] < keys[right] : keys[right] < keys[left];
        });
    };
    auto sortByText = [&](auto text) {
        std::vector<QList<char32_t>> keys;
        keys.reserve(order.size());
        for (const GroupDictionary& group : std::as_const(groups))
            keys.push_back(TextCompare::caseInsensitiveKey(text(group)));
        std::stable_sort(order.begin(), order.end(), [&keys, ascending](qsizetype a, qsizetype b) {
            const QList<char32_t>& left = keys[static_cast<size_t>(a)];
            const QList<char32_t>& right = keys[static_cast<size_t>(b)];
            return ascending ? std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end())
                             : std::lexicographical_compare(right.begin(), right.end(), left.begin(), left.end());
        });
    };

    if (title == QLatin1String("Original Filename")) {
        sortByText(
            [](const GroupDictionary& g) { return PathBytes::display(PathBytes::lastPathComponent(g.original.url)); });
    } else if (title == QLatin1String("Duplicate Count")) {
        sortByNumber([](const GroupDictionary& g) { return static_cast<qint64>(g.SameFileList.size()); });
    } else if (title == QLatin1String("Duplicate Type")) {
        // A member without a type compares as an empty text.
        sortByText([](const GroupDictionary& g) { return g.original.type.value_or(QString()); });
    } else if (title == QLatin1String("Wasted Size")) {
        sortByNumber([](const GroupDictionary& g) {
            qint64 sum = 0;
            for (const FileDictionary& file : g.SameFileList)
                sum += file.FileSize;
            return sum;
        });
    } else if (title == QLatin1String("Duplicate Selected")) {
        QSet<QByteArray> chosen;
        for (const FileDictionary& file : m_selection.SelectedFileFolderArray)
            chosen.insert(file.url);
        sortByNumber([&chosen](const GroupDictionary& g) {
            qint64 count = 0;
            for (const FileDictionary& file : g.SameFileList)
                count += chosen.contains(file.url) ? 1 : 0;
            return count;
        });
    } else {
        return false;
    }
    QList<GroupDictionary> sorted;
    sorted.reserve(groups.size());
    for (const qsizetype index : order)
        sorted.append(groups.at(index));
    groups = std::move(sorted);
    return true;
}

void ListModel::makeListOfTypes() {
    QStringList& segments = m_state.filterSegmentItem;
    QStringList rebuilt;
    if (!segments.isEmpty())
        rebuilt.append(segments.first());
    for (const char* type : { "Folder", "Photo", "Media", "Text", "Other" }) {
        if (segments.contains(QLatin1String(type)))
            rebuilt.append(QLatin1String(type));
    }
    segments = rebuilt;
}

void ListModel::searchForEnteredString(const QString& text) {
    searchText = text;
    if (saveResultArray.isEmpty())
        saveResult();
    QList<GroupDictionary> shown = saveResultArray;
    if (!segmentType.isEmpty() && segmentType != QLatin1String("All")) {
        shown.removeIf([this](const GroupDictionary& group) {
            return std::none_of(group.SameFileList.begin(), group.SameFileList.end(),
                [this](const FileDictionary& file) { return file.type == segmentType; });
        });
    }
    if (!text.isEmpty()) {
        shown.removeIf([&text](const GroupDictionary& group) {
            return std::none_of(
                group.SameFileList.begin(), group.SameFileList.end(), [&text](const FileDictionary& file) {
                    return TextCompare::containsIgnoringCase(PathBytes::display(file.url), text);
                });
        });
    }
    m_state.DuplicateFileFolderArray = shown;
    sortResult(typeSort);
}

void ListModel::saveResult() {
    saveResultArray = m_state.DuplicateFileFolderArray;
}

void ListModel::NewScanBack() {
    m_state.mainArray.clear();
    m_state.DuplicateFileFolderArray.clear();
    m_selection.SelectedFileFolderArray.clear();
    saveResultArray.clear();
    searchText.clear();
}
