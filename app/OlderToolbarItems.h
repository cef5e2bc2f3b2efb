#pragma once

#include <QString>

// The state of the toolbar items of the scan-list pages (the list scan's own main and result
// pages): `_Add`, `_scan`, `_iPhoto`, `_showDuplicate`, `_Remove`, the result page's new-scan
// button and the status popover's button, with the status line and the selection button's title.
// The menu rules and the list scan read and write this state; the buttons of OlderToolbar and the
// status strip of OlderPages are drawn from it. (The names drop the leading underscore, which C++
// reserves before a capital letter.)
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
    Item Remove { false, true, {} };
    Item ResetNewScanBTN { false, false, {} };
    Item StatusWindowBTN { false, false, {} };
    // The status line under the pages (`bottomStatus`); on the main page with no targets it reads
    // "Add or Drag Files and Folders".
    QString bottomStatus = QStringLiteral("Add or Drag Files and Folders");
    // The hint of the empty target list (shown exactly when `mainArray` is empty).
    bool hintShown = true;
    // The title of `Select_Duplicate_`: the last rule chosen from its menu ("Select All" once every
    // copy was chosen).
    QString selectDuplicateTitle = QStringLiteral("Select Duplicates");
    // The text in the middle of the pages' toolbar.
    QString statusText;
};
