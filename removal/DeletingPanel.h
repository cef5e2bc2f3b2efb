#pragma once

#include "detect/GroupDictionary.h"
#include "removal/RemovalReview.h"
#include "removal/congoPanel.h"

#include <QDialog>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <memory>

class QLabel;
class QListView;
class QPushButton;
class RemovalListModel;
class RemovalRowDelegate;
class RemovalWorker;
class StripedProgressBar;

// The removal review: a sheet over the main window listing the chosen files (the selection), each
// with a button that drops it from the list, and "Cancel" / "Remove Selected". "Remove Selected"
// asks for one confirmation that also chooses the action and carries it out on a thread of its own
// (with "n of N" and the item in hand in the sheet; "Cancel" stops it after that item). Only the
// listed files are ever touched. Then the groups and totals are brought up to date once, on another
// thread, and put in place in one step. When everything listed was done the sheet closes; when
// anything was left (by the plan, by the check before acting, by a Cancel) or failed, the sheet
// stays and lists what was done with each item and why the others were left, until "Done".
//
// The sheet ends with the return code -1000; then closed() tells the controller which screen to
// show. One panel is made and kept; later openings only reload the list (loadAllData).
class DeletingPanel : public QDialog {
    Q_OBJECT

public:
    static constexpr int tableTag = 20;
    static constexpr int returnCode = -1000;
    // How often the sheet shows the removal's progress.
    static constexpr int progressIntervalMs = 100;

    DeletingPanel(ScanState& state, Selection& selection, ResultLists& lists,
        QList<FileDictionary>& SelectedFileFolderArray, Prompter& prompter, QWidget* parent = nullptr);
    ~DeletingPanel() override;

    RemovalReview& review() { return m_review; }
    QListView* tableDeletefileList() const { return m_tableDeletefileList; }
    RemovalListModel* listModel() const { return m_model; }
    RemovalRowDelegate* rowDelegate() const { return m_rowDelegate; }
    QPushButton* tDelete() const { return m_tDelete; }
    QPushButton* back() const { return m_back; }
    StripedProgressBar* progressBar() const { return m_progress; }
    QLabel* statusText() const { return m_status; }
    congoPanel* CongoPanelObj() const { return m_CongoPanelObj; }
    bool isRemoving() const { return m_worker != nullptr; }
    // Whether the plan of a long list is still being worked out (Remove Selected waits for it).
    bool isChecking() const { return m_checking; }
    // Lists from this many rows, or results from this many groups, have their plan worked out on
    // another thread.
    static constexpr qsizetype planInBackgroundFrom = 20000;
    // Rows laid out at a time in the list.
    static constexpr int layoutBatch = 10000;
    QLabel* currentItemText() const { return m_current; }
    // What the last removal did with each item it was given: done, or left with the reason (the
    // items a Cancel kept it from reaching say "cancelled").
    const QList<RemovalActions::Outcome>& lastOutcomes() const { return m_lastOutcomes; }
    // Whether the sheet lists what the last removal did, and its button that closes it.
    bool isShowingOutcome() const { return m_showingOutcome; }
    QPushButton* doneButton() const { return m_done; }
    // Whether the groups are being brought up to date after a removal.
    bool isUpdating() const { return m_updating; }

    // Opens the URLs of the completion panel's share menu.
    std::function<bool(const QUrl&)> openUrl;

    void loadAllData();
    // A row's remove button.
    void removefromlist(int row);
    // "Remove Selected": the confirmation, then the chosen action over every listed file.
    void removeSelectedFiles();
    // "Cancel": ends the sheet and hands the decision on; during a removal it stops the removal
    // after the item in hand instead, and the sheet ends when the removal has.
    void closewindow();
    void cancelRemoval();
    // For quitting: stops a removal after the item in hand and waits for it; false when
    // `timeoutMs` passed first.
    bool stopRemoval(int timeoutMs = -1);
    // Opens the completion panel as a sheet over this one (nothing in the removal flow does).
    void congoPanelOpen();
    // Empties the older selection, ends the completion panel and, 0.2 s later, asks the controller
    // to end this sheet (closeDeleteWindowRequested).
    void closeCongoWindow();

signals:
    // The sheet has ended: the controller shows the screen `decision` names.
    void closed(const RemovalReview::CloseDecision& decision);
    void closeDeleteWindowRequested();
    // The completion panel's OK and rescan, after it closed.
    void newScanBackRequested();
    void rescanRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override;

private:
    void finish(const RemovalReview::CloseDecision& decision);
    void removalFinished();
    // The groups a removal leaves, worked out on another thread and put in place when ready.
    void updateGroups();
    void groupsUpdated(RemovalReview::Update update);
    void showOutcome();
    // "Done": the sheet closes once the groups are up to date.
    void closeOutcome();
    // The sheet as it is for a list of chosen files, after a removal listed what it did.
    void leaveOutcome();
    void updateStatus();
    void setRemoving(bool removing);
    // Works out which listed files the removal will leave alone: at once for a short list, on
    // another thread for a long one.
    void checkPlan();

    RemovalReview m_review;
    Selection& m_selection;
    ScanState& m_state;
    QList<FileDictionary>& m_SelectedFileFolderArray;
    Prompter& m_prompter;
    std::unique_ptr<RemovalWorker> m_worker;
    QList<RemovalActions::Outcome> m_lastOutcomes;
    QTimer m_progressTimer;
    QThreadPool m_planPool;
    quint64 m_planGeneration = 0;
    bool m_checking = false;
    RemovalActions::Action m_action = RemovalActions::Action::MoveToTrash;
    bool m_updating = false;
    bool m_showingOutcome = false;
    bool m_closeWhenUpdated = false;
    std::optional<RemovalReview::CloseDecision> m_decision;

    RemovalListModel* m_model;
    RemovalRowDelegate* m_rowDelegate;
    QListView* m_tableDeletefileList;
    QLabel* m_heading;
    QLabel* m_status;
    QLabel* m_current;
    StripedProgressBar* m_progress;
    QPushButton* m_back;
    QPushButton* m_tDelete;
    QPushButton* m_done;
    QPointer<congoPanel> m_CongoPanelObj;
};
