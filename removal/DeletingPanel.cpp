#include "removal/DeletingPanel.h"

#include "controls/OverlayScroller.h"
#include "controls/StripedProgressBar.h"
#include "engine/ScanState.h"
#include "removal/RemovalListModel.h"
#include "removal/RemovalPlan.h"
#include "removal/RemovalRowDelegate.h"
#include "removal/RemovalWorker.h"
#include "removal/congoPanel.h"
#include "review/Selection.h"
#include "review/StatusTexts.h"

#include "base/PathBytes.h"
#include <QDesktopServices>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {

const QString kButtonStyle
    = QStringLiteral("QPushButton { color: #1d2126; border: 1px solid #b4bac2; border-radius: 5px; padding: 0 4px;"
                     " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, stop:1 #eceef1); }"
                     "QPushButton:pressed { background: #dfe3e8; }"
                     "QPushButton:disabled { color: #9aa1aa; }"
                     "QPushButton:default { color: white; border-color: #2a6fb5;"
                     " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #4a9be6, stop:1 #2f80d0); }"
                     "QPushButton:default:disabled { color: #eef2f6; border-color: #b9c3ce; background: #c3cdd8; }"
                     "QPushButton:focus { border: 2px solid #2f80d0; padding: 0 3px; outline: none; }"
                     "QPushButton:default:focus { border-color: #0e3763; }");
// The close after the completion panel waits a fifth of a second.
constexpr int kCloseDelayMs = 200;

} // namespace

DeletingPanel::DeletingPanel(ScanState& state, Selection& selection, ResultLists& lists,
    QList<FileDictionary>& SelectedFileFolderArray, Prompter& prompter, QWidget* parent)
    : QDialog(parent)
    , openUrl([](const QUrl& url) { return QDesktopServices::openUrl(url); })
    , m_review(state, selection, lists, SelectedFileFolderArray)
    , m_selection(selection)
    , m_state(state)
    , m_SelectedFileFolderArray(SelectedFileFolderArray)
    , m_prompter(prompter)
    , m_model(new RemovalListModel(m_review, this))
    , m_rowDelegate(new RemovalRowDelegate(this))
    , m_tableDeletefileList(new QListView)
    , m_heading(new QLabel(QStringLiteral("Files chosen for removal")))
    , m_status(new QLabel)
    , m_current(new QLabel)
    , m_progress(new StripedProgressBar)
    , m_back(new QPushButton(QStringLiteral("Cancel")))
    , m_tDelete(new QPushButton(QStringLiteral("Remove Selected")))
    , m_done(new QPushButton(QStringLiteral("Done"))) {
    setObjectName(QStringLiteral("DeletingPanel"));
    setWindowTitle(QStringLiteral("Review"));
    setWindowModality(Qt::WindowModal);
    setSizeGripEnabled(true);
    setStyleSheet(QStringLiteral("#DeletingPanel { background: #f4f5f7; }") + kButtonStyle);

    // Sizes of the sheet: at least 700 by 380, at most the screen less 300 by 200.
    const QScreen* screen = parent && parent->screen() ? parent->screen() : QGuiApplication::primaryScreen();
    const QSize available = screen ? screen->availableSize() : QSize(0, 0);
    setMinimumSize(700, 380);
    setMaximumSize(QSize(available.width() - 300, available.height() - 200).expandedTo(minimumSize()));
    resize(QSize(550 + 32, 480 + 84).expandedTo(minimumSize()).boundedTo(maximumSize()));

    m_tableDeletefileList->setObjectName(QStringLiteral("tableDeletefileList"));
    m_tableDeletefileList->setProperty("tag", tableTag);
    m_tableDeletefileList->setItemDelegate(m_rowDelegate);
    m_tableDeletefileList->setUniformItemSizes(true);
    // A long list is laid out in steps between other events, so that the sheet shows at once.
    m_tableDeletefileList->setLayoutMode(QListView::Batched);
    m_tableDeletefileList->setBatchSize(layoutBatch);
    m_tableDeletefileList->setMouseTracking(true);
    // From the keyboard: Tab reaches the list, the arrows pick a row and Delete (or Backspace)
    // drops it, as its round button does.
    m_tableDeletefileList->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tableDeletefileList->setFocusPolicy(Qt::StrongFocus);
    m_tableDeletefileList->setAccessibleName(QStringLiteral("Files chosen for removal"));
    m_tableDeletefileList->setAccessibleDescription(QStringLiteral("Delete drops the current file from the list"));
    m_tableDeletefileList->installEventFilter(this);
    m_tableDeletefileList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_tableDeletefileList->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_tableDeletefileList->setStyleSheet(
        QStringLiteral("QListView { background: #ffffff; border: 4px solid #e3e6ea; border-radius: 0; }"
                       "QListView:focus { border-color: #b5d1ef; }"));
    new OverlayScroller(m_tableDeletefileList);
    // The model comes last: each setting above would otherwise lay out every row again.
    m_tableDeletefileList->setModel(m_model);
    // Queued: the list may be reloaded only once the view has finished with the click.
    connect(
        m_rowDelegate, &RemovalRowDelegate::removeClicked, this, &DeletingPanel::removefromlist, Qt::QueuedConnection);

    QFont headingFont = m_heading->font();
    headingFont.setBold(true);
    headingFont.setPixelSize(14);
    m_heading->setFont(headingFont);
    m_status->setStyleSheet(QStringLiteral("color: #6b727b;"));
    m_status->setAlignment(Qt::AlignCenter);
    m_progress->setFixedHeight(8);
    m_progress->setAccessibleName(QStringLiteral("Removal progress"));
    m_progress->hide();

    for (QPushButton* button : { m_back, m_tDelete, m_done }) {
        button->setFixedSize(120, 24);
        button->setAutoDefault(false);
    }
    m_tDelete->setObjectName(QStringLiteral("tDelete"));
    m_back->setObjectName(QStringLiteral("back"));
    m_done->setObjectName(QStringLiteral("done"));
    m_tDelete->setDefault(true);
    m_done->hide();
    connect(m_back, &QPushButton::clicked, this, &DeletingPanel::closewindow);
    connect(m_tDelete, &QPushButton::clicked, this, &DeletingPanel::removeSelectedFiles);
    connect(m_done, &QPushButton::clicked, this, &DeletingPanel::closeOutcome);

    auto* middle = new QVBoxLayout;
    middle->setSpacing(4);
    middle->addWidget(m_status);
    middle->addWidget(m_progress);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(16);
    buttons->addWidget(m_back, 0, Qt::AlignBottom);
    buttons->addLayout(middle, 1);
    buttons->addWidget(m_tDelete, 0, Qt::AlignBottom);
    buttons->addWidget(m_done, 0, Qt::AlignBottom);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 0, 16, 10);
    column->setSpacing(0);
    auto* top = new QHBoxLayout;
    top->setContentsMargins(0, 0, 0, 0);
    top->addWidget(m_heading);
    auto* topArea = new QWidget;
    topArea->setFixedHeight(42);
    topArea->setLayout(top);
    column->addWidget(topArea);
    column->addWidget(m_tableDeletefileList, 1);
    column->addSpacing(8);
    column->addLayout(buttons);

    m_current->setStyleSheet(QStringLiteral("color: #6b727b;"));
    m_current->hide();
    column->insertWidget(2, m_current);
    m_planPool.setMaxThreadCount(1);
    m_progressTimer.setInterval(progressIntervalMs);
    connect(&m_progressTimer, &QTimer::timeout, this, &DeletingPanel::updateStatus);
    loadAllData();
}

DeletingPanel::~DeletingPanel() {
    // The item in hand is finished; nothing after it is started.
    if (m_worker)
        m_worker->cancel();
    m_planPool.waitForDone();
}

void DeletingPanel::loadAllData() {
    leaveOutcome();
    checkPlan();
    m_model->reload();
    m_tableDeletefileList->scrollToTop();
    updateStatus();
}

void DeletingPanel::checkPlan() {
    const quint64 generation = ++m_planGeneration;
    // The plan reads every group as well as every row.
    if (m_review.numberOfRows() < planInBackgroundFrom && m_state.duplicateMainArray.size() < planInBackgroundFrom) {
        m_checking = false;
        m_review.updatePlan();
        return;
    }
    m_checking = true;
    // The plan reads copies of the lists; the groups do not change while the sheet is open.
    m_planPool.start([this, generation, chosen = m_selection.duplicateSelectedArray,
                         groups = m_state.duplicateMainArray, protectedFolders = m_state.settings.protectedFolderList] {
        // Only the reasons cross to the sheet's thread: the plan of a long list is let go here, and
        // the rows stay as they are (only their texts change).
        auto reasons = std::make_shared<RemovalReview::LeftReasons>(
            RemovalReview::leftReasonsOf(RemovalPlan(chosen, groups, protectedFolders)));
        // Handed over on the sheet's thread; the sheet waits for this pool before it goes.
        QMetaObject::invokeMethod(
            this,
            [this, generation, reasons] {
                if (generation != m_planGeneration)
                    return;
                m_checking = false;
                m_review.takeLeftReasons(std::move(*reasons));
                m_model->leftReasonsChanged();
                updateStatus();
            },
            Qt::QueuedConnection);
    });
}

void DeletingPanel::removefromlist(int row) {
    if (m_worker || m_showingOutcome || m_updating)
        return;
    const std::optional<RemovalReview::CloseDecision> decision = m_review.removefromlist(row, false);
    if (!decision)
        checkPlan();
    m_model->reload();
    // The keyboard stays at the same place in the list: the row after the one dropped.
    if (focusWidget() == m_tableDeletefileList && m_model->rowCount() > 0)
        m_tableDeletefileList->setCurrentIndex(m_model->index(std::min(row, m_model->rowCount() - 1)));
    updateStatus();
    if (decision)
        finish(*decision);
}

void DeletingPanel::removeSelectedFiles() {
    if (m_worker || m_checking || m_showingOutcome || m_updating || m_review.numberOfRows() == 0)
        return;
    const std::optional<RemovalActions::Action> action = m_review.askConfirmation(m_prompter);
    if (!action)
        return;
    m_action = *action;
    m_worker = std::make_unique<RemovalWorker>(*action, m_selection.duplicateSelectedArray, m_state.duplicateMainArray,
        m_state.scanRoots, m_state.settings.protectedFolderList);
    connect(m_worker.get(), &RemovalWorker::finished, this, &DeletingPanel::removalFinished);
    setRemoving(true);
    m_worker->start();
    m_progressTimer.start();
    updateStatus();
}

void DeletingPanel::cancelRemoval() {
    if (!m_worker)
        return;
    m_worker->cancel();
    updateStatus();
}

bool DeletingPanel::stopRemoval(int timeoutMs) {
    if (!m_worker)
        return true;
    m_worker->cancel();
    return m_worker->wait(timeoutMs);
}

void DeletingPanel::setRemoving(bool removing) {
    // "Cancel" stays: during a removal it stops the run after the item in hand.
    m_tDelete->setEnabled(!removing);
    m_current->setVisible(removing);
    m_tableDeletefileList->setEnabled(!removing);
    m_progress->setVisible(removing);
    m_progress->setValue(0.0);
    if (removing)
        m_progress->startAnimation();
    else
        m_progress->stopAnimation();
    m_heading->setText(removing ? QStringLiteral("Removing…") : QStringLiteral("Files chosen for removal"));
}

void DeletingPanel::closewindow() {
    if (m_worker) {
        cancelRemoval();
        return;
    }
    if (m_showingOutcome || m_updating) {
        closeOutcome();
        return;
    }
    finish(m_review.closewindow(false));
}

void DeletingPanel::finish(const RemovalReview::CloseDecision& decision) {
    // The keyboard goes back to the window under the sheet, whatever the window manager does.
    if (isActiveWindow() && parentWidget())
        parentWidget()->window()->activateWindow();
    done(decision.returnCode);
    emit closed(decision);
}

bool DeletingPanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_tableDeletefileList && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const QModelIndex current = m_tableDeletefileList->currentIndex();
        if ((key == Qt::Key_Delete || key == Qt::Key_Backspace) && current.isValid()) {
            removefromlist(current.row());
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void DeletingPanel::reject() {
    // Escape and the window's close button act as "Cancel": during a removal they stop it after
    // the item in hand, and the sheet closes when the run has ended.
    closewindow();
}

void DeletingPanel::congoPanelOpen() {
    if (m_CongoPanelObj)
        m_CongoPanelObj->deleteLater();
    m_CongoPanelObj = new congoPanel(m_SelectedFileFolderArray, this);
    m_CongoPanelObj->openUrl = openUrl;
    connect(m_CongoPanelObj, &congoPanel::okPressed, this, [this] {
        closeCongoWindow();
        emit newScanBackRequested();
    });
    connect(m_CongoPanelObj, &congoPanel::rescanPressed, this, [this] {
        closeCongoWindow();
        emit rescanRequested();
    });
    m_CongoPanelObj->open();
}

void DeletingPanel::closeCongoWindow() {
    m_SelectedFileFolderArray.clear();
    if (m_CongoPanelObj)
        m_CongoPanelObj->done(returnCode);
    QTimer::singleShot(kCloseDelayMs, this, [this] { emit closeDeleteWindowRequested(); });
}
