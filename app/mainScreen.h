#pragma once

#include <QByteArray>
#include <QList>
#include <QWidget>

class AppDelegate;
class FolderRowDelegate;
class MainArrayModel;
class QLabel;
class QListView;
class QMimeData;

// The scan list's main page: the files and folders the list scan walks (`mainArray`) in the table
// `foldersScrollview`. Items join through the add panel or by dropping folders at a row; a row's
// remove button takes it out. While a scan runs the list cannot change. With nothing listed the
// table shows the hint "Add or Drag Files and Folders".
class mainScreen : public QWidget {
    Q_OBJECT

public:
    explicit mainScreen(AppDelegate& appDel, QWidget* parent = nullptr);

    QListView* foldersScrollview() const { return m_foldersScrollview; }
    MainArrayModel* model() const { return m_model; }
    QLabel* hint() const { return m_hint; }

    // Takes the controller's `mainArray` into the table again and shows or hides the hint.
    void reload();
    // `_Add`: on the result page it goes back to this page; here it asks for files and folders
    // (several, new folders allowed) and appends those not listed yet.
    void openPanelForAddFolder();
    // The row a drop at `pos` (in this widget's coordinates) lands on; the end of the list below
    // the last row.
    int dropRowAt(const QPoint& pos) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setTinted(bool tinted);

    AppDelegate& m_appDel;
    MainArrayModel* m_model;
    FolderRowDelegate* m_delegate;
    QListView* m_foldersScrollview;
    QLabel* m_hint;
};
