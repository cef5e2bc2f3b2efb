#pragma once

#include <QDBusConnection>
#include <QObject>
#include <optional>

// Desktop notifications through the freedesktop notification service
// (org.freedesktop.Notifications on the session bus), with the default message sound. Calls are
// asynchronous with a short time limit; when no service answers, one log line is written and
// nothing else happens.
class DesktopNotifier : public QObject {
    Q_OBJECT

public:
    static constexpr int kDelayMs = 500;
    static constexpr int kTimeoutMs = 3000;

    explicit DesktopNotifier(QObject* parent = nullptr);

    // The bus to post on; the session bus when none is set (tests give a private one).
    void setConnection(const QDBusConnection& connection);

    // setUserNotificationWithTitle:SubTitle:InformativeText:: posts half a second later.
    void notifyLater(const QString& title, const QString& subTitle, const QString& informativeText);
    // Posts at once.
    void notify(const QString& title, const QString& subTitle, const QString& informativeText);

signals:
    // The service accepted the notification and gave it this id.
    void delivered(uint id);
    void failed(const QString& error);

private:
    void fail(const QString& error);

    std::optional<QDBusConnection> m_connection;
};
