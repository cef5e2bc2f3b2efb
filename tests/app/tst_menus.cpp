#include "AppFixture.h"

#include "app/AppMenus.h"
#include "app/MainWindow.h"
#include "app/MenuRules.h"
#include "app/PreferenceWindow.h"
#include "review/resultView.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

namespace {

const QList<int> kTags { 10, 11, 12, 13, 20, 21, 23, 100, 200, 300 };

QList<int> enabledTags(AppFixture& f) {
    f.app->validateMenus();
    QList<int> enabled;
    for (int tag : kTags) {
        QAction* action = AppMenus::itemWithTag(*f.app->window(), tag);
        if (action && action->isEnabled())
            enabled.append(tag);
    }
    return enabled;
}

} // namespace

class TestMenus : public QObject {
    Q_OBJECT

private slots:
    // Reopened, Preferences shows what is stored, not what the program started with: the size
    // slider, and the protected folders added meanwhile.
    void preferencesReopenWithTheStoredValues() {
        AppFixture f;
        f.app->showPreferences();
        PreferenceWindow* window = f.app->setting();
        const int moved = window->sizeSlider->value() + 37;
        window->sizeSlider->setValue(moved);
        window->close();
        f.app->showPreferences();
        QCOMPARE(f.app->setting()->sizeSlider->value(), moved);
        window->close();
    }

    // Ctrl+Q quits from the Preferences window too.
    void quitFromPreferences() {
        AppFixture f;
        f.app->window()->show();
        f.app->showPreferences();
        QVERIFY(QTest::qWaitForWindowExposed(f.app->setting()));
        QSignalSpy closed(f.app->window(), &MainWindow::closed);
        QTest::keyClick(f.app->setting(), Qt::Key_Q, Qt::ControlModifier);
        QTRY_COMPARE(closed.count(), 1);
    }

    // Edit > Undo Last Removal says so when the journal holds nothing to undo.
    void undoWithNothingToUndo() {
        AppFixture f;
        f.prompter.expectAlert(Prompter::FirstButton);
        f.app->undoLastRemoval();
        QVERIFY(f.prompter.allAnswered());
        QCOMPARE(f.prompter.alertsShown.last().messageText, QStringLiteral("Nothing to undo."));
    }

    void theWindowFollowsTheRules_data() {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<QList<int>>("enabled");
        QTest::addColumn<bool>("fullScreen");
        QTest::newRow("setup") << "setup" << QList<int> { 11, 13, 100, 200, 300 } << false;
        QTest::newRow("scanning screen") << "scanning" << QList<int> { 13, 21, 100, 200, 300 } << false;
        QTest::newRow("result screen") << "result" << QList<int> { 13, 21, 23, 100, 200, 300 } << true;
        QTest::newRow("older list filled") << "older list" << QList<int> { 11, 12, 13, 100, 200, 300 } << false;
        // No second scan starts while one runs.
        QTest::newRow("a scan runs") << "running" << QList<int> { 11, 100, 200, 300 } << false;
    }
    void theWindowFollowsTheRules() {
        QFETCH(QString, situation);
        QFETCH(QList<int>, enabled);
        QFETCH(bool, fullScreen);
        AppFixture f;
        if (situation == QLatin1String("scanning")) {
            f.app->makeWindowFor(1);
            f.app->makeToolbarItem(2);
        } else if (situation == QLatin1String("result")) {
            f.app->makeToolbarItem(4);
            f.app->nextButtonAction_toolbar();
        } else if (situation == QLatin1String("older list") || situation == QLatin1String("running")) {
            f.app->addDragFile({ "/nonexistent/a" });
            QTRY_VERIFY(f.app->olderItems().scan.enabled);
            f.app->state().isScanRunning = situation == QLatin1String("running");
        }
        QCOMPARE(enabledTags(f), enabled);
        QCOMPARE(AppMenus::fullScreenItem(*f.app->window())->isEnabled(), fullScreen);
        f.app->state().isScanRunning = false;
    }

    void keyEquivalentsReachTheirActions() {
        TempTree tree;
        tree.folder("one");
        AppFixture f;
        QVERIFY(QTest::qWaitForWindowActive(f.app->window()));
        f.prompter.expectPanel(Prompter::OK, { tree.path("one") });
        QTest::keyClick(f.app->window(), Qt::Key_O, Qt::ControlModifier);
        QCOMPARE(f.prompter.panelsShown.size(), 1);
        QTRY_COMPARE(f.app->typetoolbar(), 1);
        QTest::keyClick(f.app->window(), Qt::Key_Return);
        QCOMPARE(f.app->typewindow(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 3, kScanTimeoutMs);
        // Return starts nothing outside state 1, and the add panel belongs to the setup screen.
        QTest::keyClick(f.app->window(), Qt::Key_Return);
        QTest::keyClick(f.app->window(), Qt::Key_O, Qt::ControlModifier);
        QCOMPARE(f.app->typetoolbar(), 3);
        QCOMPARE(f.prompter.panelsShown.size(), 1);
        QVERIFY(AppMenus::itemWithTag(*f.app->window(), MenuRules::Preferences)->shortcut()
            == QKeySequence(Qt::CTRL | Qt::Key_Comma));
        AppMenus::itemWithTag(*f.app->window(), MenuRules::Preferences)->trigger();
        QVERIFY(f.app->setting()->isVisible());
        f.app->setting()->close();
        f.app->backButtonAction_toolbar();
        f.app->makeToolbarItem(4);
        f.app->nextButtonAction_toolbar();
        QTest::keyClick(f.app->window(), Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(f.app->resultViewObj()->searchALL()->hasFocus());
        // Return belongs to the focused field outside state 1.
        QSignalSpy returned(f.app->resultViewObj()->searchALL(), &QLineEdit::returnPressed);
        QTest::keyClick(f.app->resultViewObj()->searchALL(), Qt::Key_Return);
        QCOMPARE(returned.size(), 1);
    }

    void rulesByTag_data() {
        QTest::addColumn<int>("tag");
        QTest::addColumn<bool>("mainScreen");
        QTest::addColumn<QString>("selectTitle");
        QTest::addColumn<int>("rightClicked");
        QTest::addColumn<bool>("setAsOriginal");
        QTest::addColumn<bool>("isOriginal");
        QTest::addColumn<bool>("enabled");
        const QString all = QStringLiteral("Select All");
        const QString none = QStringLiteral("Deselect All");
        QTest::newRow("20 needs a right-clicked row") << 20 << false << all << -1 << false << false << false;
        QTest::newRow("20 with one") << 20 << false << all << 0 << false << false << true;
        QTest::newRow("20 not on the setup screen") << 20 << true << all << 0 << false << false << false;
        QTest::newRow("20 once all are selected") << 20 << false << none << 0 << false << false << false;
        QTest::newRow("21 once all are selected") << 21 << false << none << -1 << false << false << true;
        QTest::newRow("21 before") << 21 << false << all << -1 << false << false << false;
        QTest::newRow("22 remove disabled") << 22 << false << all << -1 << false << false << false;
        QTest::newRow("untagged without right-click") << 0 << false << all << -1 << false << false << false;
        QTest::newRow("untagged after right-click") << 0 << false << all << 2 << false << false << true;
        QTest::newRow("set as original, not the original") << 0 << false << all << 2 << true << false << true;
        QTest::newRow("set as original, already it") << 0 << false << all << 2 << true << true << false;
        QTest::newRow("13 follows the photo button") << 13 << true << all << -1 << false << false << true;
    }
    void rulesByTag() {
        QFETCH(int, tag);
        QFETCH(bool, mainScreen);
        QFETCH(QString, selectTitle);
        QFETCH(int, rightClicked);
        QFETCH(bool, setAsOriginal);
        QFETCH(bool, isOriginal);
        QFETCH(bool, enabled);
        MenuRules::State state;
        state.isMainScreen = mainScreen;
        state.selectDuplicateTitle = selectTitle;
        state.selRowRightClick = rightClicked;
        state.rightClickedIsOriginal = isOriginal;
        QCOMPARE(MenuRules::validateMenuItem(tag, state, setAsOriginal), enabled);
    }
};

QTEST_MAIN(TestMenus)
#include "tst_menus.moc"
