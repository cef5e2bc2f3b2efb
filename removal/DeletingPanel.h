#pragma once

#include "detect/GroupDictionary.h"
#include "removal/RemovalReview.h"
#include "removal/congoPanel.h"

#include <QDialog>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <memory>

class QLabel;
class QListView;
class QPushButton;
class RemovalListModel;
class RemovalRowDelegate;
class RemovalRun;
class StripedProgressBar;

// The removal review: a sheet over the main window listing the chosen files (the selection), each
// with a button that drops it from the list, and "Cancel" / "Remove Selected". "Remove Selected"
// asks for one confirmation that also chooses the action, carries it out file after file (a few
// files per turn of the event loop, with progress in the sheet, so the window stays alive), brings
// the groups and totals up to date and closes. Only the listed files are ever touched.
//
// The sheet ends with the return code -1000; then closed() tells the controller which screen to
// show. One panel is made and kept; later openings only reload the list (loadAllData).
class DeletingPanel : public QDialog {
    Q_OBJECT

public:
    static constexpr int tableTag = 20;
    static constexpr int returnCode = -1000;
    // Files handled in one turn of the event loop at most, and the time one turn may take.
    static constexpr int filesPerStep = 64;
    static constexpr int stepBudgetMs = 30;

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
    bool isRemoving() const { return m_run != nullptr; }

    // Opens the URLs of the completion panel's share menu.
    std::function<bool(const QUrl&)> openUrl;

    void loadAllData();
    // A row's remove button.
    void removefromlist(int row);
    // "Remove Selected": the confirmation, then the chosen action over every listed file.
    void removeSelectedFiles();
    // "Cancel", and the end of a removal: ends the sheet and hands the decision on.
    void closewindow();
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
    void reject() override;

private:
    void finish(const RemovalReview::CloseDecision& decision);
    void runSomeFiles();
    void updateStatus();
    void setRemoving(bool removing);

    RemovalReview m_review;
    Selection& m_selection;
    ScanState& m_state;
    QList<FileDictionary>& m_SelectedFileFolderArray;
    Prompter& m_prompter;
    std::unique_ptr<RemovalRun> m_run;
    QTimer m_stepTimer;

    RemovalListModel* m_model;
    RemovalRowDelegate* m_rowDelegate;
    QListView* m_tableDeletefileList;
    QLabel* m_heading;
    QLabel* m_status;
    StripedProgressBar* m_progress;
    QPushButton* m_back;
    QPushButton* m_tDelete;
    QPointer<congoPanel> m_CongoPanelObj;
};
