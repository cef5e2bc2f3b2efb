#include "review/ResultScreen.h"

#include "controls/OverlayScroller.h"
#include "review/OlderFileModel.h"
#include "review/OlderGroupModel.h"
#include "review/OlderTypeModel.h"
#include "review/mainTypeCell.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kSortItems = 9;

const QString kPopUpStyle
    = QStringLiteral("QPushButton { color: #1d2126; border: 1px solid #b4bac2; border-radius: 6px; padding: 4px 12px;"
                     " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, stop:1 #eceef1); }"
                     "QPushButton:pressed { background: #dfe3e8; } QPushButton:disabled { color: #9aa1aa; }"
                     "QPushButton:focus { border: 2px solid #2f80d0; padding: 3px 11px; outline: none; }"
                     "QPushButton::menu-indicator { subcontrol-position: right center; right: 6px; }");
const QString kSegmentStyle = QStringLiteral(
    "QToolButton { color: #1d2126; border: 1px solid #b4bac2; padding: 3px 10px; background: #ffffff; }"
    "QToolButton:pressed { background: #dfe3e8; } QToolButton:disabled { color: #a4abb4; background: #f3f4f6; }"
    "QToolButton#segment0 { border-top-left-radius: 6px; border-bottom-left-radius: 6px; }"
    "QToolButton#segment3 { border-top-right-radius: 6px; border-bottom-right-radius: 6px; }"
    "QToolButton:focus { border: 2px solid #2f80d0; padding: 2px 9px; outline: none; }");

QTableView* makeTable(QWidget* parent, const QString& name) {
    auto* table = new QTableView(parent);
    table->setObjectName(name);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setShowGrid(false);
    table->setAlternatingRowColors(true);
    table->setWordWrap(false);
    table->setIconSize(QSize(20, 20));
    table->verticalHeader()->hide();
    // Fixed row heights: the view never measures rows, so long lists scroll at once.
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(28);
    table->horizontalHeader()->setHighlightSections(false);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    // Tab goes on to the next control; the arrows move within the table.
    table->setTabKeyNavigation(false);
    table->setStyleSheet(QStringLiteral("QTableView { border: 1px solid #d3d8de; border-radius: 4px; }"));
    new OverlayScroller(table);
    return table;
}

} // namespace

QStringList ResultScreen::keepSegmentTitles() {
    return { QStringLiteral("Keep All"), QStringLiteral("Keep None"), QStringLiteral("Keep Newest"),
        QStringLiteral("Keep Oldest") };
}

ResultScreen::ResultScreen(QWidget* parent)
    : QWidget(parent)
    , m_typeModel(new OlderTypeModel(this))
    , m_groupModel(new OlderGroupModel(this))
    , m_fileModel(new OlderFileModel(this))
    , m_typeList(new QListView(this))
    , m_duplicateList(makeTable(this, QStringLiteral("duplicateList")))
    , m_sameList(makeTable(this, QStringLiteral("sameList")))
    , m_btnSortItem(new QPushButton(this))
    , m_sortMenu(new QMenu(this))
    , m_searchALL(new QLineEdit(this))
    , m_selectDuplicate(new QPushButton(this))
    , m_selectMenu(new QMenu(this))
    , m_keepSegments(new QButtonGroup(this))
    , m_groupTitle(new QLabel(this))
    , m_notFound(new QLabel(QStringLiteral("No duplicates match."), this))
    , m_lists(new QWidget(this)) {
    setObjectName(QStringLiteral("ResultScreen"));

    // The sort pop-up: five keys, then the two directions at indexes 7 and 8.
    m_btnSortItem->setObjectName(QStringLiteral("btnSortItem_"));
    m_btnSortItem->setStyleSheet(kPopUpStyle);
    m_btnSortItem->setIcon(QIcon::fromTheme(QStringLiteral("view-sort-ascending")));
    m_btnSortItem->setToolTip(QStringLiteral("Sort the groups"));
    m_btnSortItem->setAccessibleDescription(m_btnSortItem->toolTip());
    m_btnSortItem->setMenu(m_sortMenu);
    m_sortItems.resize(kSortItems);
    for (int index = 0; index < kSortItems; ++index) {
        if (index == 5)
            continue;
        if (index == 6) {
            m_sortMenu->addSeparator();
            continue;
        }
        QAction* item = m_sortMenu->addAction(QString());
        item->setCheckable(true);
        connect(item, &QAction::triggered, this, [this, index] { emit sortItemChosen(index); });
        m_sortItems[index] = item;
    }

    m_selectDuplicate->setObjectName(QStringLiteral("Select_Duplicate_"));
    m_selectDuplicate->setStyleSheet(kPopUpStyle);
    m_selectDuplicate->setIcon(QIcon::fromTheme(QStringLiteral("edit-select-all")));
    m_selectDuplicate->setToolTip(QStringLiteral("Choose the copies to remove in every group"));
    connect(m_selectDuplicate, &QPushButton::clicked, this, &ResultScreen::selectButtonClicked);
    m_selectMenu->setObjectName(QStringLiteral("select_menu"));
    m_keepNewest = m_selectMenu->addAction(QStringLiteral("Keep Newest"));
    m_keepNewest->setToolTip(QStringLiteral("In every group choose all copies but the newest"));
    m_keepOldest = m_selectMenu->addAction(QStringLiteral("Keep Oldest"));
    m_keepOldest->setToolTip(QStringLiteral("In every group choose all copies but the oldest"));
    m_keepNone = m_selectMenu->addAction(QStringLiteral("Keep None"));
    m_keepNone->setToolTip(QStringLiteral("Choose every copy, the originals too"));
    m_selectMenu->addSeparator();
    m_deselectAll = m_selectMenu->addAction(QStringLiteral("Deselect All"));
    m_selectMenu->setToolTipsVisible(true);

    m_searchALL->setObjectName(QStringLiteral("_searchALL"));
    m_searchALL->setPlaceholderText(QStringLiteral("Search paths"));
    m_searchALL->setAccessibleName(QStringLiteral("Search the paths"));
    m_searchALL->setClearButtonEnabled(true);
    m_searchALL->setFixedWidth(220);
    connect(m_searchALL, &QLineEdit::textChanged, this, &ResultScreen::searchTextChanged);

    auto* controls = new QHBoxLayout;
    controls->setSpacing(8);
    controls->addWidget(m_btnSortItem);
    controls->addWidget(m_selectDuplicate);
    controls->addStretch();
    controls->addWidget(m_searchALL);

    m_typeList->setObjectName(QStringLiteral("typeList"));
    m_typeList->setModel(m_typeModel);
    m_typeList->setItemDelegate(new mainTypeCell(m_typeList));
    m_typeList->setMouseTracking(true);
    m_typeList->setFixedWidth(210);
    m_typeList->setAccessibleName(QStringLiteral("Types found"));
    m_typeList->setStyleSheet(QStringLiteral("QListView { background: #f3f5f7; border: 1px solid #d3d8de;"
                                             " border-radius: 4px; }"));
    connect(m_typeList->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        [this](const QModelIndex& current) {
            if (current.isValid())
                emit typeRowChosen(current.row());
        });

    m_duplicateList->setModel(m_groupModel);
    m_duplicateList->setAccessibleName(QStringLiteral("Duplicate groups"));
    QHeaderView* groupHeader = m_duplicateList->horizontalHeader();
    groupHeader->setSectionResizeMode(OlderGroupModel::NameColumn, QHeaderView::Stretch);
    groupHeader->setSectionResizeMode(OlderGroupModel::SelectedColumn, QHeaderView::Fixed);
    groupHeader->setSectionResizeMode(OlderGroupModel::SizeColumn, QHeaderView::Fixed);
    groupHeader->resizeSection(OlderGroupModel::SelectedColumn, 80);
    groupHeader->resizeSection(OlderGroupModel::SizeColumn, 120);
    connect(m_duplicateList->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        [this](const QModelIndex& current) {
            if (current.isValid())
                emit groupRowChosen(current.row());
        });

    m_notFound->setObjectName(QStringLiteral("notfoundText"));
    m_notFound->setAlignment(Qt::AlignCenter);
    m_notFound->setStyleSheet(QStringLiteral("color: #8a9099; font-size: 15px;"));
    m_notFound->hide();

    auto* groupsAndFiles = new QSplitter(Qt::Vertical, m_lists);
    groupsAndFiles->setChildrenCollapsible(false);
    groupsAndFiles->addWidget(m_duplicateList);
    groupsAndFiles->addWidget(makeFilePane());
    groupsAndFiles->setStretchFactor(0, 3);
    groupsAndFiles->setStretchFactor(1, 2);
    auto* listsLayout = new QVBoxLayout(m_lists);
    listsLayout->setContentsMargins(0, 0, 0, 0);
    listsLayout->addWidget(groupsAndFiles);

    auto* body = new QHBoxLayout;
    body->setSpacing(10);
    body->addWidget(m_typeList);
    body->addWidget(m_lists, 1);
    body->addWidget(m_notFound, 1);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(12, 10, 12, 8);
    column->setSpacing(8);
    column->addLayout(controls);
    column->addLayout(body, 1);
}

QWidget* ResultScreen::makeFilePane() {
    auto* pane = new QWidget(m_lists);
    m_groupTitle->setObjectName(QStringLiteral("groupTitle"));
    QFont bold = m_groupTitle->font();
    bold.setBold(true);
    m_groupTitle->setFont(bold);

    auto* segments = new QHBoxLayout;
    segments->setSpacing(0);
    const QStringList titles = keepSegmentTitles();
    for (int segment = 0; segment < titles.size(); ++segment) {
        auto* button = new QToolButton(pane);
        button->setObjectName(QStringLiteral("segment%1").arg(segment));
        button->setText(titles[segment]);
        button->setStyleSheet(kSegmentStyle);
        // Tab reaches the segments and the arrows move along them; a click leaves the focus alone.
        button->setFocusPolicy(Qt::TabFocus);
        m_keepSegments->addButton(button, segment);
        segments->addWidget(button);
    }
    m_keepSegments->button(0)->setToolTip(QStringLiteral("Keep every copy of this group"));
    m_keepSegments->button(1)->setToolTip(QStringLiteral("Choose every copy of this group, the original too"));
    m_keepSegments->button(2)->setToolTip(QStringLiteral("Choose every copy but the newest"));
    m_keepSegments->button(3)->setToolTip(QStringLiteral("Choose every copy but the oldest"));
    connect(m_keepSegments, &QButtonGroup::idClicked, this, &ResultScreen::keepSegmentClicked);

    auto* header = new QHBoxLayout;
    header->addWidget(m_groupTitle, 1);
    header->addLayout(segments);

    m_sameList->setModel(m_fileModel);
    m_sameList->setAccessibleName(QStringLiteral("Files of the group"));
    m_sameList->setContextMenuPolicy(Qt::CustomContextMenu);
    QHeaderView* fileHeader = m_sameList->horizontalHeader();
    fileHeader->setSectionResizeMode(OlderFileModel::NameColumn, QHeaderView::Interactive);
    fileHeader->setSectionResizeMode(OlderFileModel::FolderColumn, QHeaderView::Stretch);
    fileHeader->resizeSection(OlderFileModel::NameColumn, 220);
    fileHeader->resizeSection(OlderFileModel::DateColumn, 130);
    fileHeader->resizeSection(OlderFileModel::SizeColumn, 80);
    connect(m_sameList, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
        const QModelIndex index = m_sameList->indexAt(pos);
        if (!index.isValid())
            return;
        m_sameList->setCurrentIndex(index);
        emit fileRowRightClicked(index.row(), m_sameList->viewport()->mapToGlobal(pos));
    });
    // Return ticks or clears the current file, as its check box does; Space previews it.
    for (const auto key : { Qt::Key_Return, Qt::Key_Enter }) {
        auto* tick = new QShortcut(QKeySequence(key), m_sameList, nullptr, nullptr, Qt::WidgetShortcut);
        connect(tick, &QShortcut::activated, this, [this] {
            const QModelIndex current = m_sameList->currentIndex();
            if (current.isValid())
                m_fileModel->setData(
                    m_fileModel->index(current.row(), OlderFileModel::NameColumn), QVariant(), Qt::CheckStateRole);
        });
    }
    auto* quickLook = new QShortcut(QKeySequence(Qt::Key_Space), m_sameList, nullptr, nullptr, Qt::WidgetShortcut);
    connect(quickLook, &QShortcut::activated, this, [this] {
        const QModelIndex current = m_sameList->currentIndex();
        if (current.isValid())
            emit quickLookRequested(current.row());
    });

    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 6, 0, 0);
    layout->setSpacing(6);
    layout->addLayout(header);
    layout->addWidget(m_sameList, 1);
    return pane;
}

QList<QWidget*> ResultScreen::tabOrder() const {
    QList<QWidget*> order { m_btnSortItem, m_selectDuplicate, m_searchALL, m_typeList, m_duplicateList };
    for (QAbstractButton* segment : m_keepSegments->buttons())
        order.append(segment);
    order.append(m_sameList);
    return order;
}

QAction* ResultScreen::sortItemAt(int index) const {
    return index >= 0 && index < m_sortItems.size() ? m_sortItems.at(index) : nullptr;
}

void ResultScreen::setSortItems(const QStringList& titles, const QList<bool>& checked, const QString& shown) {
    for (int index = 0; index < m_sortItems.size(); ++index) {
        QAction* item = m_sortItems.at(index);
        if (!item)
            continue;
        item->setText(titles.value(index));
        item->setChecked(checked.value(index));
    }
    m_btnSortItem->setText(shown);
}

void ResultScreen::setCurrentTypeRow(int row) {
    const QSignalBlocker block(m_typeList->selectionModel());
    m_typeList->setCurrentIndex(m_typeModel->index(row));
    m_typeList->viewport()->update();
}

void ResultScreen::setCurrentGroupRow(int row) {
    const QSignalBlocker block(m_duplicateList->selectionModel());
    if (row < 0 || row >= m_groupModel->rowCount()) {
        m_duplicateList->clearSelection();
        return;
    }
    m_duplicateList->selectRow(row);
    m_duplicateList->setCurrentIndex(m_groupModel->index(row, 0));
    m_duplicateList->scrollTo(m_groupModel->index(row, 0));
    m_duplicateList->viewport()->update();
}

void ResultScreen::setCurrentGroupTitle(const QString& title) {
    m_groupTitle->setText(title);
    for (QAbstractButton* segment : m_keepSegments->buttons())
        segment->setEnabled(!title.isEmpty());
}

void ResultScreen::setNothingShown(bool nothing) {
    m_lists->setVisible(!nothing);
    m_notFound->setVisible(nothing);
}

void ResultScreen::setSelectTitle(const QString& title) {
    m_selectDuplicate->setText(title);
}
