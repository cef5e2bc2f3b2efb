#include "review/ListModel.h"

#include "engine/PathBytes.h"
#include "engine/ScanState.h"
#include "review/ListSelection.h"
#include "review/TextCompare.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <functional>

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
    using Less = std::function<bool(const GroupDictionary&, const GroupDictionary&)>;
    const bool ascending = a2z;
    auto byNumber = [ascending](auto key) -> Less {
        return [ascending, key](const GroupDictionary& a, const GroupDictionary& b) {
            return ascending ? key(a) < key(b) : key(b) < key(a);
        };
    };
    auto byText = [ascending](auto key) -> Less {
        return [ascending, key](const GroupDictionary& a, const GroupDictionary& b) {
            const int order = TextCompare::caseInsensitiveCompare(key(a), key(b));
            return ascending ? order < 0 : order > 0;
        };
    };

    Less less;
    if (title == QLatin1String("Original Filename")) {
        less = byText(
            [](const GroupDictionary& g) { return PathBytes::display(PathBytes::lastPathComponent(g.original.url)); });
    } else if (title == QLatin1String("Duplicate Count")) {
        less = byNumber([](const GroupDictionary& g) { return static_cast<double>(g.SameFileList.size()); });
    } else if (title == QLatin1String("Duplicate Type")) {
        // A member without a type compares as an empty text.
        less = byText([](const GroupDictionary& g) { return g.original.type.value_or(QString()); });
    } else if (title == QLatin1String("Wasted Size")) {
        less = byNumber([](const GroupDictionary& g) {
            qint64 sum = 0;
            for (const FileDictionary& file : g.SameFileList)
                sum += file.FileSize;
            return sum;
        });
    } else if (title == QLatin1String("Duplicate Selected")) {
        // Counted once per group against a set of the chosen paths, not once per comparison.
        QSet<QByteArray> chosen;
        for (const FileDictionary& file : m_selection.SelectedFileFolderArray)
            chosen.insert(file.url);
        QHash<QByteArray, qsizetype> counts;
        for (const GroupDictionary& group : std::as_const(m_state.DuplicateFileFolderArray)) {
            qsizetype count = 0;
            for (const FileDictionary& file : group.SameFileList)
                count += chosen.contains(file.url) ? 1 : 0;
            counts.insert(group.original.url, count);
        }
        less = byNumber([counts](const GroupDictionary& g) { return counts.value(g.original.url); });
    } else {
        return false;
    }
    std::stable_sort(m_state.DuplicateFileFolderArray.begin(), m_state.DuplicateFileFolderArray.end(), less);
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
