#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>
#include <QUrl>
#include <functional>

// Hands files to the desktop: reveal in the file manager, open in the default application.
//
// Revealing asks the file manager over D-Bus (org.freedesktop.FileManager1 ShowItems) without
// waiting for it; when no file manager answers within the time limit, or there is no bus, the
// parent folder is opened instead. URIs are built from the path bytes, so any name is passed on
// exactly.
class FileActions : public QObject {
    Q_OBJECT

public:
    static constexpr int revealTimeoutMs = 2000;

    // The connection is the session bus in the program and a private bus in tests.
    explicit FileActions(const QDBusConnection& bus, QObject* parent = nullptr);

    // Opens URLs with the desktop's handler; QDesktopServices by default, replaceable in tests.
    std::function<bool(const QUrl&)> openUrl;

    static QUrl fileUrl(const QByteArray& path);

    // Shows the item selected in the file manager; the answer comes through revealed().
    void revealInFinder(const QByteArray& path);
    // Opens the file in its default application. The desktop's handler reports success as soon as
    // it starts, so true means only that it was started.
    bool openInExternalDefaultApp(const QByteArray& path);

signals:
    // byFileManager: the file manager took the request; otherwise the parent folder was opened
    // (opened tells whether that could be started).
    void revealed(const QByteArray& path, bool byFileManager, bool opened);

private:
    void openParentFolder(const QByteArray& path, const QString& reason);

    QDBusConnection m_bus;
};
