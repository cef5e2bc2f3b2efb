#pragma once

#include <QRect>

class QPainter;
class QStyleOptionViewItem;

// The round buttons drawn at the end of list rows: a grey disc with a white mark that takes the
// button's colour while the pointer is over it.
namespace RowButtons {

// Whether the pointer is over `button` in a row drawn with `option`.
bool isUnderPointer(const QStyleOptionViewItem& option, const QRect& button);
// A cross: removes the row's item from its list; red under the pointer.
void paintRemove(QPainter& painter, const QRect& button, bool underPointer);
// An arrow: shows the row's item in the file manager; blue under the pointer.
void paintReveal(QPainter& painter, const QRect& button, bool underPointer);

} // namespace RowButtons
