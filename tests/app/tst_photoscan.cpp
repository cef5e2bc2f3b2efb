// The photo-library scan: the choice alert and its pop-up, the remembered library, the library
// panel's delegate, another library, and the list scan that ends on the scan list's result page.
#include "AppFixture.h"

#include "app/AppMenus.h"
#include "app/MenuRules.h"
#include "base/PathBytes.h"
#include "review/OlderGroupModel.h"
#include "review/OlderTypeModel.h"
#include "review/ResultScreen.h"

#include <QAction>
#include <QFile>
#include <QtTest>

namespace {

// The user's Pictures folder is a link to real/Photos, named in the user-dirs file of the test's
// configuration folder.
struct PhotoFixture : AppFixture {
    TempTree tree;
    QByteArray pictures;

    PhotoFixture() {
        pictures = tree.folder("real/Photos");
        tree.folder("home");
        tree.symlink("home/Pictures", pictures);
        QFile dirs(QString::fromUtf8(environment.configHome() + "/user-dirs.dirs"));
        if (dirs.open(QIODevice::WriteOnly))
            dirs.write("XDG_PICTURES_DIR=\"" + tree.path("home/Pictures") + "\"\n");
    }

    // A library with two equal pictures, two equal videos, two equal texts (never recorded) and two
    // equal pictures below the minimum size.
    QByteArray library(const QByteArray& relative) {
        const QByteArray root = tree.folder(relative);
        tree.sizedFile(relative + "/Masters/a.jpg", 120000, 'a');
        tree.sizedFile(relative + "/Masters/2019/b.jpg", 120000, 'a');
        tree.sizedFile(relative + "/Masters/c.png", 120000, 'c');
        tree.sizedFile(relative + "/v1.mp4", 130000, 'v');
        tree.sizedFile(relative + "/Imports/v2.mp4", 130000, 'v');
        tree.sizedFile(relative + "/notes/t1.txt", 120000, 't');
        tree.sizedFile(relative + "/notes/t2.txt", 120000, 't');
        tree.sizedFile(relative + "/small/s1.jpg", 1000, 's');
        tree.sizedFile(relative + "/small/s2.jpg", 1000, 's');
        return root;
    }

    QStringList groupNames() const {
        QStringList names;
        for (const GroupDictionary& group : app->saveResultArray()) {
            QStringList members;
            for (const FileDictionary& file : group.SameFileList)
                members.append(PathBytes::display(PathBytes::lastPathComponent(file.url)));
            members.sort();
            names.append(members.join(QLatin1Char('+')));
        }
        names.sort();
        return names;
    }

    void waitForTheResult() {
        QTRY_VERIFY_WITH_TIMEOUT(app->isOlderViewShown() && !app->isMainScreen(), kScanTimeoutMs);
        QTRY_VERIFY(!app->state().isScanRunning);
    }
};

const QStringList kFound { "a.jpg+b.jpg", "v1.mp4+v2.mp4" };

} // namespace

class TestPhotoScan : public QObject {
    Q_OBJECT

private slots:
    void theLibraryIsChosenOnceAndRemembered() {
        PhotoFixture f;
        const QByteArray library = f.library("real/Photos/iPhoto Library.photolibrary");
        const QByteArray listed = f.tree.folder("listed");
        f.app->addDragFile({ listed });

        QAction* item = AppMenus::itemWithTag(*f.app->window(), MenuRules::ScaniPhoto);
        QVERIFY(item);
        f.app->validateMenus();
        QVERIFY(item->isEnabled());
        f.prompter.expectAlert(Prompter::FirstButton);
        f.prompter.expectPanel(Prompter::OK, { library });
        item->trigger();

        QCOMPARE(f.prompter.alertsShown.size(), 1);
        const Prompter::Alert& alert = f.prompter.alertsShown.first();
        QCOMPARE(alert.messageText, QStringLiteral("Select iPhoto Library"));
        QCOMPARE(
            alert.informativeText, QStringLiteral("This option will scan all duplicates photos from iPhoto Library."));
        QCOMPARE(alert.buttons, (QStringList { "Select", "Close" }));
        QCOMPARE(alert.popUpItems, (QStringList { "iPhoto Library", "New Photo App Library" }));
        QCOMPARE(f.prompter.panelsShown.size(), 1);
        const Prompter::OpenPanel& panel = f.prompter.panelsShown.first();
        QCOMPARE(panel.title, QStringLiteral("Select Pictures Folder"));
        QCOMPARE(panel.prompt, QStringLiteral("Choose"));
        QVERIFY(panel.canChooseFiles && panel.canChooseDirectories && !panel.allowsMultipleSelection);
        QCOMPARE(panel.directory, f.pictures);
        QVERIFY(panel.shouldEnable);
        // The links of the Pictures folder are resolved.
        QCOMPARE(f.app->iPhotoFolderpath(),
            (QList<QByteArray> { f.pictures, f.tree.path("real"), PathBytes::normalized(f.tree.root(), "/") }));

        // Remembered at once, on disk.
        QCOMPARE(SettingsStore().bytes(QStringLiteral("iPhotoURL")), library);
        QVERIFY(f.app->state().photoScan);
        f.waitForTheResult();
        QCOMPARE(f.groupNames(), kFound);
        QCOMPARE(f.app->ResultScreenObj()->typeModel()->types(), (QStringList { "All", "Photo", "Media" }));
        // The photo scan walks the library alone: the list's own targets are gone.
        QVERIFY(f.app->state().mainArray.isEmpty());

        // The next choice of the library scans it at once; it joins the list again, and its paths
        // fold into one entry each.
        f.prompter.expectAlert(Prompter::FirstButton);
        f.app->ScanIphotoPictures();
        QVERIFY(f.app->state().isScanRunning);
        QCOMPARE(f.prompter.panelsShown.size(), 1);
        QCOMPARE(f.app->state().PhotoDir, (QList<QByteArray> { library, library }));
        f.waitForTheResult();
        QCOMPARE(f.groupNames(), kFound);
        QVERIFY(f.prompter.allAnswered());
    }

    void theLibraryPanelEnablesOnlyItsPlaces_data() {
        QTest::addColumn<QByteArray>("relative");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("Pictures folder") << QByteArray("real/Photos") << true;
        QTest::newRow("its parent") << QByteArray("real") << true;
        QTest::newRow("its grandparent") << QByteArray() << true;
        QTest::newRow("the link to it") << QByteArray("home/Pictures") << false;
        QTest::newRow("a folder inside") << QByteArray("real/Photos/Holiday") << false;
        QTest::newRow("iPhoto Library") << QByteArray("anywhere/iPhoto Library") << true;
        QTest::newRow("iPhoto Library with an extension")
            << QByteArray("x/iPhoto Library.migratedphotolibrary") << true;
        QTest::newRow("another name") << QByteArray("x/iPhoto Library 2") << false;
        QTest::newRow("a longer name") << QByteArray("x/My iPhoto Library.photolibrary") << false;
        QTest::newRow("lower case") << QByteArray("x/iphoto library") << false;
    }
    void theLibraryPanelEnablesOnlyItsPlaces() {
        QFETCH(QByteArray, relative);
        QFETCH(bool, enabled);
        PhotoFixture f;
        f.prompter.expectAlert(Prompter::FirstButton);
        f.prompter.expectPanel(Prompter::Cancel);
        f.app->ScanIphotoPictures();
        QCOMPARE(f.prompter.panelsShown.size(), 1);
        const QByteArray path = relative.isEmpty() ? f.tree.root() : f.tree.path(relative);
        QCOMPARE(f.prompter.panelsShown.first().shouldEnable(path), enabled);
        QCOMPARE(f.app->panelShouldEnableURL(path), enabled);
        // Cancel remembers and scans nothing.
        QVERIFY(!f.app->state().isScanRunning);
        QVERIFY(!SettingsStore().contains(QStringLiteral("iPhotoURL")));
    }

    void anotherLibraryIsAnyFolderAndNotRemembered() {
        PhotoFixture f;
        const QByteArray other = f.library("elsewhere/Camera Roll");
        // "Close" does nothing.
        f.prompter.expectAlert(Prompter::SecondButton);
        f.app->ScanIphotoPictures();
        QVERIFY(f.prompter.panelsShown.isEmpty());

        f.prompter.expectAlert(Prompter::FirstButton, false, 1);
        f.prompter.expectPanel(Prompter::OK, { other });
        f.app->ScanIphotoPictures();
        const Prompter::Alert& alert = f.prompter.alertsShown.last();
        QCOMPARE(alert.messageText, QStringLiteral("Select any New Photo Library"));
        QCOMPARE(alert.informativeText,
            QStringLiteral("This option will scan all duplicates photos from selected Library."));
        const Prompter::OpenPanel& panel = f.prompter.panelsShown.last();
        QVERIFY(!panel.shouldEnable);
        QCOMPARE(panel.title, QStringLiteral("Select Pictures Folder"));
        QCOMPARE(panel.prompt, QStringLiteral("Choose"));
        QVERIFY(!panel.allowsMultipleSelection);
        QCOMPARE(panel.directory, f.pictures);
        QCOMPARE(f.app->state().PhotoDir, QList<QByteArray> { other });
        // The scan starts a moment after the panel.
        QVERIFY(!f.app->state().isScanRunning);
        QTRY_VERIFY(f.app->state().isScanRunning);
        f.waitForTheResult();
        QCOMPARE(f.groupNames(), kFound);
        QVERIFY(!SettingsStore().contains(QStringLiteral("iPhotoURL")));

        // The pop-up's texts follow its item both ways.
        Prompter::Alert texts;
        texts.popUpItems = alert.popUpItems;
        texts.popUpIndex = 1;
        AppDelegate::chageAlertText(texts);
        QCOMPARE(texts.messageText, QStringLiteral("Select any New Photo Library"));
        texts.popUpIndex = 0;
        AppDelegate::chageAlertText(texts);
        QCOMPARE(texts.messageText, QStringLiteral("Select iPhoto Library"));
        QCOMPARE(
            texts.informativeText, QStringLiteral("This option will scan all duplicates photos from iPhoto Library."));
    }

    void anUnreadableLibraryIsNotScanned() {
        PhotoFixture f;
        const QByteArray gone = f.tree.path("gone/iPhoto Library");
        f.app->settingsStore().setBytes(QStringLiteral("iPhotoURL"), gone);
        // The stored library cannot be read: the panel is shown again, and what it gives is not
        // there either.
        f.prompter.expectAlert(Prompter::FirstButton);
        f.prompter.expectPanel(Prompter::OK, { gone });
        f.app->ScanIphotoPictures();
        QCOMPARE(f.prompter.panelsShown.size(), 1);
        QCOMPARE(f.log.count(QStringLiteral("not availble")), 1);
        QVERIFY(!f.app->makeBookMarkURLAccessible());
        f.app->performiPhotoScan();
        QCOMPARE(f.log.count(QStringLiteral("not availble")), 2);
        QVERIFY(!f.app->state().isScanRunning);
        QVERIFY(f.app->state().PhotoDir.isEmpty());
        QVERIFY(!f.app->isOlderViewShown());
    }
};

QTEST_MAIN(TestPhotoScan)
#include "tst_photoscan.moc"
