#pragma once

#include <QString>

// When each item of the menu bar is enabled, decided from its tag and the state of the window.
// Free of widgets so the whole table can be checked in a test.
namespace MenuRules {

enum Tag {
    NewScan = 10,
    AddFolder = 11,
    Scan = 12,
    ScaniPhoto = 13,
    DeselectAllDuplicate = 20,
    SelectAllDuplicate = 21,
    ShowSelected = 22,
    Find = 23,
    UndoRemoval = 24,
    Preferences = 100,
    Minimize = 200,
    Quit = 300,
};

struct State {
    bool isMainScreen = true;
    bool resetNewScanEnabled = false; // ResetNewScanBTN
    bool addEnabled = true; // _Add
    bool scanEnabled = false; // _scan
    bool iPhotoEnabled = true; // _iPhoto
    QString selectDuplicateTitle = QStringLiteral("Select All"); // Select_Duplicate_
    bool removeEnabled = false; // _Remove
    bool searchEnabled = false; // _searchALL
    int selRowRightClick = -1;
    // For items of the set-as-original action: whether the right-clicked file already is its
    // group's original.
    bool rightClickedIsOriginal = false;
};

// `isSetAsOriginal`: the item's action is SetAsOriginal:.
bool validateMenuItem(int tag, const State& state, bool isSetAsOriginal = false);

} // namespace MenuRules
