#include "app/AppDelegate.h"

#include "app/PreferenceWindow.h"
#include "base/PathBytes.h"
#include "removal/DeletingPanel.h"
#include "removal/Journal.h"
#include "removal/Undo.h"

#include "app/AppMenus.h"
#include "app/DesktopNotifier.h"
#include "app/MainToolbar.h"
#include "app/MainWindow.h"
#include "app/mainScreen.h"
#include "app/mainView.h"
#include "app/progressView.h"
#include "base/DigestCache.h"
#include "base/Log.h"
#include "controls/StripedProgressBar.h"
#include "engine/ScanDriver.h"
#include "review/FileActions.h"
#include "review/StatusTexts.h"
#include "review/resultView.h"

#include <QAction>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QThread>

namespace {

AppDelegate* s_instance = nullptr;

constexpr int kRefreshIntervalMs = 10;
constexpr int kAnimationIntervalMs = 500;

} // namespace

AppDelegate::AppDelegate(Prompter& prompter, QObject* parent)
    : QObject(parent)
    , m_prompter(prompter)
    , m_driver(std::make_unique<ScanDriver>(m_state, *this))
    , m_notifier(std::make_unique<DesktopNotifier>())
    , m_window(std::make_unique<MainWindow>())
    , m_listSelection(m_state)
    , m_listModel(m_state, m_listSelection) {
    s_instance = this;
    m_state.digestCacheFolder = DigestCache::defaultFolder();
    openUrl = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
    // Each scan takes its own copy of the stored settings when it starts, after any write of the
    // preferences window has landed; the window keeps a copy of its own.
    m_driver->loadSettings = [this](ScanSettings& settings) {
        if (m_setting)
            m_setting->waitForSetobj();
        getAppSetting(settings, m_settingsStore);
    };
    m_refreshStatusTimer.setInterval(kRefreshIntervalMs);
    connect(&m_refreshStatusTimer, &QTimer::timeout, this, &AppDelegate::setProgressData);
    m_scanTimer.setInterval(kAnimationIntervalMs);
    connect(&m_scanTimer, &QTimer::timeout, this, &AppDelegate::setScanningAnimated);
    applicationWillFinishLaunching();
}

AppDelegate::~AppDelegate() {
    // A scan cannot be stopped, and its thread may be waiting for this one: serve it until it ends.
    while (!m_driver->waitForScanThread(10))
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    // Child windows of the main window go first.
    m_deleteingWindow.reset();
    m_scanListReview.reset();
    m_setting.reset();
    m_window.reset();
    if (s_instance == this)
        s_instance = nullptr;
}

AppDelegate* AppDelegate::instance() {
    return s_instance;
}

MainToolbar* AppDelegate::toolbar() const {
    return m_window->toolbar();
}

QWidget* AppDelegate::containtView() const {
    return m_window->containtView();
}

QPushButton* AppDelegate::backButton() const {
    return toolbar()->backButton();
}

QPushButton* AppDelegate::nextButton() const {
    return toolbar()->nextButton();
}

void AppDelegate::onInterfaceThread(std::function<void()> work, bool wait) {
    if (QThread::currentThread() == thread()) {
        work();
        return;
    }
    QMetaObject::invokeMethod(this, std::move(work), wait ? Qt::BlockingQueuedConnection : Qt::QueuedConnection);
}

// Quitting

bool AppDelegate::mayQuit() {
    DeletingPanel* removal = m_deleteingWindow.get();
    if (!removal || !removal->isRemoving())
        return true;
    Prompter::Alert alert;
    alert.messageText = QStringLiteral("A removal is in progress.");
    alert.informativeText = QStringLiteral("Quit after the item in hand? The items not reached yet stay as they are.");
    alert.buttons = { QStringLiteral("Quit"), QStringLiteral("Continue") };
    if (m_prompter.runAlert(alert).response != Prompter::FirstButton)
        return false;
    removal->stopRemoval();
    return true;
}

void AppDelegate::undoLastRemoval() {
    const QList<Journal::Removal> removals = Journal::list();
    const Journal::Removal* last = nullptr;
    for (auto it = removals.crbegin(); it != removals.crend() && !last; ++it) {
        if (it->hasDone() && !it->undone())
            last = &*it;
    }
    Prompter::Alert alert;
    if (!last) {
        alert.messageText = QStringLiteral("Nothing to undo.");
        alert.informativeText = QStringLiteral("No removal recorded in the journal is left to put back.");
        m_prompter.runAlert(alert);
        return;
    }
    qsizetype deleted = 0;
    for (const Journal::Entry& entry : last->entries)
        deleted += entry.state == Journal::Entry::State::Done && entry.action == QLatin1String("delete");
    alert.messageText = QStringLiteral("Undo the last removal?");
    alert.informativeText = QStringLiteral("%1 of %2 will be put back as they were.")
                                .arg(last->doneCount() - deleted)
                                .arg(last->doneCount() == 1 ? QStringLiteral("1 item")
                                                            : QStringLiteral("%1 items").arg(last->doneCount()));
    if (deleted)
        alert.informativeText += QStringLiteral(" %1 deleted for good cannot be put back.").arg(deleted);
    alert.buttons = { QStringLiteral("Undo"), QStringLiteral("Cancel") };
    if (m_prompter.runAlert(alert).response != Prompter::FirstButton)
        return;
    const QList<Undo::Result> results = Undo::undo(*last);
    qsizetype restored = 0;
    QStringList reasons;
    for (const Undo::Result& result : results) {
        if (result.restored) {
            ++restored;
        } else if (reasons.size() < 5) {
            reasons.append(PathBytes::display(result.path) + QStringLiteral(": ") + result.reason);
        }
    }
    Prompter::Alert done;
    done.messageText = QStringLiteral("%1 of %2 put back.").arg(restored).arg(results.size());
    done.informativeText = reasons.isEmpty() ? QStringLiteral("Scan again to see them among the duplicates.")
                                             : reasons.join(QLatin1Char('\n'));
    m_prompter.runAlert(done);
}

// Start-up

void AppDelegate::applicationWillFinishLaunching() {
    m_mainViewObj = new mainView(*this);
    m_progressViewObj = new progressView;
    m_resultViewObj = new resultView(m_lists, m_selection);
    m_window->addScreen(m_mainViewObj);
    m_window->addScreen(m_progressViewObj);
    m_window->addScreen(m_resultViewObj);
    buildOlderViews();
    // Tab follows the window from the top: the toolbar's buttons, then the screen shown (hidden
    // screens are passed over).
    QList<QWidget*> tabOrder { backButton(), nextButton() };
    tabOrder << m_mainViewObj->tabOrder() << m_resultViewObj->tabOrder();
    for (qsizetype i = 1; i < tabOrder.size(); ++i)
        QWidget::setTabOrder(tabOrder[i - 1], tabOrder[i]);
    AppMenus::build(*m_window, *this);
    m_window->mayClose = [this] { return mayQuit(); };

    // Every change of the selection moves the toolbar between states 5 and 6.
    connect(
        m_resultViewObj, &resultView::selectionChanged, this, [this] { makeToolbarItem(m_selection.toolbarState()); });
    connect(backButton(), &QPushButton::clicked, this, &AppDelegate::backButtonAction_toolbar);
    connect(nextButton(), &QPushButton::clicked, this, &AppDelegate::nextButtonAction_toolbar);
}

void AppDelegate::applicationDidFinishLaunching() {
    connect(this, &AppDelegate::toolBarText, this, &AppDelegate::setMainToolBarText, Qt::UniqueConnection);
    resetResultScreenForNewScan();
    m_typewindow = 0;
    m_typetoolbar = 0;
    makeWindowFor(0);
    makeToolbarItem(0);
    getAppSetting(m_preferences, m_settingsStore);
    if (!m_setting)
        m_setting = std::make_unique<PreferenceWindow>(m_preferences, m_settingsStore, m_prompter, m_window.get());
    m_window->show();
}

bool AppDelegate::applicationShouldHandleReopen(bool) {
    if (m_window->isMinimized())
        m_window->showNormal();
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
    return true;
}

// Window flow

void AppDelegate::makeWindowFor(int screen) {
    QWidget* const screens[] = { m_mainViewObj, m_progressViewObj, m_resultViewObj };
    m_typewindow = screen;
    if (screen < 0 || screen > 2) {
        Log::line(QStringLiteral("Not Found"));
        return;
    }
    m_isMainScreen = screen == 0;
    m_window->showScreen(screens[screen], screen);
    // The keyboard starts where the work of the screen is: the folder list (Add Folders while it
    // is empty) and the group list.
    if (screen == 0)
        m_window->keepFocusIn(m_mainViewObj,
            m_mainViewObj->folderList().isEmpty() ? static_cast<QWidget*>(m_mainViewObj->addButton())
                                                  : m_mainViewObj->mainScanList());
    else if (screen == 2)
        m_window->keepFocusIn(m_resultViewObj, m_resultViewObj->duplicateListMain());
    validateMenus();
}

void AppDelegate::makeToolbarItem(int state) {
    m_typetoolbar = state;
    if (!toolbar()->applyState(state))
        Log::line(QStringLiteral("Not Found"));
    // When a scan has ended the button that goes on takes the focus: Space (or Return, after
    // duplicates were found) presses it.
    if (state == 3)
        backButton()->setFocus(Qt::OtherFocusReason);
    else if (state == 4)
        nextButton()->setFocus(Qt::OtherFocusReason);
    emit toolBarText();
    validateMenus();
}

void AppDelegate::setMainToolBarText() {
    const int state = m_typetoolbar;
    if (state < 0 || state > 6) {
        Log::line(QStringLiteral("Not Found"));
        setScanningAnimated();
        return;
    }
    toolbar()->setBusyIndicatorShown(StatusTexts::toolBarBusyIndicatorShown(state));
    if (state == 2 || state == 4) {
        // No text of its own: the scan's status line shows (cleared until the animation's first
        // step when a scan is about to start).
        if (state == 2 && !m_state.isScanRunning)
            toolbar()->setToolbarText(QString());
        setScanningAnimated();
        return;
    }
    toolbar()->setToolbarText(StatusTexts::mainToolBarText(
        state, m_state.totalDuplicateCount, m_state.wastedSpaceDuplicates, selectedDuplicateCount()));
}

void AppDelegate::backButtonAction_toolbar() {
    if (m_typetoolbar != 3 && m_typetoolbar != 5 && m_typetoolbar != 6)
        return;
    m_mainViewObj->emptyFolderList();
    m_progressViewObj->resetFigures();
    makeWindowFor(0);
    makeToolbarItem(0);
}

void AppDelegate::nextButtonAction_toolbar() {
    switch (m_typetoolbar) {
    case 1: {
        if (m_state.isScanRunning) {
            Log::line(QStringLiteral("scan running"));
            return;
        }
        const QList<QByteArray> folders = m_mainViewObj->folderList();
        makeWindowFor(1);
        makeToolbarItem(2);
        StartScan(folders);
        return;
    }
    case 2:
        makeWindowFor(1);
        makeToolbarItem(2);
        return;
    case 4:
        m_resultViewObj->searchALL()->setFixedWidth(100);
        showResultList();
        makeWindowFor(2);
        makeToolbarItem(5);
        return;
    case 6:
        removeSelectedFiles();
        return;
    default:
        Log::line(QStringLiteral("error"));
        return;
    }
}

// Menus

MenuRules::State AppDelegate::menuState() const {
    MenuRules::State state;
    state.isMainScreen = m_isMainScreen;
    // No list scan starts, and the scan list is not left, while any scan runs: both scans share the
    // scan thread and the figures.
    const bool running = m_state.isScanRunning;
    state.resetNewScanEnabled = m_older.ResetNewScanBTN.enabled && !running;
    state.addEnabled = m_older.Add.enabled;
    state.scanEnabled = m_older.scan.enabled && !running;
    state.iPhotoEnabled = m_older.iPhoto.enabled && !running;
    state.removeEnabled = m_older.Remove.enabled;
    state.selectDuplicateTitle = m_older.selectDuplicateTitle;
    state.searchEnabled = searchField()->isEnabled();
    state.selRowRightClick = m_selRowRightClick;
    state.rightClickedIsOriginal = rightClickedIsOriginal();
    return state;
}

bool AppDelegate::validateMenuItem(int tag, bool isSetAsOriginal) const {
    return MenuRules::validateMenuItem(tag, menuState(), isSetAsOriginal);
}

void AppDelegate::validateMenus() {
    const MenuRules::State state = menuState();
    const QList<QAction*> actions = m_window->findChildren<QAction*>();
    for (QAction* action : actions) {
        const QVariant tag = action->property("tag");
        if (tag.isValid())
            action->setEnabled(MenuRules::validateMenuItem(tag.toInt(), state));
    }
    if (QAction* fullScreen = AppMenus::fullScreenItem(*m_window))
        fullScreen->setEnabled(m_window->isFullScreenAllowed());
}

void AppDelegate::Findfile() {
    if (!validateMenuItem(MenuRules::Find))
        return;
    searchField()->setFocus(Qt::ShortcutFocusReason);
    searchField()->selectAll();
}

void AppDelegate::AddFolder_Menubar() {
    if (!validateMenuItem(MenuRules::AddFolder))
        return;
    if (isOlderViewShown())
        m_mainScreenObj->openPanelForAddFolder();
    else
        m_mainViewObj->openPanelForAddFolder(MenuRules::AddFolder);
}

void AppDelegate::Scan_Menubar() {
    if (!validateMenuItem(MenuRules::Scan))
        return;
    m_state.photoScan = false;
    scanStart();
}

void AppDelegate::NewScan_Menubar() {
    if (validateMenuItem(MenuRules::NewScan))
        NewScanBack();
}

void AppDelegate::minimizeToogle() {
    if (m_window->isMinimized())
        m_window->showNormal();
    else
        m_window->showMinimized();
}

void AppDelegate::showPreferences() {
    if (m_setting)
        m_setting->waitForSetobj();
    getAppSetting(m_preferences, m_settingsStore);
    if (!m_setting)
        m_setting = std::make_unique<PreferenceWindow>(m_preferences, m_settingsStore, m_prompter, m_window.get());
    m_setting->windowDidLoad();
    m_setting->show();
    m_setting->raise();
    m_setting->activateWindow();
}
