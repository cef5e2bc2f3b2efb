#pragma once

#include "removal/Journal.h"

#include <QList>
#include <QString>

// Puts back what one recorded removal did, newest item first, never overwriting anything present:
// a trash entry is moved back to its path and its .trashinfo removed; a symbolic link, hard link or
// link file put in an item's place is taken away and the item made again as a copy of the kept copy
// (with the recorded permissions and modification time), the copy made at a temporary name and
// checked against the recorded digest before it takes the item's place. A permanent delete cannot
// come back and says so; an item whose path is taken again by something else is left with its reason.
namespace Undo {

struct Result {
    QByteArray path;
    QString action;
    bool restored = false;
    QString reason; // why not, when not restored
};

QList<Result> undo(const Journal::Removal& removal);

// The reasons an item is not put back.
QString notRestorableText();
QString pathTakenText();

} // namespace Undo
