#include "base/ScanSettings.h"
#include "base/SettingsStore.h"
#include "support/TempTree.h"

#include <QDir>
#include <QFile>
#include <QtTest>

class TestSettings : public QObject {
    Q_OBJECT

private slots:
    void firstLoadWritesEveryDefault() {
        TempEnvironment environment;
        {
            SettingsStore store;
            ScanSettings settings;
            getAppSetting(settings, store);
            QCOMPARE(settings.nub, qint64(102400));
            QCOMPARE(settings.checkSubDir, QStringLiteral("y"));
            QCOMPARE(settings.ignoreFileTypeList.size(), 29);
            QCOMPARE(settings.ignoreFileTypeList.first(), QStringLiteral("h"));
            QCOMPARE(settings.ignoreFileTypeList.last(), QStringLiteral("sqlite"));
            const QByteArray home = QFile::encodeName(QDir::homePath());
            QCOMPARE(settings.ignoreFolderList, (QList<QByteArray> { home + "/.local", home + "/.cache" }));
        }
        // A fresh reader of the file sees all six keys with their types.
        QVERIFY(SettingsStore::defaultFilePath().startsWith(QString::fromUtf8(environment.configHome())));
        SettingsStore reread;
        for (const char* key :
            { "checkSubDir", "checkHdn", "checkPKG", "SkipLessThen", "ignoreFileTypeList", "ignoreFolderList" })
            QVERIFY2(reread.contains(QLatin1String(key)), key);
        QCOMPARE(reread.doubleValue(QStringLiteral("SkipLessThen")), 38.318217);
        QCOMPARE(loadFolderList(reread).size(), 2);
        QCOMPARE(reread.stringList(QStringLiteral("ignoreFileTypeList")).size(), 29);
    }

    void storedValuesAreTakenAsTheyAre() {
        TempEnvironment environment;
        {
            SettingsStore store;
            store.setValue(QStringLiteral("checkSubDir"), QStringLiteral("N"));
            store.setDouble(QStringLiteral("SkipLessThen"), 0.5);
            store.setValue(QStringLiteral("ignoreFileTypeList"), QStringList());
            store.setValue(QStringLiteral("ignoreFolderList"), QStringList { QStringLiteral("/data/a, b") });
        }
        SettingsStore store;
        ScanSettings settings;
        getAppSetting(settings, store);
        QCOMPARE(settings.checkSubDir, QStringLiteral("N")); // only an exact "n" means no
        QCOMPARE(settings.nub, qint64(0));
        QVERIFY(settings.ignoreFileTypeList.isEmpty()); // an emptied list is not refilled
        // A list written as text by an earlier version is read as its UTF-8 bytes.
        QCOMPARE(settings.ignoreFolderList, QList<QByteArray> { "/data/a, b" });
    }

    // Ignored folders go through the INI file byte for byte, and ignored types are kept in their
    // plain lower-case form, however they were typed or stored.
    void storedListsComeBackExactly() {
        TempEnvironment environment;
        const QList<QByteArray> folders { "/data/caf\xe9", "/data/\xff\xfe/x", "/data/a, b", "/data/\"q\"=\\%41",
            QByteArray("/data/\xc3\xa9t\xc3\xa9") };
        {
            SettingsStore store;
            storeFolderList(store, folders);
            store.setValue(QStringLiteral("ignoreFileTypeList"), QStringList { ".PDF", "GZ", " ..Tar ", "jpg" });
        }
        SettingsStore store;
        ScanSettings settings;
        getAppSetting(settings, store);
        QCOMPARE(settings.ignoreFolderList, folders);
        QCOMPARE(settings.ignoreFileTypeList, (QStringList { "pdf", "gz", "tar", "jpg" }));

        storeFolderList(store, { "/only/one" });
        store.synchronize();
        QCOMPARE(loadFolderList(SettingsStore()), QList<QByteArray> { "/only/one" });
        storeFolderList(store, {});
        store.synchronize();
        QVERIFY(loadFolderList(SettingsStore()).isEmpty());
    }

    void sliderMapping_data() {
        QTest::addColumn<double>("position");
        QTest::addColumn<qint64>("bytes");
        QTest::newRow("left end") << 0.0 << qint64(0);
        QTest::newRow("below one") << 0.5 << qint64(0);
        QTest::newRow("s=7") << 0.875 << qint64(1);
        QTest::newRow("one") << 1.0 << qint64(4);
        QTest::newRow("just under five") << 4.99 << qint64(4);
        QTest::newRow("five") << 5.0 << qint64(1024);
        QTest::newRow("ten") << 10.0 << qint64(2048);
        QTest::newRow("twenty") << 20.0 << qint64(8192);
        QTest::newRow("thirty") << 30.0 << qint64(32768);
        QTest::newRow("forty") << 40.0 << qint64(131072);
        QTest::newRow("fifty") << 50.0 << qint64(524288);
        QTest::newRow("sixty") << 60.0 << qint64(2097152);
        QTest::newRow("default") << 38.318217 << qint64(102400);
        QTest::newRow("default as stored float") << double(float(38.318217)) << qint64(102400);
    }
    void sliderMapping() {
        QFETCH(double, position);
        QFETCH(qint64, bytes);
        QCOMPARE(getSizeFromslidervalue(position), bytes);
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
