#pragma once

#include "base/DigestCache.h"

#include <QFuture>
#include <QUrl>
#include <QWidget>
#include <functional>

class IgnoredFolderModel;
class QVBoxLayout;
class Prompter;
class QCheckBox;
class QLabel;
class QPushButton;
class QSlider;
class QTabWidget;
class QTableView;
class SettingsStore;
class TokenField;
struct ScanSettings;

// The preferences window: the scan settings on the first tab, the About tab second. Every control
// writes its value to the settings store at once (the check boxes and the lists also to the window's
// ScanSettings), so the next scan, which reloads the store, sees the change. The window's settings
// are its own: a running scan works on a copy taken when it started.
class PreferenceWindow : public QWidget {
    Q_OBJECT

public:
    // The window keeps references to all three; they must outlive it. With a parent it still is a
    // window of its own, kept above the parent.
    PreferenceWindow(ScanSettings& settings, SettingsStore& store, Prompter& prompter, QWidget* parent = nullptr);
    ~PreferenceWindow() override;

    // Slider steps per unit of the stored position: the slider runs over positions 0 to 80.
    static constexpr int sliderScale = 10;
    static constexpr int sliderMaximum = 80;
    static constexpr QSize firstTabSize { 450, 657 };
    static constexpr QSize otherTabSize { 328, 270 };

    static const QUrl& websiteUrl();
    static const QUrl& supportUrl();
    // The text beside the slider for a position: the minimum size in binary units, "0 byte" for none.
    static QString sizeText(double position);

    // Fills every control from the settings; the constructor calls it, and a caller may call it again
    // before showing the window, after the settings were reloaded.
    void windowDidLoad();

    void checkbtnAction(QCheckBox* sender);
    void sliderChangeAction();
    // The ignored types' editing ended: setobj runs on a worker thread with the field's text.
    void controlTextDidEndEditing();
    // Splits the text at the pi sign (empty pieces kept), takes each piece's plain lower-case
    // extension and stores the list in the window's settings and under "ignoreFileTypeList". Runs on
    // a worker thread.
    void setobj(const QString& text);
    // Waits for a running setobj, so that the next write to the store comes after it.
    void waitForSetobj();

    void Add_Folder();
    void Remove_Folder();
    void DeleteRowfromTable();
    // Reloads the ignored-folder table and stores the list.
    void add();
    // Inserts the dropped folders that the list does not hold yet at the given index (as text).
    void addDragFile(const QString& index);
    void support();
    // Resizes the window for the chosen tab, keeping its top edge and horizontal centre.
    void tabViewDidSelectTabViewItem(int index);

    // The size of the digest cache, shown beside its "Clear cache" button (refreshed on showing),
    // and removing it.
    void refreshCacheSize();
    void clearCache();
    QString cacheFolder = DigestCache::defaultFolder();

    // Opens web pages; QDesktopServices by default, replaceable in tests.
    std::function<bool(const QUrl&)> openUrl;

    QTabWidget* tabView = nullptr;
    QWidget* FirstTab = nullptr;
    QWidget* SecondTab = nullptr;
    QCheckBox* checkSubdirectory = nullptr;
    QCheckBox* checkHiddenFiles = nullptr;
    QCheckBox* checkPackge = nullptr;
    QSlider* sizeSlider = nullptr;
    QLabel* textSlider = nullptr;
    TokenField* tokenView = nullptr;
    QTableView* ignoreScrollview = nullptr;
    QTableView* protectedFolderView = nullptr;
    QLabel* logoApp = nullptr;
    QLabel* nameApp = nullptr;
    QLabel* versionApp = nullptr;
    QLabel* CopyrightApp = nullptr;
    QLabel* websiteApp = nullptr;
    QLabel* cacheSizeText = nullptr;
    QPushButton* clearCacheButton = nullptr;

    // The window's frame origin, truncated, as last recorded. It is counted as the original program
    // counts it, from the bottom-left corner with y growing upwards from the bottom of the primary
    // screen, so that the tab change's fixed steps (61 and 387) keep the title bar where it was.
    qint64 Xposition = 0;
    qint64 Yposition = 0;
    // Records the current frame origin in Xposition/Yposition.
    void windowDidMove();

signals:
    // setobj has stored the ignored types (delivered on the window's thread).
    void ignoredTypesStored();

protected:
    void moveEvent(QMoveEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeSettingsTab();
    QWidget* makeAboutTab();
    void storeFolderList();
    void makeProtectedFolders(QVBoxLayout* layout);
    void storeProtectedFolders();
    void setFrame(QSize size, qint64 x, qint64 y);
    static int primaryScreenBottom();

    ScanSettings& m_settings;
    SettingsStore& m_store;
    Prompter& m_prompter;
    IgnoredFolderModel* m_folderModel = nullptr;
    IgnoredFolderModel* m_protectedModel = nullptr;
    QList<QByteArray> m_draggedFolders;
    QFuture<void> m_setobj;
};
