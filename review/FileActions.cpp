#include "review/FileActions.h"

#include "base/Log.h"
#include "base/PathBytes.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>

namespace {

const QString fileManagerService = QStringLiteral("org.freedesktop.FileManager1");
const QString fileManagerPath = QStringLiteral("/org/freedesktop/FileManager1");

} // namespace

FileActions::FileActions(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , openUrl([](const QUrl& url) { return QDesktopServices::openUrl(url); })
    , m_bus(bus) { }

QUrl FileActions::fileUrl(const QByteArray& path) {
    return QUrl::fromEncoded(PathBytes::fileUrl(path), QUrl::StrictMode);
}

void FileActions::revealInFinder(const QByteArray& path) {
    if (!m_bus.isConnected()) {
        openParentFolder(path, QStringLiteral("no session bus"));
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        fileManagerService, fileManagerPath, fileManagerService, QStringLiteral("ShowItems"));
    call << QStringList { QString::fromLatin1(PathBytes::fileUrl(path)) } << QString();
    const QDBusPendingCall pending = m_bus.asyncCall(call, revealTimeoutMs);
    // A call that failed at once (the bus went away) never reports through a watcher.
    if (pending.isFinished() && pending.isError()) {
        openParentFolder(path, pending.error().message());
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(pending, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, path](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        if (finished->isError()) {
            openParentFolder(path, finished->error().message());
            return;
        }
        emit revealed(path, true, true);
    });
}

void FileActions::openParentFolder(const QByteArray& path, const QString& reason) {
    Log::line(QStringLiteral("reveal: no file manager (%1), opening the folder").arg(reason));
    const bool opened = openUrl(fileUrl(PathBytes::deletingLastPathComponent(path)));
    if (!opened)
        Log::line(
            QStringLiteral("could not open %1").arg(PathBytes::display(PathBytes::deletingLastPathComponent(path))));
    emit revealed(path, false, opened);
}

bool FileActions::openInExternalDefaultApp(const QByteArray& path) {
    const bool opened = openUrl(fileUrl(path));
    if (!opened)
        Log::line(QStringLiteral("could not open %1").arg(PathBytes::display(path)));
    return opened;
}
