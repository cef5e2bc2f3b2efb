#include "app/mainView.h"

#include "app/AppDelegate.h"
#include "app/FolderListModel.h"
#include "app/FolderRowDelegate.h"
#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "controls/OverlayScroller.h"
#include "review/Prompter.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>
#include <unistd.h>

namespace {

const QString kSaveUserDirectory = QStringLiteral("SaveUserDirectory");
const QString kUriList = QStringLiteral("text/uri-list");
const QString kButtonStyle
    = QStringLiteral("QPushButton { color: #1d2126; border: 1px solid #b4bac2; border-radius: 6px; padding: 5px 14px;"
                     " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, stop:1 #eceef1); }"
                     "QPushButton:pressed { background: #dfe3e8; }"
                     "QPushButton:disabled { color: #9aa1aa; }"
                     "QPushButton:focus { border: 2px solid #2f80d0; padding: 4px 13px; outline: none; }");
// Panels and drops hand their folders over a moment after they close.
constexpr int kHandOverDelayMs = 100;

bool isDirectory(const QByteArray& path) {
    FileSystem::ItemInfo info;
    return FileSystem::stat(path, info) && info.kind == FileSystem::Kind::Directory;
}

// The remembered grant stands while its folder is still there and can be read.
bool grantStillValid(const QByteArray& path) {
    return !path.isEmpty() && isDirectory(path) && ::access(path.constData(), R_OK | X_OK) == 0;
}

} // namespace

mainView::mainView(AppDelegate& appDel, QWidget* parent)
    : QWidget(parent)
    , m_appDel(appDel)
    , m_model(new FolderListModel(this))
    , m_delegate(new FolderRowDelegate(this))
    , m_mainScanList(new QListView(this))
    , m_hint(new QLabel(QStringLiteral("Add folders, or drag them here from your file manager.")))
    , m_addButton(new QPushButton(QStringLiteral("Add Folders…"), this))
    , m_homeButton(new QPushButton(QStringLiteral("Scan Home Folder"), this))
    , m_tint(new QWidget(this)) {
    setObjectName(QStringLiteral("mainView"));
    setAcceptDrops(true);

    auto* title = new QLabel(QStringLiteral("Folders to scan"), this);
    QFont titleFont = title->font();
    titleFont.setBold(true);
    titleFont.setPixelSize(15);
    title->setFont(titleFont);

    m_mainScanList->setObjectName(QStringLiteral("mainScanList"));
    m_mainScanList->setModel(m_model);
    m_mainScanList->setItemDelegate(m_delegate);
    // Usable from the keyboard: Tab reaches the list, the arrows move through it, Delete (or
    // Backspace) removes the current row.
    m_mainScanList->setSelectionMode(QAbstractItemView::SingleSelection);
    m_mainScanList->setFocusPolicy(Qt::StrongFocus);
    m_mainScanList->setAccessibleName(QStringLiteral("Folders to scan"));
    m_mainScanList->installEventFilter(this);
    m_mainScanList->setMouseTracking(true);
    m_mainScanList->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_mainScanList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_mainScanList->setStyleSheet(
        QStringLiteral("QListView { background: #ffffff; border: 1px solid #d3d8de; border-radius: 6px; }"
                       "QListView:focus { border-color: #2f80d0; }"));
    new OverlayScroller(m_mainScanList);

    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setWordWrap(true);
    m_hint->setStyleSheet(QStringLiteral("color: #8a9099;"));
    m_hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* hintLayout = new QVBoxLayout(m_mainScanList->viewport());
    hintLayout->setContentsMargins(40, 0, 40, 0);
    hintLayout->addWidget(m_hint);

    m_addButton->setStyleSheet(kButtonStyle);
    m_homeButton->setStyleSheet(kButtonStyle);
    m_addButton->setProperty("tag", kAddButtonTag);
    m_homeButton->setProperty("tag", kHomeButtonTag);
    m_homeButton->setToolTip(QStringLiteral("Scan everything in your home folder"));
    connect(m_addButton, &QPushButton::clicked, this, [this] { openPanelForAddFolder(kAddButtonTag); });
    connect(m_homeButton, &QPushButton::clicked, this, [this] { openPanelForAddFolder(kHomeButtonTag); });
    connect(m_delegate, &FolderRowDelegate::removeClicked, this, &mainView::removeFromList);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(m_addButton);
    buttons->addStretch();
    buttons->addWidget(m_homeButton);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 14, 20, 16);
    column->setSpacing(10);
    column->addWidget(title);
    column->addWidget(m_mainScanList, 1);
    column->addLayout(buttons);

    m_tint->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_tint->setAutoFillBackground(true);
    QPalette tintPalette = m_tint->palette();
    tintPalette.setColor(QPalette::Window, dragTint());
    m_tint->setPalette(tintPalette);
    m_tint->hide();
}

const QList<QByteArray>& mainView::folderList() const {
    return m_model->folderList();
}

QByteArray mainView::homeFolder() {
    // Home folders are often links (to a data disk, say): the scan starts where the link leads.
    const QByteArray home = PathBytes::normalized(QFile::encodeName(QDir::homePath()), "/");
    const QByteArray resolved = FileSystem::resolveTarget(home);
    return resolved.isEmpty() ? home : resolved;
}

QList<QByteArray> mainView::resolvedTargets(const QList<QByteArray>& paths) {
    QList<QByteArray> out;
    for (const QByteArray& path : paths) {
        const QByteArray resolved = FileSystem::resolveTarget(path);
        if (resolved.isEmpty())
            Log::line(QStringLiteral("no such item %1").arg(PathBytes::display(path)));
        else
            out.append(resolved);
    }
    return out;
}

bool mainView::shouldEnableURL(const QByteArray& path) {
    const QByteArray candidate = PathBytes::normalized(path, "/");
    const QByteArray home = homeFolder();
    return candidate == home || candidate == PathBytes::deletingLastPathComponent(home) || candidate == "/";
}

void mainView::openPanelForAddFolder(int tag) {
    if (tag == kHomeButtonTag) {
        SettingsStore& store = m_appDel.settingsStore();
        if (grantStillValid(store.bytes(kSaveUserDirectory))) {
            scanFullSystem();
            return;
        }
        Prompter::OpenPanel panel;
        panel.canChooseFiles = false;
        panel.canChooseDirectories = true;
        panel.allowsMultipleSelection = false;
        panel.prompt = QStringLiteral("Confirm Access");
        panel.message = QStringLiteral("Give access for scanning in your HardDisk");
        panel.directory = homeFolder();
        panel.shouldEnable = &mainView::shouldEnableURL;
        const Prompter::PanelAnswer answer = m_appDel.prompter().runOpenPanel(panel);
        if (answer.response != Prompter::OK || answer.urls.isEmpty())
            return;
        store.setBytes(kSaveUserDirectory, answer.urls.first());
        store.synchronize();
        QTimer::singleShot(kHandOverDelayMs, this, &mainView::scanFullSystem);
        return;
    }

    Prompter::OpenPanel panel;
    panel.canChooseFiles = false;
    panel.canChooseDirectories = true;
    panel.allowsMultipleSelection = true;
    panel.canCreateDirectories = true;
    panel.prompt = QStringLiteral("Add");
    panel.message = QStringLiteral("Add folders for scannig");
    panel.directory = homeFolder();
    const Prompter::PanelAnswer answer = m_appDel.prompter().runOpenPanel(panel);
    if (answer.response != Prompter::OK)
        return;
    const QList<QByteArray> chosen = answer.urls;
    QTimer::singleShot(kHandOverDelayMs, this, [this, chosen] { checkAndReloadTableView(chosen); });
}

void mainView::scanFullSystem() {
    if (m_appDel.state().isScanRunning) {
        Log::line(QStringLiteral("scan running"));
        return;
    }
    m_appDel.makeWindowFor(1);
    m_appDel.makeToolbarItem(2);
    m_appDel.StartScan({ homeFolder() });
}

void mainView::checkAndReloadTableView(const QList<QByteArray>& paths) {
    // A scan works on the list as it was when it started; nothing joins while it runs.
    if (m_appDel.state().isScanRunning)
        return;
    m_model->addFolders(resolvedTargets(paths));
    updateHint();
    m_appDel.makeToolbarItem(folderList().isEmpty() ? 0 : 1);
}

QList<QWidget*> mainView::tabOrder() const {
    return { m_mainScanList, m_addButton, m_homeButton };
}

bool mainView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_mainScanList && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const int row = m_mainScanList->currentIndex().row();
        if ((key == Qt::Key_Delete || key == Qt::Key_Backspace) && row >= 0) {
            removeFromList(row);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void mainView::removeFromList(int tag) {
    if (m_appDel.state().isScanRunning)
        return;
    if (!m_model->removeRow(tag))
        return;
    updateHint();
    m_appDel.makeToolbarItem(folderList().isEmpty() ? 0 : 1);
}

void mainView::emptyFolderList() {
    m_model->removeAll();
    updateHint();
}

void mainView::updateHint() {
    m_hint->setVisible(folderList().isEmpty());
}

QColor mainView::dragTint() {
    return QColor::fromRgbF(0.2756f, 0.5725f, 0.7843f, 0.2f);
}

bool mainView::isTinted() const {
    return !m_tint->isHidden();
}

void mainView::setTinted(bool tinted) {
    m_tint->setGeometry(rect());
    m_tint->raise();
    m_tint->setVisible(tinted);
}

void mainView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_tint->setGeometry(rect());
}

QList<QByteArray> mainView::pathsFromMimeData(const QMimeData* mime) {
    QList<QByteArray> paths;
    if (!mime || !mime->hasFormat(kUriList))
        return paths;
    const QList<QByteArray> lines = mime->data(kUriList).split('\n');
    for (QByteArray line : lines) {
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        const QUrl url = QUrl::fromEncoded(line);
        if (!url.isValid() || url.scheme() != QLatin1String("file"))
            continue;
        if (!url.host().isEmpty() && url.host() != QLatin1String("localhost"))
            continue;
        // The encoded path keeps every byte: QUrl::toLocalFile would turn bytes that are not UTF-8
        // into replacement characters.
        const QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
        if (path.startsWith('/'))
            paths.append(PathBytes::normalized(path, "/"));
    }
    return paths;
}

QList<QByteArray> mainView::foldersFromMimeData(const QMimeData* mime) {
    QList<QByteArray> folders;
    for (const QByteArray& path : resolvedTargets(pathsFromMimeData(mime))) {
        if (isDirectory(path))
            folders.append(path);
    }
    return folders;
}

void mainView::dragEnterEvent(QDragEnterEvent* event) {
    m_draggingList.clear();
    if (!event->mimeData()->hasFormat(kUriList) || m_appDel.state().isScanRunning) {
        event->ignore();
        return;
    }
    m_draggingList = foldersFromMimeData(event->mimeData());
    if (m_draggingList.isEmpty()) {
        event->ignore();
        return;
    }
    activateWindow();
    setTinted(true);
    event->acceptProposedAction();
}

void mainView::dragMoveEvent(QDragMoveEvent* event) {
    if (m_draggingList.isEmpty())
        event->ignore();
    else
        event->acceptProposedAction();
}

void mainView::dragLeaveEvent(QDragLeaveEvent* event) {
    m_draggingList.clear();
    setTinted(false);
    QWidget::dragLeaveEvent(event);
}

void mainView::dropEvent(QDropEvent* event) {
    setTinted(false);
    const QList<QByteArray> folders = foldersFromMimeData(event->mimeData());
    m_draggingList.clear();
    if (folders.isEmpty() || m_appDel.state().isScanRunning) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    QTimer::singleShot(kHandOverDelayMs, this, [this, folders] { checkAndReloadTableView(folders); });
}
