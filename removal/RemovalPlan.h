#pragma once

#include "detect/duplicates.h"

#include <QList>
#include <QString>
#include <vector>

// What a removal will do, worked out from the choice and the result on screen before anything on
// disk is touched, so that no removal ever takes the last copy of a content with it.
//
// A chosen item takes with it everything inside it (a folder goes whole) and every path that is the
// same file (device and inode: a hard link, a bind mount). A copy of a group survives when it is not
// chosen, lies in no chosen folder, is not the same file as a chosen item and, for a folder, holds no
// chosen item. Every group keeps at least one survivor: where the choice would leave none, the plan
// leaves alone the items that keep the least on disk (a file rather than the folder that holds it).
// Each item that is acted on gets a surviving copy of its group as its kept copy, the one every
// replacement links to and every check before acting compares with.
class RemovalPlan {
public:
    struct Item {
        DuplicateFilePtr file;
        DuplicateGroupPtr group; // none for a record of no group on screen
        DuplicateFilePtr kept; // a surviving copy of the group; none when the item is left
        QString leftReason; // set when the item is left alone, never touched
        // The chosen folder this item lies in (an index into items()), or -1. The item goes with that
        // folder and is acted on by itself only when the folder is left.
        qsizetype container = -1;

        bool isLeft() const { return !leftReason.isEmpty(); }
    };

    // Every chosen record gets one item, in the order to act in: the items to act on first (in the
    // order chosen, a folder before what lies inside it), then the items left. Records listed twice
    // count once. `groups` is the result on screen; records of no group in it are left.
    // Items inside one of `protectedFolders` are left too.
    RemovalPlan(const QList<DuplicateFilePtr>& chosen, const QList<DuplicateGroupPtr>& groups,
        const QList<QByteArray>& protectedFolders = {});

    const std::vector<Item>& items() const { return m_items; }
    qsizetype leftCount() const { return m_leftCount; }

    // The reasons an item is left, as the review sheet, the log and the command line show them.
    static QString notOnScreenText();
    static QString lastCopyText();
    static QString sameFileText();
    static QString protectedText();

private:
    std::vector<Item> m_items;
    qsizetype m_leftCount = 0;
};
