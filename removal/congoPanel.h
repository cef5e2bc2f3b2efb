#pragma once

#include "detect/GroupDictionary.h"

#include <QDialog>
#include <QUrl>
#include <functional>

class QLabel;
class QMenu;
class QPushButton;

// The completion panel: a sheet over the removal review that sums up a removal (how many files of
// the older selection went and how much space that freed), offers to share the result on the web
// and to scan again. The share button opens, as soon as it is pressed, a menu of the share services
// ("Facebook", "Twitter"), each opening its web share page with the share text and link.
class congoPanel : public QDialog {
    Q_OBJECT

public:
    explicit congoPanel(const QList<FileDictionary>& SelectedFileFolderArray, QWidget* parent = nullptr);

    QLabel* SpaceFree() const { return m_SpaceFree; }
    QPushButton* OkBTN() const { return m_OkBTN; }
    QPushButton* rescanBTN() const { return m_rescanBTN; }
    QPushButton* ShareResult() const { return m_ShareResult; }
    QMenu* shareMenu() const { return m_shareMenu; }

    // Opens the share pages; the desktop's URL handler by default.
    std::function<bool(const QUrl&)> openUrl;

    // The services this desktop could offer, before the panel keeps only its two.
    static QStringList proposedServices();

    // Fills the summary from the older selection.
    void windowDidLoad();
    void CloseWindowOK();
    void rescanLocal();
    // Opens the web share page of one service.
    void share(const QString& service);

signals:
    void okPressed();
    void rescanPressed();

private:
    const QList<FileDictionary>& m_SelectedFileFolderArray;
    QLabel* m_SpaceFree;
    QPushButton* m_OkBTN;
    QPushButton* m_rescanBTN;
    QPushButton* m_ShareResult;
    QMenu* m_shareMenu;
};
