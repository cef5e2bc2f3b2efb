#pragma once

#include "detect/GroupDictionary.h"

#include <QList>
#include <QString>
#include <QStringList>

struct ScanState;
class ListSelection;

// The older list model: the group dictionaries of `DuplicateFileFolderArray` (list scan and
// photo-library scan) with their sort pop-up, type segments and search. `saveResultArray` keeps
// the whole result while a search or a type segment narrows the shown list.
class ListModel {
public:
    ListModel(ScanState& state, ListSelection& selection);

    // The items of the sort pop-up, in menu order: keys at 0 to 5, directions at 7 (A to Z) and 8.
    // An item without a title stands for the one at index 1.
    QStringList sortItemTitles = { QStringLiteral("Original Filename"), QStringLiteral("Wasted Size"),
        QStringLiteral("Duplicate Count"), QStringLiteral("Duplicate Type"), QStringLiteral("Duplicate Selected"),
        QString(), QString(), QStringLiteral("A to Z"), QStringLiteral("Z to A") };
    QList<bool> sortItemChecked = { true, false, false, false, false, false, false, true, false };
    bool a2z = true;
    // The remembered sort title.
    QString typeSort = QStringLiteral("Original Filename");
    QList<GroupDictionary> saveResultArray;
    // The search field's text and the chosen type segment ("All" shows every type).
    QString searchText;
    QString segmentType = QStringLiteral("All");

    // The sort pop-up's action with the chosen item's index: updates the check marks, the
    // direction or the remembered title, sorts, and answers the title the pop-up shows. The list
    // is then reloaded and scrolled to the top.
    QString SortItemList(qsizetype index);
    // Sorts `DuplicateFileFolderArray` by a menu title, ascending when `a2z`; an unknown title sorts
    // by the remembered `typeSort`.
    void sortResult(const QString& title);
    // Keeps the first segment ("All") and then those of "Folder", "Photo", "Media", "Text",
    // "Other" already present, in that order.
    void makeListOfTypes();
    // Shows the groups of the saved result that have a file of the chosen type segment and, with a
    // text, a file whose displayed path contains it ignoring case; sorted by `typeSort`.
    void searchForEnteredString(const QString& text);
    // Keeps the finished result as the list a search starts from.
    void saveResult();
    // Going back to a new scan: empties mainArray, DuplicateFileFolderArray, the older selection
    // and saveResultArray, and clears the search text.
    void NewScanBack();

private:
    bool sortBy(const QString& title);

    ScanState& m_state;
    ListSelection& m_selection;
};
