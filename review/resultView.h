#pragma once

#include "detect/duplicates.h"
#include "review/FileSet.h"

#include <QThreadPool>
#include <QTimer>
#include <QWidget>
#include <memory>
#include <optional>

class FileActions;
class FileListModel;
class FileRowDelegate;
class GroupListModel;
class GroupRowDelegate;
class PreviewView;
class PreviewWindow;
class QAction;
class QCheckBox;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QPushButton;
class QSplitter;
class ResultLists;
class Selection;

// The result screen: the groups of the last scan in one table (tag 2) and the files of the current
// group in another (tag 3), side by side in `DisplayView`, with the type filters, the sort pop-up,
// the search field, the automatic choice, the per-group keep segments and check box, and a preview
// of the current file. Both tables are models over the shared lists, drawn row by row, so results
// of any size scroll and sort without delay.
//
// The screen changes the shared ResultLists and Selection and reports every change of the
// selection through selectionChanged(); the controller moves the toolbar to state 5 or 6 then.
class resultView : public QWidget {
    Q_OBJECT

public:
    static constexpr int groupTableTag = 2;
    static constexpr int fileTableTag = 3;
    // Keep segments: all, the newest, the oldest.
    enum Segment { KeepAll = 0, KeepNewest = 1, KeepOldest = 2 };

    resultView(ResultLists& lists, Selection& selection, QWidget* parent = nullptr);
    ~resultView() override;

    // Controls, for the controller and for tests.
    QLineEdit* searchALL() const { return m_searchfieldDuplicate; }
    QListView* duplicateListMain() const { return m_duplicateListMain; }
    QListView* sameList() const { return m_sameList; }
    GroupListModel* groupModel() const { return m_groupModel; }
    FileListModel* fileModel() const { return m_fileModel; }
    FileRowDelegate* fileDelegate() const { return m_fileDelegate; }
    QPushButton* sortingButton() const { return m_sortingButton; }
    QAction* sortItem(quint64 tag) const;
    QPushButton* filterButton(quint64 tag) const;
    const QList<QPushButton*>& filterButtons() const { return m_filterButtons; }
    QPushButton* autoSelectBTN() const { return m_autoSelectBTN; }
    QAction* autoSelectItem(const QString& title) const;
    QPushButton* keepSegment(int segment) const { return m_keepSegments.value(segment); }
    QCheckBox* checkBoxAllDuplicates() const { return m_checkBoxAllDuplicates; }
    QPushButton* deselectAllBtn() const { return m_deselectAllBtn; }
    QLabel* notfoundText() const { return m_notfoundText; }
    QSplitter* DisplayView() const { return m_DisplayView; }
    PreviewView* quicklookview() const { return m_quicklookview; }
    PreviewWindow* previewWindow() const { return m_previewWindow; }
    FileActions* fileActions();
    QLabel* selectedFileImage() const { return m_selectedFileImage; }
    QLabel* selectedFileName() const { return m_selectedFileName; }
    QLabel* detailsAll() const { return m_detailsAll; }
    // The controls Tab goes through, top to bottom and left to right as they stand on screen.
    QList<QWidget*> tabOrder() const;

    qsizetype selectedMain() const;
    qsizetype rowSubSave() const { return m_rowSubSave; }
    qsizetype countSelected() const { return m_countSelected; }
    DuplicateGroupPtr currentGroup() const;
    DuplicateFilePtr currentFile() const;

    // A fresh result: sorted by name, ascending, all types, no search text, nothing listed.
    void resetForNewScan();
    // Rebuilds the displayed list, reloads the group table and makes its first row current; for a
    // large result the table follows when the list is ready (see ResultLists::rebuildDisplayList).
    void getDiplayListAndReloadMainList();
    // The group table after the displayed list was rebuilt elsewhere.
    void reloadMainList();

    void sortDuplicatesFor(quint64 tag);
    void setSortMenuItemOnstate();
    void filterUsingTypeAction(QPushButton* sender);
    void searchFilterAction();
    // The automatic choice: with a title (the pop-up) keeps the newest or the oldest of every
    // displayed group; without (deselect all) only empties the selection. For a large list the
    // choice is worked out on another thread and put in place at once when it is ready.
    void AutoSelectAction(const std::optional<QString>& chosenTitle);
    // Waits for a choice still being worked out and puts it in place: whatever reads or changes the
    // selection next comes after it.
    void settleChoice();
    bool isChoosing() const { return m_pendingChoice != nullptr; }
    void keepSegmentAction(int segment);
    void checkBoxActionMain();
    void checkBoxActionFromTableRow(qsizetype index);
    void setStateOfCheckBox();

    void displayChanges();
    void reloadRow();
    // The current group row and file row, as a click on them makes them.
    void chooseGroupRow(qsizetype row);
    void chooseFileRow(qsizetype row);

    void revealFileInFinder(qsizetype index);
    void openInExternalDefaultApp(qsizetype index);
    // The Quick Look command: opens the preview window on the file, or closes it when open.
    void QuickLookIn(const QByteArray& path);

signals:
    void selectionChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildLayout();
    QWidget* buildTopBar();
    QWidget* buildGroupHeader();
    QWidget* buildPreviewArea();
    QWidget* buildBottomBar();
    void selectGroupRow(qsizetype row);
    void selectFileRow(qsizetype row);
    void clearPreview();
    struct PendingChoice;
    void applyPendingChoice();
    // After the whole selection was replaced; `chosen` is its set of records when already made.
    void selectionReplaced(std::optional<FileSet> chosen);

    ResultLists& m_lists;
    Selection& m_selection;
    qsizetype m_rowSubSave = 0;
    qsizetype m_countSelected = 0;

    GroupListModel* m_groupModel;
    FileListModel* m_fileModel;
    GroupRowDelegate* m_groupDelegate;
    FileRowDelegate* m_fileDelegate;
    QListView* m_duplicateListMain = nullptr;
    QListView* m_sameList = nullptr;
    QSplitter* m_DisplayView = nullptr;
    QLabel* m_notfoundText = nullptr;
    QList<QPushButton*> m_filterButtons;
    QPushButton* m_sortingButton = nullptr;
    QMenu* m_sortMenu = nullptr;
    QList<QAction*> m_sortItems;
    QLineEdit* m_searchfieldDuplicate = nullptr;
    QTimer m_searchDelay;
    QPushButton* m_autoSelectBTN = nullptr;
    QMenu* m_autoSelectMenu = nullptr;
    QPushButton* m_deselectAllBtn = nullptr;
    QCheckBox* m_checkBoxAllDuplicates = nullptr;
    QLabel* m_groupName = nullptr;
    QList<QPushButton*> m_keepSegments;
    PreviewView* m_quicklookview = nullptr;
    QLabel* m_selectedFileImage = nullptr;
    QLabel* m_selectedFileName = nullptr;
    QLabel* m_detailsAll = nullptr;
    PreviewWindow* m_previewWindow = nullptr;
    FileActions* m_fileActions = nullptr;
    std::shared_ptr<PendingChoice> m_pendingChoice;
    // Works out automatic choices; waited for before the screen goes.
    QThreadPool m_choicePool;
};
