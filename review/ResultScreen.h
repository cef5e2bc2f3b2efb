#pragma once

#include <QStringList>
#include <QWidget>

class OlderFileModel;
class OlderGroupModel;
class OlderTypeModel;
class QAbstractButton;
class QAction;
class QButtonGroup;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QPushButton;
class QTableView;

// The scan list's result page: the type list on the left, the groups of the chosen type (sorted by
// the sort pop-up `btnSortItem_` and narrowed by the search field `_searchALL`), and under them the
// files of the current group with their check boxes and the keep segments. The selection button
// `Select_Duplicate_` opens the selection menu `select_menu`. The page only shows and reports; the
// controller decides.
class ResultScreen : public QWidget {
    Q_OBJECT

public:
    // The keep segments, in order: none chosen, all chosen, keep the newest, keep the oldest.
    static QStringList keepSegmentTitles();

    explicit ResultScreen(QWidget* parent = nullptr);

    OlderTypeModel* typeModel() const { return m_typeModel; }
    OlderGroupModel* groupModel() const { return m_groupModel; }
    OlderFileModel* fileModel() const { return m_fileModel; }
    QListView* typeList() const { return m_typeList; }
    QTableView* duplicateList() const { return m_duplicateList; }
    QTableView* sameList() const { return m_sameList; }
    QPushButton* btnSortItem_() const { return m_btnSortItem; }
    QMenu* sortMenu() const { return m_sortMenu; }
    QLineEdit* searchALL() const { return m_searchALL; }
    QPushButton* Select_Duplicate_() const { return m_selectDuplicate; }
    QMenu* select_menu() const { return m_selectMenu; }
    QButtonGroup* keepSegments() const { return m_keepSegments; }
    QLabel* notFound() const { return m_notFound; }
    QLabel* groupTitle() const { return m_groupTitle; }
    // The controls Tab goes through, top to bottom and left to right as they stand on screen.
    QList<QWidget*> tabOrder() const;

    // The items of the selection menu.
    QAction* keepNewestItem() const { return m_keepNewest; }
    QAction* keepOldestItem() const { return m_keepOldest; }
    QAction* keepNoneItem() const { return m_keepNone; }
    QAction* deselectAllItem() const { return m_deselectAll; }
    // The sort pop-up's item at a menu index (0 to 8), or none for the untitled places.
    QAction* sortItemAt(int index) const;

    // The sort pop-up: its titles by index, their check marks and the title it shows.
    void setSortItems(const QStringList& titles, const QList<bool>& checked, const QString& shown);
    // Makes `row` the current row of a list without reporting it back.
    void setCurrentTypeRow(int row);
    void setCurrentGroupRow(int row);
    // The title over the file list and the enabled keep segments, for the current group.
    void setCurrentGroupTitle(const QString& title);
    // With nothing to show, the lists give way to a text.
    void setNothingShown(bool nothing);
    void setSelectTitle(const QString& title);

signals:
    void sortItemChosen(int index);
    void searchTextChanged(const QString& text);
    void typeRowChosen(int row);
    void groupRowChosen(int row);
    void keepSegmentClicked(int segment);
    void selectButtonClicked();
    void fileRowRightClicked(int row, const QPoint& globalPos);
    void quickLookRequested(int row);

private:
    QWidget* makeFilePane();

    OlderTypeModel* m_typeModel;
    OlderGroupModel* m_groupModel;
    OlderFileModel* m_fileModel;
    QListView* m_typeList;
    QTableView* m_duplicateList;
    QTableView* m_sameList;
    QPushButton* m_btnSortItem;
    QMenu* m_sortMenu;
    QList<QAction*> m_sortItems;
    QLineEdit* m_searchALL;
    QPushButton* m_selectDuplicate;
    QMenu* m_selectMenu;
    QAction* m_keepNewest;
    QAction* m_keepOldest;
    QAction* m_keepNone;
    QAction* m_deselectAll;
    QButtonGroup* m_keepSegments;
    QLabel* m_groupTitle;
    QLabel* m_notFound;
    QWidget* m_lists;
};
