#include "AppFixture.h"

#include "app/AppMenus.h"
#include "app/DesktopNotifier.h"
#include "app/MainWindow.h"
#include "base/ByteCountFormatter.h"

#include <QAction>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

// Stands in for the desktop's notification service and records every call.
class FakeNotifications : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Call {
        QString appName, summary, body;
        QVariantMap hints;
        qint64 atMs = 0;
    };
    QList<Call> calls;
    QElapsedTimer clock;

public slots:
    uint Notify(const QString& appName, uint, const QString&, const QString& summary, const QString& body,
        const QStringList&, const QVariantMap& hints, int) {
        calls.append({ appName, summary, body, hints, clock.elapsed() });
        return 42;
    }
};

// The fake service on its own connection and a client connection, both to the private bus; both go
// when it goes, whatever the test's outcome.
struct ServiceOnBus {
    explicit ServiceOnBus(const QString& address)
        : serverName(QStringLiteral("server%1").arg(++s_count))
        , clientName(QStringLiteral("client%1").arg(s_count))
        , server(QDBusConnection::connectToBus(address, serverName))
        , client(QDBusConnection::connectToBus(address, clientName)) {
        registered = server.registerObject(
                         QStringLiteral("/org/freedesktop/Notifications"), &service, QDBusConnection::ExportAllSlots)
            && server.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }
    ~ServiceOnBus() {
        server.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
        server.unregisterObject(QStringLiteral("/org/freedesktop/Notifications"));
        QDBusConnection::disconnectFromBus(serverName);
        QDBusConnection::disconnectFromBus(clientName);
    }

    static inline int s_count = 0;
    QString serverName, clientName;
    QDBusConnection server, client;
    FakeNotifications service;
    bool registered = false;
};

class TestNotification : public QObject {
    Q_OBJECT

private:
    QProcess m_bus;
    QString m_address;

private slots:
    void initTestCase() {
        if (QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty())
            QSKIP("dbus-daemon is not installed");
        m_bus.start(QStringLiteral("dbus-daemon"),
            { QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                QStringLiteral("--print-address=1") });
        QVERIFY(m_bus.waitForStarted());
        QTRY_VERIFY(m_bus.canReadLine());
        m_address = QString::fromUtf8(m_bus.readLine().trimmed());
        QVERIFY(!m_address.isEmpty());
    }

    void cleanupTestCase() {
        m_bus.terminate();
        m_bus.waitForFinished();
    }

    void theListScanEndsWithANotification_data() {
        QTest::addColumn<bool>("twins");
        QTest::newRow("two equal folders") << true;
        QTest::newRow("nothing equal") << false;
    }
    void theListScanEndsWithANotification() {
        QFETCH(bool, twins);
        TempTree tree;
        const QByteArray a = tree.sizedFile("target/A/x.bin", 120000, 'x');
        tree.sizedFile("target/A/y.bin", 110000, 'y');
        tree.sizedFile("target/B/x.bin", 120000, twins ? 'x' : 'w');
        tree.sizedFile("target/B/y.bin", 110000, twins ? 'y' : 'z');

        ServiceOnBus bus(m_address);
        QVERIFY(bus.registered);
        FakeNotifications& service = bus.service;
        {
            AppFixture f;
            f.app->notifier().setConnection(bus.client);
            QAction* scan = AppMenus::itemWithTag(*f.app->window(), 12);
            QVERIFY(scan);
            f.app->validateMenus();
            QVERIFY(!scan->isEnabled()); // nothing to scan yet
            f.app->addDragFile({ tree.path("target") });
            QTRY_VERIFY(scan->isEnabled());
            scan->trigger();
            QVERIFY(f.app->state().isScanRunning);
            QVERIFY(!scan->isEnabled());

            QTRY_COMPARE_WITH_TIMEOUT(service.calls.size(), 1, kScanTimeoutMs);
            const FakeNotifications::Call call = service.calls.first();
            QCOMPARE(call.summary, QStringLiteral("Scan completed"));
            QCOMPARE(call.appName, QStringLiteral("Twinsift"));
            QCOMPARE(call.hints.value(QStringLiteral("sound-name")).toString(), QStringLiteral("message-new-instant"));
            if (twins) {
                const qint64 folderBytes = allocatedSize(a) + allocatedSize(tree.path("target/A/y.bin"));
                QCOMPARE(call.body,
                    QStringLiteral("2 duplicates(%1) found").arg(ByteCountFormatter::decimal(2 * folderBytes)));
                QCOMPARE(f.app->saveResultArray().size(), 1);
                QTRY_VERIFY(!f.app->state().isScanRunning); // cleared a moment after the ending
            } else {
                QCOMPARE(call.body, QStringLiteral("No duplicate files found in selected directory"));
                QVERIFY(f.log.lines().contains(QStringLiteral("Scan completed and no duplicate found")));
                QCOMPARE(f.app->olderItems().bottomStatus, QStringLiteral("Scan completed and no duplicate found"));
                QVERIFY(!f.app->state().isScanRunning);
            }
        }
    }

    void theNotificationWaitsHalfASecond() {
        ServiceOnBus bus(m_address);
        QVERIFY(bus.registered);
        FakeNotifications& service = bus.service;
        DesktopNotifier notifier;
        notifier.setConnection(bus.client);
        QSignalSpy delivered(&notifier, &DesktopNotifier::delivered);
        service.clock.start();
        notifier.notifyLater(QStringLiteral("Title"), QStringLiteral("Sub"), QStringLiteral("Text"));
        QTRY_COMPARE(service.calls.size(), 1);
        QVERIFY2(service.calls.first().atMs >= 450, qPrintable(QString::number(service.calls.first().atMs)));
        QCOMPARE(service.calls.first().body, QStringLiteral("Sub\nText"));
        QTRY_COMPARE(delivered.size(), 1);
        QCOMPARE(delivered.first().first().toUInt(), 42u);
    }

    void withoutAServiceOnlyOneLogLine_data() {
        QTest::addColumn<bool>("busRuns");
        QTest::newRow("bus without the service") << true;
        QTest::newRow("no bus at all") << false;
    }
    void withoutAServiceOnlyOneLogLine() {
        QFETCH(bool, busRuns);
        const QString name = busRuns ? QStringLiteral("lonely") : QStringLiteral("nowhere");
        QDBusConnection client
            = QDBusConnection::connectToBus(busRuns ? m_address : QStringLiteral("unix:path=/nonexistent/bus"), name);
        LogCollector log;
        DesktopNotifier notifier;
        notifier.setConnection(client);
        QSignalSpy failed(&notifier, &DesktopNotifier::failed);
        QSignalSpy delivered(&notifier, &DesktopNotifier::delivered);
        notifier.notify(QStringLiteral("Scan completed"), QString(), QStringLiteral("text"));
        QTRY_COMPARE(failed.size(), 1);
        QTest::qWait(50);
        QCOMPARE(failed.size(), 1);
        QCOMPARE(delivered.size(), 0);
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.lines().first().startsWith(QStringLiteral("notification not shown: ")));
        QDBusConnection::disconnectFromBus(name);
    }
};

QTEST_MAIN(TestNotification)
#include "tst_notification.moc"
