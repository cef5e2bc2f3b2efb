#pragma once

#include "app/MenuRules.h"
#include "app/OlderToolbarItems.h"
#include "app/ScanListReview.h"
#include "base/SettingsStore.h"
#include "detect/GroupDictionary.h"
#include "engine/ScanObserver.h"
#include "engine/ScanState.h"
#include "removal/RemovalReview.h"
#include "review/ListModel.h"
#include "review/ListSelection.h"
#include "review/Prompter.h"
#include "review/ResultLists.h"
#include "review/Selection.h"

#include <QObject>
#include <QSet>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <memory>

class DeletingPanel;
class DesktopNotifier;
class FileActions;
class MainToolbar;
class MainWindow;
class OlderPages;
class PreferenceWindow;
class PreviewWindow;
class QLineEdit;
class QMenu;
class QPushButton;
class ResultScreen;
class ScanDriver;
class StatusWindow;
class mainScreen;
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
    // Posts a desktop notification half a second later.
    void setUserNotificationWithTitle(const QString& title, const QString& subTitle, const QString& informativeText);

    // The scan-list pages (the list scan's and the photo-library scan's own main and result pages),
    // shown in the window in place of the three screens. `setViewsFor` shows the result page for
    // "Result" and the main page for anything else; `SetToolBarBTNFor` sets their toolbar for
    // "Pscan" (a scan runs), "Cscan" (a result is shown) or "main".
    void setViewsFor(const QString& view);
    void SetToolBarBTNFor(const QString& mode);
    bool isOlderViewShown() const;
    // Leaves the pages for the screen the window showed before them, as it was.
    void leaveOlderViews();
    // Empties the scan list, its result and its selection, and goes back to the folder scan's setup
    // screen.
    void NewScanBack();
    // Inserts the paths not yet in `mainArray` at `row` (-1: at the end), unless a scan runs.
    void addDragFile(const QList<QByteArray>& paths, int row = -1);
    // Takes the row out of `mainArray`, unless a scan runs.
    void removeRowFromMain(int row);
    // `_showDuplicate`: shows the result page when the last list scan found groups.
    void showDuplicatelist();
    // The status line under the pages and the enabled `_Remove`, from the scan list's selection.
    void setBottomStatus();
    // Opens the status popover against its button, unless the status line reads the add hint.
    void showStatusWindow();

    // The scan list's result page.
    void SortItemList(int index);
    // Shows the groups of the chosen type that match the search field's text.
    void FilterItemList();
    void FilterItemListFromSearchField();
    // The type list's row `row` became the current one.
    void chooseTypeRow(int row);
    // The group list's row `row` became the current one (`ReloadRow`).
    void chooseGroupRow(int row);
    void SegmentKeepAction(int segment);
    // The check box of the current group's file `index`; answers whether it is on afterwards.
    bool addInSelectedDuplicateList(qsizetype index);
    void keepNewestAction();
    void keepOldestAction();
    void keepNoneAction();
    void DeselectAllFromDuplicateList();
    // Pops up `select_menu` at `Select_Duplicate_`, then refreshes the lists and the status line.
    void AddAllInDuplicateList();
    // The context menu of a file row (`RightClickOnItem`), at the row `row` of the current group.
    void RightClickOnItem(int row, const QPoint& globalPos);
    // The actions of that menu, on the right-clicked file (`selRowRightClick`).
    void QuickLookInIB();
    void revealInFinderIB();
    void openInExternalDefaultAppIB();
    void SetAsOriginal();
    // Quick Look: shows the file's preview window, or closes it when it is open.
    void QuickLookIn(const QByteArray& path);

    // The photo-library scan.
    void ScanIphotoPictures();
    // The choice alert's pop-up action: the texts of "iPhoto Library" (0) or "New Photo App
    // Library" (1).
    static void chageAlertText(Prompter::Alert& alert);
    // The remembered library (a path under "iPhotoURL" stands in for a bookmark) into
    // `iPhotoFolderURL`; answers whether it can be read.
    bool makeBookMarkURLAccessible();
    void performiPhotoScan();
    void openPanalForIphoto();
    void openPanalForPhotoAndVideosForOtherLibrary();
    // The library panel's delegate: the Pictures folder, its parent and grandparent, and items named
    // "iPhoto Library" (whatever their extension).
    bool panelShouldEnableURL(const QByteArray& path) const;
    const QList<QByteArray>& iPhotoFolderpath() const { return m_iPhotoFolderpath; }
    const QByteArray& iPhotoFolderURL() const { return m_iPhotoFolderURL; }
    // The user's Pictures folder, symbolic links resolved.
    static QByteArray picturesFolder();

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
    QList<FileDictionary>& SelectedFileFolderArray() { return m_listSelection.SelectedFileFolderArray; }
    DeletingPanel* deleteingWindow() const { return m_deleteingWindow.get(); }
    // Before the program quits: during a removal, asks whether to stop it after the item in hand
    // and, if so, waits for that item. False keeps the program running.
    bool mayQuit();
    // Edit ▸ Undo Last Removal: puts back what the last removal recorded in the journal did, after
    // asking, and says what came back and what could not.
    void undoLastRemoval();
    SettingsStore& settingsStore() { return m_settingsStore; }
    Prompter& prompter() { return m_prompter; }
    DesktopNotifier& notifier() { return *m_notifier; }
    int typewindow() const { return m_typewindow; }
    int typetoolbar() const { return m_typetoolbar; }
    bool isMainScreen() const { return m_isMainScreen; }
    int selRowRightClick() const { return m_selRowRightClick; }
    const QList<GroupDictionary>& saveResultArray() const { return m_listModel.saveResultArray; }
    const QList<FileDictionary>& SelectedFileFolderArray() const { return m_listSelection.SelectedFileFolderArray; }
    qsizetype ReloadRow() const { return m_listSelection.ReloadRow; }
    int ReloadRowMain() const { return m_ReloadRowMain; }
    ListSelection& listSelection() { return m_listSelection; }
    ListModel& listModel() { return m_listModel; }
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
    OlderPages* olderPages() const { return m_olderPages; }
    mainScreen* mainScreenObj() const { return m_mainScreenObj; }
    ResultScreen* ResultScreenObj() const { return m_ResultScreenObj; }
    StatusWindow* StatusWindowObj() const { return m_StatusWindowObj; }
    PreviewWindow* previewWindow() const { return m_previewWindow; }
    FileActions& fileActions();
    // The context menu of the last right-click on a file row.
    QMenu* rightClickMenu() const { return m_rightClickMenu; }

public slots:
    void Findfile();
    void AddFolder_Menubar();
    void Scan_Menubar();
    void ScaniPhoto_Menubar();
    // Shows the scan list's main page.
    void ShowScanList_Menubar();
    void NewScan_Menubar();
    void SelectAllDuplicate();
    void DeselectAll_Menubar();
    // `_Remove`: the removal review of the scan list's chosen copies; when it has closed, the scan
    // list's result takes what is left (scanListReviewDidFinish).
    void openRemovalReviewFromScanList();
    void scanListReviewDidFinish(const ScanListReview::Outcome& outcome);
    ScanListReview* scanListReview() const { return m_scanListReview.get(); }
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
    // The search field of the result screen shown: the scan list's on its result page.
    QLineEdit* searchField() const;
    bool rightClickedIsOriginal() const;
    void buildOlderViews();
    // Draws the scan-list pages' toolbar and status strip from `m_older`, and the menus.
    void applyOlderItems();
    // Takes the scan list's lists into the result page again: rebuilt after a search, a type or a
    // new result, only redrawn after a change of the selection.
    void reloadOlderResult(bool rebuild);
    // The files of the current group (`ReloadRow`) under the group list.
    void showCurrentGroup();
    QSet<QByteArray> selectedUrls() const;
    // After a change of the scan list's selection: the rows, the type figures and the status line.
    void selectionDidChange();
    // Closes the removal review when it is open.
    void closeRemovalReview();

    Prompter& m_prompter;
    SettingsStore m_settingsStore;
    ScanState m_state;
    Selection m_selection;
    ResultLists m_lists { m_state, m_selection };
    std::unique_ptr<ScanDriver> m_driver;
    std::unique_ptr<DesktopNotifier> m_notifier;
    std::unique_ptr<MainWindow> m_window;
    // The settings the preferences window shows and edits (never those of a running scan).
    ScanSettings m_preferences;
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
    int m_ReloadRowMain = 0;
    std::atomic<int> m_flo { 0 };
    QTimer m_refreshStatusTimer;
    QTimer m_scanTimer;

    // The scan-list pages and their model.
    OlderToolbarItems m_older;
    ListSelection m_listSelection;
    ListModel m_listModel;
    OlderPages* m_olderPages = nullptr;
    mainScreen* m_mainScreenObj = nullptr;
    ResultScreen* m_ResultScreenObj = nullptr;
    StatusWindow* m_StatusWindowObj = nullptr;
    QMenu* m_rightClickMenu = nullptr;
    PreviewWindow* m_previewWindow = nullptr;
    std::unique_ptr<FileActions> m_fileActions;
    std::unique_ptr<ScanListReview> m_scanListReview;
    // A list scan runs (from its start to its ending), so the live figures go to the pages.
    bool m_listScanRunning = false;

    // The photo-library scan.
    QList<QByteArray> m_iPhotoFolderpath;
    QByteArray m_iPhotoFolderURL;
};
