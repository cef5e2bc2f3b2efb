#pragma once

#include <QKeySequence>
#include <QString>

class AppDelegate;
class QAction;
class QMainWindow;
class QMenu;

// The menu bar. Every item that follows the menu rules carries its tag in the property "tag";
// the controller enables them by those rules whenever a menu opens and after each change of state.
namespace AppMenus {

void build(QMainWindow& window, AppDelegate& appDelegate);

// Adds a tagged item (later issues add theirs the same way).
QAction* addItem(QMenu* menu, const QString& title, int tag, const QKeySequence& shortcut = {});
// The item with `tag`, or none.
QAction* itemWithTag(QMainWindow& window, int tag);
// The full-screen item (no tag: the window's frame decides it).
QAction* fullScreenItem(QMainWindow& window);

} // namespace AppMenus
