#pragma once

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QWidget>

class AppDelegate;
class FolderListModel;
class FolderRowDelegate;
class QLabel;
class QListView;
class QMimeData;
class QPushButton;

// The scan setup screen: the list of folders to scan (`folderList`, with their sizes in
// `tempSizeCount`), filled through the add panel or by dropping folders from a file manager, and
// the whole-home scan with its remembered grant. The list decides the toolbar state: 0 when empty,
// 1 otherwise. While a scan runs, drops and removals are refused.
class mainView : public QWidget {
    Q_OBJECT

public:
    explicit mainView(AppDelegate& appDel, QWidget* parent = nullptr);

    static constexpr int kAddButtonTag = 1;
    static constexpr int kHomeButtonTag = 2;

    const QList<QByteArray>& folderList() const;
    FolderListModel* model() const { return m_model; }
    QListView* mainScanList() const { return m_mainScanList; }
    QPushButton* addButton() const { return m_addButton; }
    QPushButton* homeButton() const { return m_homeButton; }
    // The controls Tab goes through, in their order on screen.
    QList<QWidget*> tabOrder() const;
    const QList<QByteArray>& draggingList() const { return m_draggingList; }

    // Tag 2: the home-folder access path; any other tag: the add panel.
    void openPanelForAddFolder(int tag);
    // The access panel's delegate: only the home folder, its parent and "/" can be chosen.
    static bool shouldEnableURL(const QByteArray& path);
    void scanFullSystem();
    // Adds the folders not yet listed and sets toolbar state 1 or 0.
    void checkAndReloadTableView(const QList<QByteArray>& paths);
    // Removes the row `tag` unless a scan runs.
    void removeFromList(int tag);
    // Empties the list (the back button's reset).
    void emptyFolderList();

    // The colour laid over the screen while an acceptable drag hovers.
    static QColor dragTint();
    bool isTinted() const;
    // The byte paths of the file URLs a drag offers (text/uri-list), decoded from the URLs'
    // percent-encoding so names that are not UTF-8 keep their bytes.
    static QList<QByteArray> pathsFromMimeData(const QMimeData* mime);
    // Those of them that are folders: the only items either target list takes from a drop.
    static QList<QByteArray> foldersFromMimeData(const QMimeData* mime);
    // The home folder as bytes.
    static QByteArray homeFolder();
    // Paths as the scan takes them: a symbolic link is resolved once to what it names, and a path
    // that names nothing (a dangling or looping link included) is left out.
    static QList<QByteArray> resolvedTargets(const QList<QByteArray>& paths);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setTinted(bool tinted);
    void updateHint();

    AppDelegate& m_appDel;
    FolderListModel* m_model;
    FolderRowDelegate* m_delegate;
    QListView* m_mainScanList;
    QLabel* m_hint;
    QPushButton* m_addButton;
    QPushButton* m_homeButton;
    QWidget* m_tint;
    QList<QByteArray> m_draggingList;
};
