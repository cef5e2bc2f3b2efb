#include "app/PreferenceWindow.h"

#include "app/AboutPane.h"
#include "app/IgnoredFolderModel.h"
#include "base/ByteCountFormatter.h"
#include "base/DigestCache.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "base/ScanSettings.h"
#include "base/SettingsStore.h"
#include "controls/AppIcons.h"
#include "controls/TokenField.h"
#include "review/Prompter.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QDir>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtConcurrent>

namespace {

const QChar tokenSeparator(0x03C0); // the pi sign

QLabel* heading(const QString& text) {
    auto* label = new QLabel(text);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLabel* hint(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.9);
    label->setFont(font);
    return label;
}

QByteArray withoutTrailingSlash(const QByteArray& path) {
    return path.size() > 1 && path.endsWith('/') ? path.chopped(1) : path;
}

} // namespace

PreferenceWindow::PreferenceWindow(ScanSettings& settings, SettingsStore& store, Prompter& prompter, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , openUrl([](const QUrl& url) { return QDesktopServices::openUrl(url); })
    , m_settings(settings)
    , m_store(store)
    , m_prompter(prompter) {
    setWindowTitle(tr("Preferences"));
    setWindowIcon(AppIcons::applicationIcon());

    tabView = new QTabWidget(this);
    tabView->setStyleSheet(QStringLiteral("QTabWidget::tab-bar { alignment: center; }"));
    // The general settings scroll when they are taller than the window (and on small screens).
    auto* settingsScroller = new QScrollArea;
    settingsScroller->setWidget(makeSettingsTab());
    settingsScroller->setWidgetResizable(true);
    settingsScroller->setFrameShape(QFrame::NoFrame);
    settingsScroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    FirstTab = settingsScroller;
    SecondTab = makeAboutTab();
    tabView->addTab(FirstTab, tr("General"));
    tabView->addTab(SecondTab, tr("About"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 10, 8, 8);
    layout->addWidget(tabView);
    connect(tabView, &QTabWidget::currentChanged, this, &PreferenceWindow::tabViewDidSelectTabViewItem);

    auto* close = new QShortcut(QKeySequence::Close, this);
    connect(close, &QShortcut::activated, this, &QWidget::close);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &QWidget::close);

    setFixedSize(firstTabSize);
    windowDidLoad();
    windowDidMove();
}

PreferenceWindow::~PreferenceWindow() {
    waitForSetobj();
}

const QUrl& PreferenceWindow::websiteUrl() {
    static const QUrl url(QStringLiteral("https://twinsift.app/"));
    return url;
}

const QUrl& PreferenceWindow::supportUrl() {
    static const QUrl url(QStringLiteral("https://twinsift.app/support/"));
    return url;
}

QString PreferenceWindow::sizeText(double position) {
    const QString text = ByteCountFormatter::binary(getSizeFromslidervalue(position));
    return text == QLatin1String("Zero KB") ? QStringLiteral("0 byte") : text;
}

namespace {

// A table of folders, one per row, that takes folders dropped on it.
void setUpFolderTable(QTableView* table, QAbstractItemModel* model) {
    table->setModel(model);
    table->horizontalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(24);
    table->setShowGrid(false);
    table->setAlternatingRowColors(true);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table->setTextElideMode(Qt::ElideMiddle);
    table->setIconSize(QSize(16, 16));
    table->setAcceptDrops(true);
    table->setDragDropMode(QAbstractItemView::DropOnly);
    table->setDropIndicatorShown(false);
    table->setDefaultDropAction(Qt::CopyAction);
    // Tab goes on to the next control; the arrows move within the table.
    table->setTabKeyNavigation(false);
}

QList<int> selectedRows(QTableView* table) {
    QList<int> rows;
    for (const QModelIndex& index : table->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    return rows;
}

void removeRows(QList<QByteArray>& list, const QList<int>& descendingRows) {
    for (int row : descendingRows) {
        if (row >= 0 && row < list.size())
            list.removeAt(row);
    }
}

} // namespace

QWidget* PreferenceWindow::makeSettingsTab() {
    auto* tab = new QWidget;
    auto* layout = new QVBoxLayout(tab);
    layout->setContentsMargins(18, 14, 18, 14);
    layout->setSpacing(6);

    layout->addWidget(heading(tr("While scanning")));
    checkSubdirectory = new QCheckBox(tr("Look into subfolders"));
    checkHiddenFiles = new QCheckBox(tr("Include hidden files and folders"));
    checkPackge = new QCheckBox(tr("Look inside packages and bundles"));
    for (QCheckBox* box : { checkSubdirectory, checkHiddenFiles, checkPackge }) {
        layout->addWidget(box);
        connect(box, &QCheckBox::clicked, this, [this, box] { checkbtnAction(box); });
    }

    layout->addSpacing(12);
    layout->addWidget(heading(tr("Skip files smaller than")));
    auto* sliderRow = new QHBoxLayout;
    sizeSlider = new QSlider(Qt::Horizontal);
    sizeSlider->setRange(0, sliderMaximum * sliderScale);
    sizeSlider->setPageStep(5 * sliderScale);
    sizeSlider->setAccessibleName(tr("Skip files smaller than"));
    textSlider = new QLabel;
    textSlider->setMinimumWidth(72);
    textSlider->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    sliderRow->addWidget(sizeSlider, 1);
    sliderRow->addWidget(textSlider);
    layout->addLayout(sliderRow);
    connect(sizeSlider, &QSlider::valueChanged, this, &PreferenceWindow::sliderChangeAction);

    layout->addSpacing(12);
    layout->addWidget(heading(tr("Ignore these file types")));
    tokenView = new TokenField;
    tokenView->setTokenizingCharacter(tokenSeparator);
    tokenView->setFixedHeight(150);
    tokenView->input()->setPlaceholderText(tr("Add a type"));
    tokenView->input()->setAccessibleName(tr("Ignore these file types"));
    layout->addWidget(tokenView);
    layout->addWidget(hint(tr("Extensions without the dot; press Return after each one.")));
    connect(tokenView, &TokenField::editingFinished, this, &PreferenceWindow::controlTextDidEndEditing);
    // The field shows the types as they were stored: ".PDF" typed comes back as "pdf".
    connect(this, &PreferenceWindow::ignoredTypesStored, this, [this] {
        const QString stored = m_settings.ignoreFileTypeList.join(tokenSeparator);
        if (tokenView->text() != stored && tokenView->input()->text().isEmpty())
            tokenView->setText(stored);
    });

    layout->addSpacing(12);
    layout->addWidget(heading(tr("Ignore these folders")));
    m_folderModel = new IgnoredFolderModel(this);
    ignoreScrollview = new QTableView;
    setUpFolderTable(ignoreScrollview, m_folderModel);
    ignoreScrollview->setAccessibleName(tr("Ignored folders"));
    ignoreScrollview->setFixedHeight(104);
    layout->addWidget(ignoreScrollview);
    connect(m_folderModel, &IgnoredFolderModel::foldersDropped, this, [this](const QList<QByteArray>& folders) {
        m_draggedFolders = folders;
        const QString index = QString::number(m_settings.ignoreFolderList.size());
        QTimer::singleShot(100, this, [this, index] { addDragFile(index); });
    });
    auto* remove = new QShortcut(QKeySequence::Delete, ignoreScrollview, nullptr, nullptr, Qt::WidgetShortcut);
    connect(remove, &QShortcut::activated, this, &PreferenceWindow::DeleteRowfromTable);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    auto* addButton = new QToolButton;
    addButton->setIcon(QIcon::fromTheme(QStringLiteral("list-add")));
    addButton->setText(QStringLiteral("+"));
    addButton->setToolTip(tr("Add folders to ignore"));
    addButton->setAccessibleName(addButton->toolTip());
    auto* removeButton = new QToolButton;
    removeButton->setIcon(QIcon::fromTheme(QStringLiteral("list-remove")));
    removeButton->setText(QStringLiteral("\u2212"));
    removeButton->setToolTip(tr("Remove the selected folders"));
    removeButton->setAccessibleName(removeButton->toolTip());
    removeButton->setEnabled(false);
    buttons->addWidget(addButton);
    buttons->addWidget(removeButton);
    buttons->addSpacing(8);
    buttons->addWidget(hint(tr("Or drop folders on the list.")), 1);
    layout->addLayout(buttons);
    connect(addButton, &QToolButton::clicked, this, &PreferenceWindow::Add_Folder);
    connect(removeButton, &QToolButton::clicked, this, &PreferenceWindow::Remove_Folder);
    connect(ignoreScrollview->selectionModel(), &QItemSelectionModel::selectionChanged, removeButton,
        [this, removeButton] { removeButton->setEnabled(ignoreScrollview->selectionModel()->hasSelection()); });

    layout->addSpacing(12);
    layout->addWidget(heading(tr("Never choose copies in these folders")));
    makeProtectedFolders(layout);

    layout->addSpacing(12);
    layout->addWidget(heading(tr("Digest cache")));
    auto* cacheRow = new QHBoxLayout;
    cacheSizeText = new QLabel;
    clearCacheButton = new QPushButton(tr("Clear cache"));
    clearCacheButton->setToolTip(tr("Forget the digests kept from earlier scans; the next scan reads every file."));
    cacheRow->addWidget(cacheSizeText, 1);
    cacheRow->addWidget(clearCacheButton);
    layout->addLayout(cacheRow);
    connect(clearCacheButton, &QPushButton::clicked, this, &PreferenceWindow::clearCache);
    layout->addStretch(1);
    return tab;
}

void PreferenceWindow::makeProtectedFolders(QVBoxLayout* layout) {
    m_protectedModel = new IgnoredFolderModel(this);
    protectedFolderView = new QTableView;
    protectedFolderView->setObjectName(QStringLiteral("protectedFolderView"));
    protectedFolderView->setAccessibleName(tr("Protected folders"));
    setUpFolderTable(protectedFolderView, m_protectedModel);
    protectedFolderView->setFixedHeight(72);
    layout->addWidget(protectedFolderView);

    const auto addFolders = [this](const QList<QByteArray>& folders) {
        for (const QByteArray& url : folders) {
            const QByteArray folder = withoutTrailingSlash(url);
            if (!m_settings.protectedFolderList.contains(folder))
                m_settings.protectedFolderList.append(folder);
        }
        storeProtectedFolders();
    };
    connect(m_protectedModel, &IgnoredFolderModel::foldersDropped, this, addFolders);
    const auto removeSelected = [this] {
        const QList<int> rows = selectedRows(protectedFolderView);
        removeRows(m_settings.protectedFolderList, rows);
        storeProtectedFolders();
    };
    auto* remove = new QShortcut(QKeySequence::Delete, protectedFolderView, nullptr, nullptr, Qt::WidgetShortcut);
    connect(remove, &QShortcut::activated, this, removeSelected);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    auto* addButton = new QToolButton;
    addButton->setIcon(QIcon::fromTheme(QStringLiteral("list-add")));
    addButton->setText(QStringLiteral("+"));
    addButton->setToolTip(tr("Add folders to protect"));
    addButton->setAccessibleName(tr("Add protected folders"));
    auto* removeButton = new QToolButton;
    removeButton->setIcon(QIcon::fromTheme(QStringLiteral("list-remove")));
    removeButton->setText(QStringLiteral("\u2212"));
    removeButton->setToolTip(tr("Remove the selected folders"));
    removeButton->setAccessibleName(tr("Remove the selected protected folders"));
    removeButton->setEnabled(false);
    buttons->addWidget(addButton);
    buttons->addWidget(removeButton);
    buttons->addSpacing(8);
    buttons->addWidget(hint(tr("Scanned as usual; their copies are never chosen or removed.")), 1);
    layout->addLayout(buttons);
    connect(addButton, &QToolButton::clicked, this, [this, addFolders] {
        Prompter::OpenPanel panel;
        panel.prompt = tr("Protect");
        panel.message = tr("Choose folders whose copies are never to be chosen");
        panel.canChooseFiles = false;
        panel.canChooseDirectories = true;
        panel.allowsMultipleSelection = true;
        panel.directory = QDir::homePath().toUtf8();
        const Prompter::PanelAnswer answer = m_prompter.runOpenPanel(panel);
        if (answer.response == Prompter::OK)
            addFolders(answer.urls);
    });
    connect(removeButton, &QToolButton::clicked, this, removeSelected);
    connect(protectedFolderView->selectionModel(), &QItemSelectionModel::selectionChanged, removeButton,
        [this, removeButton] { removeButton->setEnabled(protectedFolderView->selectionModel()->hasSelection()); });
}

void PreferenceWindow::storeProtectedFolders() {
    waitForSetobj();
    m_protectedModel->setFolders(m_settings.protectedFolderList);
    storeProtectedFolderList(m_store, m_settings.protectedFolderList);
    m_store.synchronize();
}

void PreferenceWindow::refreshCacheSize() {
    const qint64 bytes = DigestCache::sizeOnDisk(cacheFolder);
    cacheSizeText->setText(tr("Digests of earlier scans take %1.")
                               .arg(bytes == 0 ? QStringLiteral("0 bytes") : ByteCountFormatter::decimal(bytes)));
    clearCacheButton->setEnabled(bytes > 0);
}

void PreferenceWindow::clearCache() {
    if (!DigestCache::clear(cacheFolder))
        Log::line(QStringLiteral("digest cache %1 could not be removed").arg(DigestCache::fileIn(cacheFolder)));
    refreshCacheSize();
}

QWidget* PreferenceWindow::makeAboutTab() {
    auto* about = new AboutPane(websiteUrl());
    logoApp = about->logoApp;
    nameApp = about->nameApp;
    versionApp = about->versionApp;
    CopyrightApp = about->CopyrightApp;
    websiteApp = about->websiteApp;
    connect(about, &AboutPane::websiteActivated, this, [this] { openUrl(websiteUrl()); });
    connect(about, &AboutPane::supportRequested, this, &PreferenceWindow::support);
    return about;
}

void PreferenceWindow::windowDidLoad() {
    tokenView->setText(m_settings.ignoreFileTypeList.join(tokenSeparator));
    checkSubdirectory->setChecked(m_settings.checkSubDir == QLatin1String("y"));
    checkHiddenFiles->setChecked(m_settings.checkHdn == QLatin1String("y"));
    checkPackge->setChecked(m_settings.checkPKG == QLatin1String("y"));
    {
        const QSignalBlocker blocker(sizeSlider);
        sizeSlider->setValue(qRound(m_settings.SkipLessThen * sliderScale));
    }
    textSlider->setText(sizeText(m_settings.SkipLessThen));
    m_folderModel->setFolders(m_settings.ignoreFolderList);
    m_protectedModel->setFolders(m_settings.protectedFolderList);
}

void PreferenceWindow::checkbtnAction(QCheckBox* sender) {
    waitForSetobj();
    const QString value = sender->isChecked() ? QStringLiteral("y") : QStringLiteral("n");
    QString key;
    if (sender == checkSubdirectory) {
        m_settings.checkSubDir = value;
        key = QStringLiteral("checkSubDir");
    } else if (sender == checkHiddenFiles) {
        m_settings.checkHdn = value;
        key = QStringLiteral("checkHdn");
    } else {
        m_settings.checkPKG = value;
        key = QStringLiteral("checkPKG");
    }
    m_store.setValue(key, value);
    m_store.synchronize();
}

void PreferenceWindow::sliderChangeAction() {
    waitForSetobj();
    // Only the store changes: the minimum size reaches the scan when it next loads its settings.
    const double position = static_cast<double>(sizeSlider->value()) / sliderScale;
    m_store.setDouble(QStringLiteral("SkipLessThen"), position);
    m_store.synchronize();
    textSlider->setText(sizeText(position));
}

void PreferenceWindow::controlTextDidEndEditing() {
    waitForSetobj();
    const QString text = tokenView->text();
    m_setobj = QtConcurrent::run([this, text] { setobj(text); });
}

void PreferenceWindow::setobj(const QString& text) {
    const QStringList types = plainExtensions(text.split(tokenSeparator, Qt::KeepEmptyParts));
    m_settings.ignoreFileTypeList = types;
    m_store.setValue(QStringLiteral("ignoreFileTypeList"), types);
    m_store.synchronize();
    QMetaObject::invokeMethod(this, &PreferenceWindow::ignoredTypesStored, Qt::QueuedConnection);
}

void PreferenceWindow::waitForSetobj() {
    m_setobj.waitForFinished();
}

void PreferenceWindow::Add_Folder() {
    Prompter::OpenPanel panel;
    panel.prompt = tr("Add");
    panel.message = tr("Choose folders to leave out of every scan");
    panel.canChooseFiles = false;
    panel.canChooseDirectories = true;
    panel.allowsMultipleSelection = true;
    panel.canCreateDirectories = true;
    panel.directory = QDir::homePath().toUtf8();
    panel.shouldEnable
        = [this](const QByteArray& path) { return !m_settings.ignoreFolderList.contains(withoutTrailingSlash(path)); };
    const Prompter::PanelAnswer answer = m_prompter.runOpenPanel(panel);
    if (answer.response != Prompter::OK)
        return;
    for (const QByteArray& url : answer.urls) {
        const QByteArray folder = withoutTrailingSlash(url);
        if (!m_settings.ignoreFolderList.contains(folder))
            m_settings.ignoreFolderList.append(folder);
    }
    QTimer::singleShot(500, this, &PreferenceWindow::add);
}

void PreferenceWindow::add() {
    m_folderModel->setFolders(m_settings.ignoreFolderList);
    storeFolderList();
}

void PreferenceWindow::addDragFile(const QString& index) {
    qsizetype at = std::clamp<qsizetype>(index.toLongLong(), 0, m_settings.ignoreFolderList.size());
    for (const QByteArray& folder : std::as_const(m_draggedFolders)) {
        if (!m_settings.ignoreFolderList.contains(folder))
            m_settings.ignoreFolderList.insert(at++, folder);
    }
    m_draggedFolders.clear();
    m_folderModel->setFolders(m_settings.ignoreFolderList);
    storeFolderList();
}

void PreferenceWindow::Remove_Folder() {
    const QList<int> rows = selectedRows(ignoreScrollview);
    removeRows(m_settings.ignoreFolderList, rows);
    m_folderModel->removeRowsAt(rows);
    storeFolderList();
}

void PreferenceWindow::DeleteRowfromTable() {
    const QList<int> rows = selectedRows(ignoreScrollview);
    removeRows(m_settings.ignoreFolderList, rows);
    storeFolderList();
    m_folderModel->removeRowsAt(rows);
}

void PreferenceWindow::storeFolderList() {
    waitForSetobj();
    ::storeFolderList(m_store, m_settings.ignoreFolderList);
    m_store.synchronize();
}

void PreferenceWindow::support() {
    openUrl(supportUrl());
}

void PreferenceWindow::tabViewDidSelectTabViewItem(int index) {
    // Platforms may settle the frame after showing it without a move event: take it as it is now.
    if (isVisible())
        windowDidMove();
    const QSize target = index == 0 ? firstTabSize : otherTabSize;
    if (height() == target.height())
        return;
    const qint64 step = index == 0 ? -1 : 1;
    setFrame(target, Xposition + step * 61, Yposition + step * 387);
}

int PreferenceWindow::primaryScreenBottom() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().y() + screen->geometry().height() : 0;
}

void PreferenceWindow::setFrame(QSize size, qint64 x, qint64 y) {
    // Placed through the client geometry, which every platform reads the same way.
    const QPoint inset = geometry().topLeft() - frameGeometry().topLeft();
    const int decoration = frameGeometry().height() - height();
    const qint64 top = primaryScreenBottom() - y - (size.height() + decoration);
    setFixedSize(size);
    setGeometry(QRect(QPoint(static_cast<int>(x), static_cast<int>(top)) + inset, size));
    windowDidMove();
}

void PreferenceWindow::windowDidMove() {
    const QRect frame = frameGeometry();
    Xposition = frame.x();
    Yposition = primaryScreenBottom() - (frame.y() + frame.height());
}

void PreferenceWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    windowDidMove();
}

void PreferenceWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    windowDidMove();
    refreshCacheSize();
}
