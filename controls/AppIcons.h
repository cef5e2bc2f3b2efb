#pragma once

#include <QByteArray>
#include <QIcon>
#include <QMimeType>

// Icons of the window: the application's own icon and icons for files by their type. Theme icons
// come first; the program carries its own drawings for what a theme may lack.
namespace AppIcons {

// Call once after the application object exists. Without a desktop session Qt picks no theme
// (offscreen) or a bare hicolor one (X11 without a desktop), where even "folder" is missing; then
// every icons folder of the data directories is searched and Adwaita becomes the theme.
void setUpTheme();

// The installed "twinsift" theme icon, else the program's own copy.
QIcon applicationIcon();

// The theme's icon for the type (its icon name, then its generic icon name), else one of the
// program's own drawings for that type or its generic kind, else a blank document.
QIcon iconForMimeType(const QMimeType& type);
// The type is read from the name and, for files, the first bytes; folders get the folder icon.
QIcon iconForPath(const QByteArray& path);
QIcon folderIcon();

// The type of an item as the preview and the icons see it: inode/directory for folders, otherwise
// matched by name and content (a file that cannot be opened by name only).
QMimeType mimeTypeForPath(const QByteArray& path);

} // namespace AppIcons
