#pragma once

#include "app/MenuRules.h"
#include "app/OlderToolbarItems.h"
#include "detect/GroupDictionary.h"
#include "engine/ScanObserver.h"
#include "engine/ScanState.h"
#include "engine/SettingsStore.h"
#include "removal/RemovalReview.h"
#include "review/ResultLists.h"
#include "review/Selection.h"

#include <QObject>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <memory>

class DeletingPanel;
class DesktopNotifier;
class MainToolbar;
class MainWindow;
class PreferenceWindow;
class Prompter;
class QPushButton;
class ScanDriver;
class mainView;
class progressView;
class resultView;

// The application controller: owns the scan state, the scan driver, the user-defaults store, the
// main window with its three screens, and the one Prompter through which every question is asked.
// Screens reach it as the application's delegate (instance()). It is the scan's observer: the scan
// thread hands over here and the work runs on the interface thread, waiting where the scan waits.
//
// Two numbers say where the user is: `typewindow` (screen 0 setup, 1 scanning, 2 result) and
// `typetoolbar` (toolbar state 0 to 6); they change only through makeWindowFor and makeToolbarItem.
class AppDelegate : public QObject, public ScanObserver {
    Q_OBJECT

public:
    explicit AppDelegate(Prompter& prompter, QObject* parent = nullptr);
    ~AppDelegate() override;

    static AppDelegate* instance();

    // Start-up: the screens join the window (constructor), then the first state is set and the
    // window shown.
    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    // Another start of the program while this one runs: the window comes to the front.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }

    // Window flow.
    void makeWindowFor(int screen);
    void makeToolbarItem(int state);
    void backButtonAction_toolbar();
    void nextButtonAction_toolbar();
    // The observer of "toolBarText": the toolbar text of the current state.
    void setMainToolBarText();

    // Folder scan (the window's part around ScanDriver).
    void StartScan(const QList<QByteArray>& targets);
    void setProgressData();
    void setScanningAnimated();
    void setProgressScanning(double fraction);
    void AfterScanningDone();
    // List scan over `mainArray`.
    void scanStart();
    void AfterScan();
    // Inserts the paths not yet in `mainArray` at `row` (-1: at the end).
    void addDragFile(const QList<QByteArray>& paths, int row = -1);
    // Posts a desktop notification half a second later.
    void setUserNotificationWithTitle(const QString& title, const QString& subTitle, const QString& informativeText);

    // The older pair of views: only their toolbar items' state is kept (see OlderToolbarItems).
    void setViewsFor(const QString& view);
    void SetToolBarBTNFor(const QString& mode);
    void NewScanBack();

    bool validateMenuItem(int tag, bool isSetAsOriginal = false) const;
    // Re-applies the menu rules to every tagged item of the menu bar.
    void validateMenus();

    // Hooks the result screen fills: the resets a new folder scan makes (type filter 10, sort key
    // 0, ascending, the sort menu, the filter buttons, the search text), and the list shown when
    // the user goes on from state 4.
    void resetResultScreenForNewScan();
    void showResultList();
    // The number of chosen files (the toolbar text of state 6).
    qsizetype selectedDuplicateCount() const;

    // The removal review: made on first use and kept, reloaded on later openings, shown as a sheet
    // over the main window. removeSelectedFiles is the next button in state 6.
    void DeleteSelecteditem();
    void removeSelectedFiles();
    // Ends the review sheet with -1000 (after the completion panel closed).
    void closeDeleteWindow();
    // The list scan again, a second after the main view is shown.
    void rescan();
    // Opens web pages: the rating prompt's and the completion panel's. The desktop's URL handler by
    // default; tests put their own here before the review is first opened.
    std::function<bool(const QUrl&)> openUrl;

    // State.
    ScanState& state() { return m_state; }
    const ScanState& state() const { return m_state; }
    ScanDriver& driver() { return *m_driver; }
    Selection& selection() { return m_selection; }
    ResultLists& resultLists() { return m_lists; }
    // The older list's selection, read by the review's first confirmation texts and the completion
    // panel.
    QList<FileDictionary>& SelectedFileFolderArray() { return m_SelectedFileFolderArray; }
    DeletingPanel* deleteingWindow() const { return m_deleteingWindow.get(); }
    SettingsStore& settingsStore() { return m_settingsStore; }
    Prompter& prompter() { return m_prompter; }
    DesktopNotifier& notifier() { return *m_notifier; }
    int typewindow() const { return m_typewindow; }
    int typetoolbar() const { return m_typetoolbar; }
    bool isMainScreen() const { return m_isMainScreen; }
    int selRowRightClick() const { return m_selRowRightClick; }
    const QList<GroupDictionary>& saveResultArray() const { return m_saveResultArray; }
    const OlderToolbarItems& olderItems() const { return m_older; }
    bool isRefreshStatusTimerActive() const { return m_refreshStatusTimer.isActive(); }
    bool isScanTimerActive() const { return m_scanTimer.isActive(); }
    // The static counter of the "Scanning." animation (0, 1 or 2); never reset.
    static int scanningAnimationCounter();

    // Screens and controls.
    MainWindow* window() const { return m_window.get(); }
    PreferenceWindow* setting() const { return m_setting.get(); }
    MainToolbar* toolbar() const;
    QWidget* containtView() const;
    mainView* mainViewObj() const { return m_mainViewObj; }
    progressView* progressViewObj() const { return m_progressViewObj; }
    resultView* resultViewObj() const { return m_resultViewObj; }
    QPushButton* backButton() const;
    QPushButton* nextButton() const;

public slots:
    void Findfile();
    void AddFolder_Menubar();
    void Scan_Menubar();
    void NewScan_Menubar();
    void minimizeToogle();
    // Shows the preferences window, filled from the current settings.
    void showPreferences();
    // The menu's way to the removal review (the rule of tag 22 decides).
    void ShowSelected();
    // A small rating prompt: asks whether the user enjoys the program; yes opens its web page.
    void rateAppApptentive();

signals:
    // Posted at the end of every makeToolbarItem.
    void toolBarText();

protected:
    // ScanObserver: called on the scan thread.
    void folderScanWillStart() override;
    void detectionWillStart() override;
    void detectionDidFinish() override;
    void afterScanningDone() override;
    void listScanWillStart() override;
    void listScanWillWalk() override;
    void setFlo(int flo) override;
    void listGroupingDidFinish() override;
    void afterScan() override;
    void runScanAddedFolderLater(const std::function<void()>& run) override;

private:
    // Runs `work` on the interface thread: in place when already there, else queued, waiting for
    // it when `wait` is set.
    void onInterfaceThread(std::function<void()> work, bool wait);
    MenuRules::State menuState() const;
    // Where the review sheet returns to when it has ended.
    void returnFromReview(const RemovalReview::CloseDecision& decision);
    void buildMenus();

    Prompter& m_prompter;
    SettingsStore m_settingsStore;
    ScanState m_state;
    Selection m_selection;
    ResultLists m_lists { m_state, m_selection };
    // Until the older list's selection is kept here, it stays empty.
    QList<FileDictionary> m_SelectedFileFolderArray;
    std::unique_ptr<ScanDriver> m_driver;
    std::unique_ptr<DesktopNotifier> m_notifier;
    std::unique_ptr<MainWindow> m_window;
    // The preferences window `setting`: made at launch, shown on demand.
    std::unique_ptr<PreferenceWindow> m_setting;
    // The removal review `deleteingWindow`: made on first use, a sheet of the main window.
    std::unique_ptr<DeletingPanel> m_deleteingWindow;
    mainView* m_mainViewObj = nullptr;
    progressView* m_progressViewObj = nullptr;
    resultView* m_resultViewObj = nullptr;

    int m_typewindow = 0;
    int m_typetoolbar = 0;
    bool m_isMainScreen = true;
    int m_selRowRightClick = -1;
    int m_ReloadRow = 0;
    int m_ReloadRowMain = 0;
    std::atomic<int> m_flo { 0 };
    QTimer m_refreshStatusTimer;
    QTimer m_scanTimer;
    OlderToolbarItems m_older;
    QList<GroupDictionary> m_saveResultArray;
};
