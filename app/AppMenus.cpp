#include "app/AppMenus.h"

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "app/MenuRules.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>

namespace AppMenus {

namespace {

const char* const kTag = "tag";
const QString kFullScreen = QStringLiteral("fullScreenItem");

} // namespace

QAction* addItem(QMenu* menu, const QString& title, int tag, const QKeySequence& shortcut) {
    QAction* action = menu->addAction(title);
    action->setProperty(kTag, tag);
    if (!shortcut.isEmpty())
        action->setShortcut(shortcut);
    // Quitting, Preferences and minimizing answer their keys in every window of the program (the
    // Preferences window included); the other items act on the main window and keep to it.
    if (tag == MenuRules::Quit || tag == MenuRules::Preferences || tag == MenuRules::Minimize)
        action->setShortcutContext(Qt::ApplicationShortcut);
    return action;
}

void build(QMainWindow& window, AppDelegate& appDelegate) {
    using namespace MenuRules;
    QMenuBar* bar = window.menuBar();

    QMenu* file = bar->addMenu(QStringLiteral("&File"));
    QObject::connect(addItem(file, QStringLiteral("Add Folder…"), AddFolder, QKeySequence(Qt::CTRL | Qt::Key_O)),
        &QAction::triggered, &appDelegate, &AppDelegate::AddFolder_Menubar);
    file->addSeparator();
    // The scan list: its own pages, the list scan and the photo-library scan.
    QAction* scanList = file->addAction(QStringLiteral("Show Scan List"));
    scanList->setObjectName(QStringLiteral("ShowScanList"));
    scanList->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    scanList->setStatusTip(QStringLiteral("Scan a list of files and folders, or a photo library"));
    QObject::connect(scanList, &QAction::triggered, &appDelegate, &AppDelegate::ShowScanList_Menubar);
    QObject::connect(addItem(file, QStringLiteral("Scan"), Scan, QKeySequence(Qt::CTRL | Qt::Key_R)),
        &QAction::triggered, &appDelegate, &AppDelegate::Scan_Menubar);
    QObject::connect(addItem(file, QStringLiteral("Scan Photo Library…"), ScaniPhoto,
                         QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P)),
        &QAction::triggered, &appDelegate, &AppDelegate::ScaniPhoto_Menubar);
    file->addSeparator();
    QObject::connect(addItem(file, QStringLiteral("New Scan"), NewScan, QKeySequence(Qt::CTRL | Qt::Key_N)),
        &QAction::triggered, &appDelegate, &AppDelegate::NewScan_Menubar);
    file->addSeparator();
    QObject::connect(addItem(file, QStringLiteral("Quit"), Quit, QKeySequence(Qt::CTRL | Qt::Key_Q)),
        &QAction::triggered, &window, &QMainWindow::close);

    QMenu* edit = bar->addMenu(QStringLiteral("&Edit"));
    QObject::connect(
        addItem(edit, QStringLiteral("Undo Last Removal"), UndoRemoval, QKeySequence(Qt::CTRL | Qt::Key_Z)),
        &QAction::triggered, &appDelegate, &AppDelegate::undoLastRemoval);
    edit->addSeparator();
    QObject::connect(addItem(edit, QStringLiteral("Find"), Find, QKeySequence(Qt::CTRL | Qt::Key_F)),
        &QAction::triggered, &appDelegate, &AppDelegate::Findfile);
    QObject::connect(addItem(edit, QStringLiteral("Review Selected…"), ShowSelected), &QAction::triggered, &appDelegate,
        &AppDelegate::ShowSelected);
    edit->addSeparator();
    QObject::connect(addItem(edit, QStringLiteral("Select Duplicates…"), SelectAllDuplicate,
                         QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A)),
        &QAction::triggered, &appDelegate, &AppDelegate::SelectAllDuplicate);
    QObject::connect(addItem(edit, QStringLiteral("Deselect All"), DeselectAllDuplicate), &QAction::triggered,
        &appDelegate, &AppDelegate::DeselectAll_Menubar);
    edit->addSeparator();
    QAction* preferences
        = addItem(edit, QStringLiteral("Preferences…"), Preferences, QKeySequence(Qt::CTRL | Qt::Key_Comma));
    preferences->setMenuRole(QAction::PreferencesRole);
    QObject::connect(preferences, &QAction::triggered, &appDelegate, &AppDelegate::showPreferences);

    QMenu* windowMenu = bar->addMenu(QStringLiteral("&Window"));
    QObject::connect(addItem(windowMenu, QStringLiteral("Minimize"), Minimize, QKeySequence(Qt::CTRL | Qt::Key_M)),
        &QAction::triggered, &appDelegate, &AppDelegate::minimizeToogle);
    QAction* fullScreen = windowMenu->addAction(QStringLiteral("Full Screen"));
    fullScreen->setObjectName(kFullScreen);
    fullScreen->setShortcut(QKeySequence::FullScreen);
    if (auto* main = qobject_cast<MainWindow*>(&window))
        QObject::connect(fullScreen, &QAction::triggered, main, &MainWindow::toggleFullScreen);

    QMenu* help = bar->addMenu(QStringLiteral("&Help"));
    QObject::connect(help->addAction(QStringLiteral("Rate Twinsift…")), &QAction::triggered, &appDelegate,
        &AppDelegate::rateAppApptentive);

    for (QMenu* menu : { file, edit, windowMenu, help })
        QObject::connect(menu, &QMenu::aboutToShow, &appDelegate, &AppDelegate::validateMenus);
}

QAction* itemWithTag(QMainWindow& window, int tag) {
    const QList<QAction*> actions = window.menuBar()->findChildren<QAction*>();
    for (QAction* action : actions) {
        if (action->property(kTag).isValid() && action->property(kTag).toInt() == tag)
            return action;
    }
    return nullptr;
}

QAction* fullScreenItem(QMainWindow& window) {
    return window.menuBar()->findChild<QAction*>(kFullScreen);
}

} // namespace AppMenus
