#include "app/mainScreen.h"

#include "app/AppDelegate.h"
#include "app/FolderRowDelegate.h"
#include "app/MainArrayModel.h"
#include "app/mainView.h"
#include "controls/OverlayScroller.h"
#include "review/Prompter.h"
#include "review/StatusTexts.h"

#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// The toolbar follows a moment after the panel has closed.
constexpr int kToolbarDelayMs = 200;
const QString kListStyle = QStringLiteral("QListView { background: #ffffff; border: 1px solid #d3d8de; border-radius: "
                                          "6px; } QListView[tinted=\"true\"] { background: #e2edf6; }"
                                          "QListView:focus { border-color: #2f80d0; }");

} // namespace

mainScreen::mainScreen(AppDelegate& appDel, QWidget* parent)
    : QWidget(parent)
    , m_appDel(appDel)
    , m_model(new MainArrayModel(this))
    , m_delegate(new FolderRowDelegate(this))
    , m_foldersScrollview(new QListView(this))
    , m_hint(new QLabel(StatusTexts::addOrDragText())) {
    setObjectName(QStringLiteral("mainScreen"));
    setAcceptDrops(true);

    auto* title = new QLabel(QStringLiteral("Files and folders to scan"), this);
    QFont titleFont = title->font();
    titleFont.setBold(true);
    titleFont.setPixelSize(15);
    title->setFont(titleFont);
    auto* note
        = new QLabel(QStringLiteral("The list scan compares everything listed here. A photo library scan compares the "
                                    "pictures and videos of the library you choose."),
            this);
    note->setWordWrap(true);
    note->setStyleSheet(QStringLiteral("color: #6b727b;"));

    m_foldersScrollview->setObjectName(QStringLiteral("foldersScrollview"));
    m_foldersScrollview->setModel(m_model);
    m_foldersScrollview->setItemDelegate(m_delegate);
    // From the keyboard: Tab reaches the list, the arrows pick a row and Delete (or Backspace)
    // removes it, as its round button does.
    m_foldersScrollview->setSelectionMode(QAbstractItemView::SingleSelection);
    m_foldersScrollview->setFocusPolicy(Qt::StrongFocus);
    m_foldersScrollview->setAccessibleName(QStringLiteral("Files and folders to scan"));
    m_foldersScrollview->installEventFilter(this);
    m_foldersScrollview->setMouseTracking(true);
    m_foldersScrollview->setUniformItemSizes(true);
    m_foldersScrollview->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_foldersScrollview->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_foldersScrollview->setStyleSheet(kListStyle);
    new OverlayScroller(m_foldersScrollview);

    m_hint->setObjectName(QStringLiteral("hint"));
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setStyleSheet(QStringLiteral("color: #8a9099; font-size: 14px;"));
    m_hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* hintLayout = new QVBoxLayout(m_foldersScrollview->viewport());
    hintLayout->addWidget(m_hint);

    connect(m_delegate, &FolderRowDelegate::removeClicked, this, [this](int row) { m_appDel.removeRowFromMain(row); });

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 14, 20, 12);
    column->setSpacing(8);
    column->addWidget(title);
    column->addWidget(note);
    column->addWidget(m_foldersScrollview, 1);
}

void mainScreen::reload() {
    const int row = m_foldersScrollview->currentIndex().row();
    m_model->reload(m_appDel.state().mainArray);
    m_hint->setVisible(m_model->paths().isEmpty());
    // The keyboard keeps its place in the list: the row that took the place of one removed.
    if (row >= 0 && m_model->rowCount() > 0)
        m_foldersScrollview->setCurrentIndex(m_model->index(std::min(row, m_model->rowCount() - 1)));
}

bool mainScreen::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_foldersScrollview && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const int row = m_foldersScrollview->currentIndex().row();
        if ((key == Qt::Key_Delete || key == Qt::Key_Backspace) && row >= 0) {
            m_appDel.removeRowFromMain(row);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void mainScreen::openPanelForAddFolder() {
    if (!m_appDel.isMainScreen() || !m_appDel.isOlderViewShown()) {
        m_appDel.setViewsFor(QStringLiteral("Main"));
        m_appDel.SetToolBarBTNFor(QStringLiteral("main"));
        return;
    }
    if (m_appDel.state().isScanRunning)
        return;
    Prompter::OpenPanel panel;
    panel.title = QStringLiteral("Add Files and Folders");
    panel.prompt = QStringLiteral("Add");
    panel.message = QStringLiteral("Add files and folders to the scan list");
    panel.canChooseFiles = true;
    panel.canChooseDirectories = true;
    panel.allowsMultipleSelection = true;
    panel.canCreateDirectories = true;
    panel.directory = mainView::homeFolder();
    const Prompter::PanelAnswer answer = m_appDel.prompter().runOpenPanel(panel);
    if (answer.response != Prompter::OK || m_appDel.state().isScanRunning)
        return;
    QList<QByteArray>& mainArray = m_appDel.state().mainArray;
    for (const QByteArray& path : mainView::resolvedTargets(answer.urls)) {
        if (!mainArray.contains(path))
            mainArray.append(path);
    }
    reload();
    QTimer::singleShot(kToolbarDelayMs, &m_appDel, [this] { m_appDel.SetToolBarBTNFor(QStringLiteral("main")); });
}

int mainScreen::dropRowAt(const QPoint& pos) const {
    const QPoint inView = m_foldersScrollview->viewport()->mapFrom(this, pos);
    const QModelIndex index = m_foldersScrollview->indexAt(inView);
    return index.isValid() ? index.row() : m_model->rowCount();
}

void mainScreen::setTinted(bool tinted) {
    m_foldersScrollview->setProperty("tinted", tinted);
    m_foldersScrollview->setStyleSheet(kListStyle);
}

void mainScreen::dragEnterEvent(QDragEnterEvent* event) {
    if (m_appDel.state().isScanRunning || mainView::foldersFromMimeData(event->mimeData()).isEmpty()) {
        event->ignore();
        return;
    }
    setTinted(true);
    event->acceptProposedAction();
}

void mainScreen::dragMoveEvent(QDragMoveEvent* event) {
    event->acceptProposedAction();
}

void mainScreen::dragLeaveEvent(QDragLeaveEvent* event) {
    setTinted(false);
    QWidget::dragLeaveEvent(event);
}

void mainScreen::dropEvent(QDropEvent* event) {
    setTinted(false);
    const QList<QByteArray> folders = mainView::foldersFromMimeData(event->mimeData());
    if (folders.isEmpty() || m_appDel.state().isScanRunning) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    m_appDel.addDragFile(folders, dropRowAt(event->position().toPoint()));
}
