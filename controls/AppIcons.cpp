#include "controls/AppIcons.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"

#include <QFile>
#include <QMimeDatabase>
#include <QStandardPaths>
#include <fcntl.h>
#include <unistd.h>

namespace {

QIcon shippedIcon(const QString& name) {
    const QString path = QStringLiteral(":/icons/mime/") + name + QStringLiteral(".png");
    return QFile::exists(path) ? QIcon(path) : QIcon();
}

QIcon themeOrShipped(const QString& name) {
    if (name.isEmpty())
        return QIcon();
    if (QIcon::hasThemeIcon(name))
        return QIcon::fromTheme(name);
    return shippedIcon(name);
}

} // namespace

namespace AppIcons {

void setUpTheme() {
    if (!QIcon::fromTheme(QStringLiteral("folder")).isNull())
        return;
    QStringList paths = QIcon::themeSearchPaths();
    const QStringList dataIcons = QStandardPaths::locateAll(
        QStandardPaths::GenericDataLocation, QStringLiteral("icons"), QStandardPaths::LocateDirectory);
    for (const QString& folder : dataIcons) {
        if (!paths.contains(folder))
            paths.append(folder);
    }
    QIcon::setThemeSearchPaths(paths);
    QIcon::setThemeName(QStringLiteral("Adwaita"));
}

QIcon applicationIcon() {
    if (QIcon::hasThemeIcon(QStringLiteral("twinsift")))
        return QIcon::fromTheme(QStringLiteral("twinsift"));
    QIcon icon;
    for (int size : { 32, 64, 128, 256 })
        icon.addFile(QStringLiteral(":/icons/twinsift-%1.png").arg(size), QSize(size, size));
    return icon;
}

QIcon iconForMimeType(const QMimeType& type) {
    QIcon icon = themeOrShipped(type.iconName());
    if (icon.isNull())
        icon = themeOrShipped(type.genericIconName());
    // Folders are named "folder" in most themes and "inode-directory" in the type database.
    if (icon.isNull() && type.name() == QLatin1String("inode/directory"))
        icon = themeOrShipped(QStringLiteral("folder"));
    if (icon.isNull() && type.inherits(QStringLiteral("text/plain")))
        icon = themeOrShipped(QStringLiteral("text-x-generic"));
    if (icon.isNull())
        icon = themeOrShipped(QStringLiteral("application-x-generic"));
    return icon;
}

QIcon folderIcon() {
    return iconForMimeType(QMimeDatabase().mimeTypeForName(QStringLiteral("inode/directory")));
}

QMimeType mimeTypeForPath(const QByteArray& path) {
    QMimeDatabase database;
    FileSystem::ItemInfo info;
    if (FileSystem::stat(path, info) && info.kind == FileSystem::Kind::Directory)
        return database.mimeTypeForName(QStringLiteral("inode/directory"));
    const QString name = PathBytes::display(PathBytes::lastPathComponent(path));
    if (info.kind == FileSystem::Kind::Regular) {
        const int fd = FileSystem::openPath(path, O_RDONLY | O_CLOEXEC);
        QFile file;
        if (fd >= 0 && file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
            return database.mimeTypeForFileNameAndData(name, &file);
        if (fd >= 0)
            ::close(fd);
    }
    return database.mimeTypeForFile(name, QMimeDatabase::MatchExtension);
}

QIcon iconForPath(const QByteArray& path) {
    return iconForMimeType(mimeTypeForPath(path));
}

} // namespace AppIcons
