#include "AppFixture.h"

#include "app/MainWindow.h"
#include "app/PreferenceWindow.h"
#include "app/SingleInstance.h"
#include "app/progressView.h"
#include "base/ScanSettings.h"
#include "base/SettingsStore.h"
#include "controls/StripedProgressBar.h"
#include "review/StatusTexts.h"

#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QtTest>

namespace {

struct Figures {
    QString scanned, count, size;
};

Figures figuresOf(const AppFixture& f) {
    const progressView* screen = f.app->progressViewObj();
    return { screen->scannCount()->text(), screen->duplicateCount()->text(), screen->duplicateSize()->text() };
}

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT

private:
    // Adds two folders through the add panel and starts the scan with the next button.
    static void addAndScan(AppFixture& f, const QList<QByteArray>& folders) {
        f.prompter.expectPanel(Prompter::OK, folders);
        QTest::mouseClick(f.setup()->addButton(), Qt::LeftButton);
        QTRY_COMPARE(f.setup()->folderList(), folders);
        QCOMPARE(f.app->typetoolbar(), 1);
        QVERIFY(f.app->nextButton()->isEnabled());
        QTest::mouseClick(f.app->nextButton(), Qt::LeftButton);
    }

private slots:
    // Each scan takes the stored settings as it starts and keeps them: Preferences changed during a
    // scan wait for the next one, and an ignored folder whose name is not UTF-8 stays unscanned.
    void eachScanTakesTheStoredSettingsAsItStarts() {
        TempTree tree;
        tree.sizedFile("data/caf\xe9/x.bin", 150000, 'x');
        tree.sizedFile("data/twin/x.bin", 150000, 'x');
        AppFixture f;
        f.app->showPreferences();
        PreferenceWindow* window = f.app->setting();
        f.prompter.expectPanel(Prompter::OK, { tree.path("data/caf\xe9") });
        window->Add_Folder();
        QTRY_VERIFY(loadFolderList(SettingsStore()).contains(tree.path("data/caf\xe9")));

        addAndScan(f, { tree.path("data") });
        QVERIFY(f.app->state().isScanRunning);
        const qint64 minimum = f.app->state().settings.nub;
        window->sizeSlider->setValue(window->sizeSlider->value() + 40);
        QCOMPARE(f.app->state().settings.nub, minimum);
        // The only copy of x.bin is in the ignored folder: nothing is found.
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 3, kScanTimeoutMs);
        QCOMPARE(f.app->state().settings.nub, minimum);
        QVERIFY(f.app->state().settings.ignoreFolderList.contains(tree.path("data/caf\xe9")));

        f.app->backButtonAction_toolbar();
        addAndScan(f, { tree.path("data") });
        QVERIFY(f.app->state().settings.nub > minimum);
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 3, kScanTimeoutMs);
        window->close();
    }

    void aScanGoesThroughEveryStateAndASecondStartsClean() {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        TempTree tree;
        const QByteArray a = tree.sizedFile("one/a.bin", 150000, 'x');
        tree.sizedFile("two/b.bin", 150000, 'x');
        tree.sizedFile("one/c.bin", 160000, 'y');
        // Enough small items for the scanned count to need a group separator.
        for (int i = 0; i < 1100; ++i)
            tree.file("two/many/" + QByteArray::number(i), QByteArray::number(i));
        const QList<QByteArray> folders { tree.path("one"), tree.path("two") };

        AppFixture f;
        QCOMPARE(f.app->typewindow(), 0);
        QCOMPARE(f.app->typetoolbar(), 0);
        QCOMPARE(f.toolbarText(), QStringLiteral("Select folders to scan."));
        QVERIFY(!f.toolbar()->isBusyIndicatorShown());
        QCOMPARE(f.app->nextButton()->text(), QStringLiteral("Start Scan"));
        QVERIFY(!f.app->nextButton()->isEnabled());
        QVERIFY(f.app->backButton()->isHidden());

        addAndScan(f, folders);
        const Prompter::OpenPanel& panel = f.prompter.panelsShown.first();
        QCOMPARE(panel.prompt, QStringLiteral("Add"));
        QCOMPARE(panel.message, QStringLiteral("Add folders for scannig"));
        QVERIFY(!panel.canChooseFiles && panel.canChooseDirectories);
        QVERIFY(panel.allowsMultipleSelection && panel.canCreateDirectories);

        // Scanning: the ending needs this thread, so the state is still 2 here.
        QCOMPARE(f.app->typewindow(), 1);
        QCOMPARE(f.app->typetoolbar(), 2);
        QVERIFY(f.app->state().isScanRunning);
        QVERIFY(f.app->isRefreshStatusTimerActive() && f.app->isScanTimerActive());
        QVERIFY(f.toolbar()->isBusyIndicatorShown());
        QVERIFY(f.toolbar()->progressIndicator()->isIndeterminate());
        QCOMPARE(MainToolbar::imageName(f.app->nextButton()), QStringLiteral("btn_next_step_enable"));
        QVERIFY(!f.app->nextButton()->isEnabled());

        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 4, kScanTimeoutMs);
        QCOMPARE(f.toolbarText(), QStringLiteral("Done Scanning"));
        QCOMPARE(f.toolbar()->textLeftSpace(), 8.0);
        QVERIFY(!f.app->state().isScanRunning);
        QVERIFY(!f.app->isRefreshStatusTimerActive() && !f.app->isScanTimerActive());
        QCOMPARE(f.toolbar()->progressIndicator()->value(), 1.0);
        QVERIFY(!f.toolbar()->progressIndicator()->isIndeterminate());
        QVERIFY(f.app->nextButton()->isEnabled());
        QVERIFY(f.app->backButton()->isHidden());

        const Figures first = figuresOf(f);
        QCOMPARE(first.count, QStringLiteral("2"));
        QCOMPARE(first.size, StatusTexts::convertNumberToString(2 * allocatedSize(a)));
        QVERIFY2(first.scanned.contains(QLatin1Char('.')), qPrintable(first.scanned));
        QCOMPARE(first.scanned, QLocale().toString(f.app->state().totalCount.load()));
        QTRY_COMPARE(f.app->window()->size(), QSize(540, 240));

        QTest::mouseClick(f.app->nextButton(), Qt::LeftButton);
        QCOMPARE(f.app->typewindow(), 2);
        QCOMPARE(f.app->typetoolbar(), 5);
        QCOMPARE(f.toolbarText(),
            QStringLiteral("2 Duplicates. Total: %1 \n Select duplicates for removal.").arg(first.size));
        QVERIFY(f.toolbar()->textProgress()->text().contains(QStringLiteral("<br>")));
        QVERIFY(!f.toolbar()->isBusyIndicatorShown());
        QCOMPARE(MainToolbar::imageName(f.app->backButton()), QStringLiteral("btn_new_scan"));
        QCOMPARE(MainToolbar::imageName(f.app->nextButton()), QStringLiteral("btn_move_to_trash"));
        QVERIFY(!f.app->nextButton()->isEnabled());
        QTRY_COMPARE(f.app->window()->size(), QSize(900, 682));

        QTest::mouseClick(f.app->backButton(), Qt::LeftButton);
        QCOMPARE(f.app->typewindow(), 0);
        QCOMPARE(f.app->typetoolbar(), 0);
        QVERIFY(f.setup()->folderList().isEmpty());
        QCOMPARE(figuresOf(f).scanned, QStringLiteral("0"));
        QCOMPARE(figuresOf(f).size, QStringLiteral("0 Byte"));
        QTRY_COMPARE(f.app->window()->size(), QSize(540, 500));

        addAndScan(f, folders);
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 4, kScanTimeoutMs);
        const Figures second = figuresOf(f);
        QCOMPARE(second.scanned, first.scanned);
        QCOMPARE(second.count, first.count);
        QCOMPARE(second.size, first.size);
        QLocale::setDefault(QLocale::c());
    }

    void theAnimationCyclesThroughThreeTexts() {
        AppFixture f;
        f.app->state().isScanRunning = true;
        QStringList seen;
        for (int i = 0; i < 4; ++i) {
            f.app->setScanningAnimated();
            seen.append(f.toolbarText());
            QCOMPARE(f.toolbar()->textLeftSpace(), 106.0);
        }
        f.app->state().isScanRunning = false;
        // Four steps from wherever the last scan left the counter: the cycle wraps once.
        QCOMPARE(seen[3], seen[0]);
        QCOMPARE(QSet<QString>(seen.cbegin(), seen.cend()),
            (QSet<QString> {
                QStringLiteral("Scanning."), QStringLiteral("Scanning.."), QStringLiteral("Scanning...") }));
        const QString last = f.toolbarText();
        f.app->setScanningAnimated(); // not running: nothing changes
        QCOMPARE(f.toolbarText(), last);
    }

    void nothingFoundEndsInStateThree() {
        TempTree tree;
        tree.sizedFile("solo/a.bin", 150000, 'a');
        AppFixture f;
        addAndScan(f, { tree.path("solo") });
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 3, kScanTimeoutMs);
        QCOMPARE(f.toolbarText(), QStringLiteral("No duplicates found."));
        QVERIFY(f.toolbar()->isBusyIndicatorShown());
        QCOMPARE(MainToolbar::imageName(f.app->backButton()), QStringLiteral("btn_start_again"));
        QVERIFY(f.app->nextButton()->isHidden());
        QCOMPARE(f.app->progressViewObj()->duplicateSize()->text(), QStringLiteral("0 Byte"));

        f.app->nextButtonAction_toolbar();
        QCOMPARE(f.log.count(QStringLiteral("error")), 1);
        QCOMPARE(f.app->typetoolbar(), 3);
        QTest::mouseClick(f.app->backButton(), Qt::LeftButton);
        QCOMPARE(f.app->typetoolbar(), 0);
        QCOMPARE(f.app->typewindow(), 0);
    }

    void buttonsWithoutAnActionOnlyLog_data() {
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("nextLogsError");
        QTest::addColumn<bool>("backResets");
        QTest::newRow("0 empty setup") << 0 << true << false;
        QTest::newRow("2 scanning") << 2 << false << false;
        QTest::newRow("4 groups not shown yet") << 4 << false << false;
        QTest::newRow("5 nothing selected") << 5 << true << true;
    }
    void buttonsWithoutAnActionOnlyLog() {
        QFETCH(int, state);
        QFETCH(bool, nextLogsError);
        QFETCH(bool, backResets);
        AppFixture f;
        f.app->makeToolbarItem(state);
        if (state != 4) { // next in state 4 goes on to the results
            f.app->nextButtonAction_toolbar();
            QCOMPARE(f.log.count(QStringLiteral("error")), nextLogsError ? 1 : 0);
            QCOMPARE(f.app->typetoolbar(), state);
            QVERIFY(!f.app->state().isScanRunning);
        }
        f.app->makeWindowFor(1);
        f.app->backButtonAction_toolbar();
        QCOMPARE(f.app->typetoolbar(), backResets ? 0 : state);
        QCOMPARE(f.app->typewindow(), backResets ? 0 : 1);
    }

    void unknownScreensAndStatesChangeNothing() {
        AppFixture f;
        const QString text = f.toolbarText();
        f.app->makeToolbarItem(9);
        QCOMPARE(f.log.count(QStringLiteral("Not Found")), 2); // the buttons and the toolbar text
        QCOMPARE(f.toolbarText(), text);
        QCOMPARE(f.app->nextButton()->text(), QStringLiteral("Start Scan"));
        f.app->makeWindowFor(5);
        QCOMPARE(f.log.count(QStringLiteral("Not Found")), 3);
        QVERIFY(f.app->mainViewObj()->isVisible());
    }

    void aSecondStartBringsTheWindowForward() {
        const QString name = QStringLiteral("twinsift-test-%1").arg(QCoreApplication::applicationPid());
        SingleInstance first(name);
        QVERIFY(!first.handOverToRunning()); // nobody runs yet
        QVERIFY(first.listen());
        AppFixture f;
        connect(&first, &SingleInstance::reopenRequested, f.app.get(),
            [&f] { f.app->applicationShouldHandleReopen(true); });
        f.app->window()->showMinimized();
        QTRY_VERIFY(f.app->window()->isMinimized());
        SingleInstance second(name);
        QVERIFY(second.handOverToRunning());
        QTRY_VERIFY(!f.app->window()->isMinimized());
        QVERIFY(f.app->window()->isVisible());
    }

    void screensKeepTheCentreAndTheirLimits_data() {
        QTest::addColumn<int>("screen");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("minimum");
        QTest::addColumn<bool>("resizable");
        QTest::newRow("scanning") << 1 << QSize(540, 240) << QSize(540, 240) << false;
        QTest::newRow("result") << 2 << QSize(900, 682) << QSize(900, 620) << true;
        QTest::newRow("setup") << 0 << QSize(540, 500) << QSize(540, 500) << false;
    }
    void screensKeepTheCentreAndTheirLimits() {
        QFETCH(int, screen);
        QFETCH(QSize, size);
        QFETCH(QSize, minimum);
        QFETCH(bool, resizable);
        AppFixture f;
        MainWindow* window = f.app->window();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        window->move(600, 500);
        const QPoint centre = window->geometry().center();
        f.app->makeWindowFor(screen == 0 ? 2 : 0);
        f.app->makeWindowFor(screen);
        QTRY_COMPARE(window->size(), size);
        QVERIFY((window->geometry().center() - centre).manhattanLength() <= 2);
        QCOMPARE(window->minimumSize(), minimum);
        QCOMPARE(window->maximumSize() != minimum, resizable);
        QCOMPARE(window->isFullScreenAllowed(), resizable);
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
