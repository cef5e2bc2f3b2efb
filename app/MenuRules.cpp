#include "app/MenuRules.h"

namespace MenuRules {

namespace {

bool otherTag(const State& state, bool isSetAsOriginal) {
    if (state.selRowRightClick < 0)
        return false;
    return !isSetAsOriginal || !state.rightClickedIsOriginal;
}

} // namespace

bool validateMenuItem(int tag, const State& state, bool isSetAsOriginal) {
    switch (tag) {
    case Preferences:
    case Minimize:
    case Quit:
    case UndoRemoval: // says so itself when there is nothing to undo
        return true;
    case NewScan:
        return state.resetNewScanEnabled;
    case AddFolder:
        return state.isMainScreen && state.addEnabled;
    case Scan:
        return state.scanEnabled;
    case ScaniPhoto:
        return state.iPhotoEnabled;
    case DeselectAllDuplicate:
        // Falls through to the rule of untagged items as well: a row must have been right-clicked.
        return !state.isMainScreen && state.selectDuplicateTitle == QLatin1String("Select All")
            && otherTag(state, isSetAsOriginal);
    case SelectAllDuplicate:
        return !state.isMainScreen && state.selectDuplicateTitle != QLatin1String("Select All");
    case ShowSelected:
        return !state.isMainScreen && state.removeEnabled;
    case Find:
        return !state.isMainScreen && state.searchEnabled;
    default:
        return otherTag(state, isSetAsOriginal);
    }
}

} // namespace MenuRules
