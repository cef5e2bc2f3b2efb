#pragma once

#include <QString>

// The older pair of views (the list scan's main and result screens) is not shown in this window,
// but its toolbar items still carry state that the menu rules and the list scan read and write:
// `_Add`, `_scan`, `_iPhoto`, `_showDuplicate`, `_Remove`, the older result screen's new-scan
// button and the status popover's button. Only their flags are kept. (The names drop the leading
// underscore, which C++ reserves before a capital letter.)
struct OlderToolbarItems {
    struct Item {
        bool enabled = true;
        bool hidden = false;
        QString image;
    };

    Item Add { true, false, QStringLiteral("NSAddTemplate") };
    Item scan { false, false, {} };
    Item iPhoto { true, false, {} };
    Item showDuplicate { false, false, {} };
    Item Remove { false, false, {} };
    Item ResetNewScanBTN { false, false, {} };
    Item StatusWindowBTN { false, false, {} };
    // The hint "Add or Drag Files and Folders" of the older main screen.
    bool hintShown = true;
    // The older result screen's status line.
    QString bottomStatus;
};
