#include "base/PathBytes.h"
#include "review/FileActions.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QtTest>

// Stands in for a file manager on the private bus: records what it is asked to show.
class FakeFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QList<QStringList> shown;
    bool silent = false; // takes calls and never answers, as a hung file manager would

public slots:
    void ShowItems(const QStringList& uris, const QString& startupId, const QDBusMessage& message) {
        Q_UNUSED(startupId);
        shown.append(uris);
        if (silent)
            message.setDelayedReply(true);
    }
};

class TestFileActions : public QObject {
    Q_OBJECT

    QProcess m_daemon;
    QString m_address;
    FakeFileManager m_fileManager;
    QList<QUrl> m_opened;

    std::unique_ptr<FileActions> makeActions(const QDBusConnection& bus) {
        auto actions = std::make_unique<FileActions>(bus);
        actions->openUrl = [this](const QUrl& url) {
            m_opened.append(url);
            return true;
        };
        return actions;
    }

    QDBusConnection server() const { return QDBusConnection(QStringLiteral("server")); }
    QDBusConnection client() const { return QDBusConnection(QStringLiteral("client")); }

private slots:
    void initTestCase() {
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            QSKIP("dbus-daemon is not installed");
        m_daemon.start(daemon, { "--session", "--nofork", "--nopidfile", "--print-address=1" });
        QVERIFY(m_daemon.waitForStarted());
        QTRY_VERIFY(m_daemon.canReadLine());
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
        QVERIFY(QDBusConnection::connectToBus(m_address, QStringLiteral("server")).isConnected());
        QVERIFY(QDBusConnection::connectToBus(m_address, QStringLiteral("client")).isConnected());
        QVERIFY(server().registerObject(
            QStringLiteral("/org/freedesktop/FileManager1"), &m_fileManager, QDBusConnection::ExportAllSlots));
    }

    void cleanupTestCase() {
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));
        QDBusConnection::disconnectFromBus(QStringLiteral("server"));
        if (m_daemon.state() != QProcess::NotRunning) {
            m_daemon.terminate();
            m_daemon.waitForFinished();
        }
    }

    void init() {
        m_fileManager.shown.clear();
        m_fileManager.silent = false;
        m_opened.clear();
    }

    void revealGoesToTheFileManager() {
        QVERIFY(server().registerService(QStringLiteral("org.freedesktop.FileManager1")));
        const QByteArray path("/tmp/a b/caf\xe9 #1.txt");
        auto actions = makeActions(client());
        QSignalSpy revealed(actions.get(), &FileActions::revealed);
        actions->revealInFinder(path);
        QVERIFY(revealed.wait());
        QCOMPARE(revealed.first().at(1).toBool(), true);
        QCOMPARE(
            m_fileManager.shown, (QList<QStringList> { { QStringLiteral("file:///tmp/a%20b/caf%E9%20%231.txt") } }));
        QVERIFY(m_opened.isEmpty());
        QVERIFY(server().unregisterService(QStringLiteral("org.freedesktop.FileManager1")));
    }

    void withoutFileManagerTheFolderOpens_data() {
        QTest::addColumn<bool>("registered");
        QTest::addColumn<bool>("silent");
        QTest::newRow("no service") << false << false;
        QTest::newRow("service never answers") << true << true;
    }

    void withoutFileManagerTheFolderOpens() {
        QFETCH(bool, registered);
        QFETCH(bool, silent);
        m_fileManager.silent = silent;
        if (registered)
            QVERIFY(server().registerService(QStringLiteral("org.freedesktop.FileManager1")));
        const QByteArray path("/tmp/f\xff/x.txt");
        auto actions = makeActions(client());
        QSignalSpy revealed(actions.get(), &FileActions::revealed);
        QElapsedTimer timer;
        timer.start();
        actions->revealInFinder(path);
        // Generous bounds: the machine may be busy (sanitizers, parallel tests); the point is that a
        // silent file manager does not hold the reveal for ever.
        QVERIFY(revealed.wait(FileActions::revealTimeoutMs + 15000));
        QVERIFY(timer.elapsed() < FileActions::revealTimeoutMs + 15000);
        QCOMPARE(revealed.first().at(1).toBool(), false);
        QCOMPARE(revealed.first().at(2).toBool(), true);
        QCOMPARE(m_opened.size(), 1);
        QCOMPARE(m_opened.first().toEncoded(), QByteArray("file:///tmp/f%FF"));
        if (registered)
            QVERIFY(server().unregisterService(QStringLiteral("org.freedesktop.FileManager1")));
    }

    void withoutBusTheFolderOpensAtOnce() {
        auto actions = makeActions(QDBusConnection(QStringLiteral("no such bus")));
        QSignalSpy revealed(actions.get(), &FileActions::revealed);
        actions->revealInFinder("/srv/data/file");
        QCOMPARE(revealed.size(), 1);
        QCOMPARE(m_opened, (QList<QUrl> { QUrl(QStringLiteral("file:///srv/data")) }));
    }

    void openUsesTheExactBytes() {
        auto actions = makeActions(client());
        const QByteArray path("/tmp/\xff\xfe name?.txt");
        QVERIFY(actions->openInExternalDefaultApp(path));
        QCOMPARE(m_opened.size(), 1);
        QCOMPARE(m_opened.first().toEncoded(), PathBytes::fileUrl(path));
        QCOMPARE(m_opened.first().isLocalFile(), true);
    }
};

QTEST_MAIN(TestFileActions)
#include "tst_fileactions.moc"
