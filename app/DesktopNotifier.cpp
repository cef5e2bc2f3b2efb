#include "app/DesktopNotifier.h"

#include "base/Log.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QTimer>

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");

} // namespace

DesktopNotifier::DesktopNotifier(QObject* parent)
    : QObject(parent) { }

void DesktopNotifier::setConnection(const QDBusConnection& connection) {
    m_connection = connection;
}

void DesktopNotifier::notifyLater(const QString& title, const QString& subTitle, const QString& informativeText) {
    QTimer::singleShot(
        kDelayMs, this, [this, title, subTitle, informativeText] { notify(title, subTitle, informativeText); });
}

void DesktopNotifier::notify(const QString& title, const QString& subTitle, const QString& informativeText) {
    const QDBusConnection bus = m_connection ? *m_connection : QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        fail(bus.lastError().message().isEmpty() ? QStringLiteral("no session bus") : bus.lastError().message());
        return;
    }
    // The subtitle, when there is one, leads the body.
    const QString body = subTitle.isEmpty() ? informativeText : subTitle + QLatin1Char('\n') + informativeText;
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kService, QStringLiteral("Notify"));
    const QVariantMap hints {
        { QStringLiteral("sound-name"), QStringLiteral("message-new-instant") },
        { QStringLiteral("desktop-entry"), QStringLiteral("twinsift") },
    };
    call << QStringLiteral("Twinsift") << uint(0) << QStringLiteral("twinsift") << title << body << QStringList()
         << hints << int(-1);
    const QDBusPendingCall pending = bus.asyncCall(call, kTimeoutMs);
    // A call on a bus that went away is finished at once and its watcher never fires.
    if (pending.isFinished()) {
        const QDBusPendingReply<uint> reply = pending;
        if (reply.isError())
            fail(reply.error().message());
        else
            emit delivered(reply.value());
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(pending, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusPendingReply<uint> reply = *finished;
        if (reply.isError())
            fail(reply.error().message());
        else
            emit delivered(reply.value());
    });
}

void DesktopNotifier::fail(const QString& error) {
    Log::line(QStringLiteral("notification not shown: ") + error);
    emit failed(error);
}
