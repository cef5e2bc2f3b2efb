// The result screen's widgets and how they are laid out and connected.
#include "review/resultView.h"

#include "controls/OverlayScroller.h"
#include "review/FileListModel.h"
#include "review/FileRowDelegate.h"
#include "review/GroupListModel.h"
#include "review/GroupRowDelegate.h"
#include "review/PreviewView.h"
#include "review/PreviewWindow.h"
#include "review/ResultLists.h"
#include "review/Selection.h"

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace {

// Buttons drawn as one segmented control: joined, the ends rounded, the pressed filter filled.
const QString kControlStyle = QStringLiteral(
    "QPushButton { color: #1d2126; border: 1px solid #b4bac2; border-radius: 6px; padding: 4px 12px;"
    " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, stop:1 #eceef1); }"
    "QPushButton:pressed { background: #dfe3e8; }"
    "QPushButton:disabled { color: #9aa1aa; }"
    "QPushButton[hasMenu=\"true\"] { padding-right: 26px; }"
    "QPushButton::menu-indicator { subcontrol-position: right center; subcontrol-origin: padding; right: 9px; }"
    "QPushButton[segment=\"middle\"] { border-radius: 0; border-left: none; }"
    "QPushButton[segment=\"first\"] { border-top-right-radius: 0; border-bottom-right-radius: 0; }"
    "QPushButton[segment=\"last\"] { border-top-left-radius: 0; border-bottom-left-radius: 0; border-left: none; }"
    "QPushButton:checked { color: white; border-color: #2a6fb5;"
    " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #4a9be6, stop:1 #2f80d0); }"
    // The focus mark: a border twice as thick, the padding one point thinner so nothing moves.
    "QPushButton:focus { border: 2px solid #2f80d0; padding: 3px 11px; outline: none; }"
    "QPushButton:checked:focus { border-color: #bfe0ff; }"
    "QPushButton[hasMenu=\"true\"]:focus { padding-right: 25px; }"
    "QPushButton[segment=\"middle\"]:focus, QPushButton[segment=\"last\"]:focus { padding-left: 10px; }");
const QString kListStyle
    = QStringLiteral("QListView { background: #ffffff; border: 1px solid #d3d8de; border-radius: 6px; }"
                     "QListView:focus { border-color: #2f80d0; }");

struct FilterTitle {
    quint64 tag;
    const char* title;
};
constexpr FilterTitle kFilters[] = { { 10, "All" }, { 20, "Folders" }, { 30, "Archives" }, { 40, "Text" },
    { 50, "Photos" }, { 60, "Media" }, { 70, "Other" } };
const char* const kSortTitles[]
    = { "Original Filename", "Wasted Size", "Duplicate Count", "Duplicate Type", "Duplicate Selected" };

// Joins buttons into one segmented control. Tab reaches it and the arrows move along it (in an
// exclusive control they move the choice, and Tab, either way, stops at the chosen button only); a
// click leaves the focus where it was (on a list, say).
void markSegments(const QList<QPushButton*>& buttons, QWidget* owner, bool exclusive) {
    auto* group = new QButtonGroup(owner);
    group->setExclusive(exclusive);
    for (qsizetype i = 0; i < buttons.size(); ++i) {
        const char* position = i == 0 ? "first" : i == buttons.size() - 1 ? "last" : "middle";
        buttons[i]->setProperty("segment", QString::fromLatin1(position));
        buttons[i]->setFocusPolicy(!exclusive || buttons[i]->isChecked() ? Qt::TabFocus : Qt::NoFocus);
        group->addButton(buttons[i]);
    }
    if (!exclusive)
        return;
    QObject::connect(group, &QButtonGroup::buttonToggled, owner, [group](QAbstractButton* chosen, bool checked) {
        if (!checked)
            return;
        for (QAbstractButton* button : group->buttons())
            button->setFocusPolicy(button == chosen ? Qt::TabFocus : Qt::NoFocus);
    });
}

QListView* makeList(const QString& name, int tag) {
    auto* list = new QListView;
    list->setObjectName(name);
    list->setProperty("tag", tag);
    list->setUniformItemSizes(true);
    // A long list is laid out in steps between other events: a new order shows at once.
    list->setLayoutMode(QListView::Batched);
    list->setBatchSize(10000);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setMouseTracking(true);
    list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setStyleSheet(kListStyle);
    list->setFocusPolicy(Qt::StrongFocus);
    new OverlayScroller(list);
    return list;
}

QLabel* secondaryLabel() {
    auto* label = new QLabel;
    label->setStyleSheet(QStringLiteral("color: #6b727b;"));
    return label;
}

} // namespace

void resultView::buildLayout() {
    setStyleSheet(kControlStyle);
    m_groupDelegate = new GroupRowDelegate(this);
    m_fileDelegate = new FileRowDelegate(this);

    m_duplicateListMain = makeList(QStringLiteral("duplicateListMain"), groupTableTag);
    m_duplicateListMain->setModel(m_groupModel);
    m_duplicateListMain->setItemDelegate(m_groupDelegate);
    m_duplicateListMain->setMinimumWidth(260);
    m_duplicateListMain->setAccessibleName(QStringLiteral("Duplicate groups"));
    m_sameList = makeList(QStringLiteral("sameList"), fileTableTag);
    m_sameList->setModel(m_fileModel);
    m_sameList->setItemDelegate(m_fileDelegate);
    m_sameList->setMinimumHeight(3 * FileRowDelegate::kRowHeight + 2);
    m_sameList->setAccessibleName(QStringLiteral("Copies of the group"));
    m_sameList->setAccessibleDescription(
        QStringLiteral("Return chooses or leaves the current copy; Space shows it in a larger preview"));
    for (QListView* list : { m_duplicateListMain, m_sameList })
        list->installEventFilter(this);
    connect(m_duplicateListMain->selectionModel(), &QItemSelectionModel::currentChanged, this,
        [this](const QModelIndex& current) {
            if (current.isValid())
                chooseGroupRow(current.row());
        });
    connect(
        m_sameList->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& current) {
            if (current.isValid())
                chooseFileRow(current.row());
        });
    connect(m_fileDelegate, &FileRowDelegate::checkBoxClicked, this, &resultView::checkBoxActionFromTableRow);
    connect(m_fileDelegate, &FileRowDelegate::revealClicked, this, &resultView::revealFileInFinder);
    m_sameList->viewport()->installEventFilter(this);

    auto* files = new QWidget;
    auto* filesColumn = new QVBoxLayout(files);
    filesColumn->setContentsMargins(0, 0, 0, 0);
    filesColumn->setSpacing(6);
    filesColumn->addWidget(buildGroupHeader());
    filesColumn->addWidget(m_sameList, 1);

    auto* right = new QSplitter(Qt::Vertical);
    right->setChildrenCollapsible(false);
    right->setHandleWidth(10);
    right->addWidget(files);
    right->addWidget(buildPreviewArea());
    right->setStretchFactor(0, 2);
    right->setStretchFactor(1, 3);
    right->setSizes({ 220, 300 });

    m_DisplayView = new QSplitter(Qt::Horizontal);
    m_DisplayView->setObjectName(QStringLiteral("DisplayView"));
    m_DisplayView->setChildrenCollapsible(false);
    m_DisplayView->setHandleWidth(12);
    m_DisplayView->addWidget(m_duplicateListMain);
    m_DisplayView->addWidget(right);
    m_DisplayView->setStretchFactor(0, 0);
    m_DisplayView->setStretchFactor(1, 1);
    m_DisplayView->setSizes({ 310, 560 });

    m_notfoundText = new QLabel(QStringLiteral("No duplicates match the chosen type or search."));
    m_notfoundText->setObjectName(QStringLiteral("notfoundText"));
    m_notfoundText->setAlignment(Qt::AlignCenter);
    m_notfoundText->setStyleSheet(QStringLiteral("color: #8a9099; font-size: 15px;"));

    auto* body = new QWidget;
    auto* stack = new QGridLayout(body);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->addWidget(m_DisplayView, 0, 0);
    stack->addWidget(m_notfoundText, 0, 0);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(14, 10, 14, 12);
    column->setSpacing(10);
    column->addWidget(buildTopBar());
    column->addWidget(body, 1);
    column->addWidget(buildBottomBar());

    m_previewWindow = new PreviewWindow(this);
}

QWidget* resultView::buildTopBar() {
    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    for (const FilterTitle& filter : kFilters) {
        auto* button = new QPushButton(QString::fromLatin1(filter.title));
        button->setObjectName(QStringLiteral("filter%1").arg(filter.tag));
        button->setProperty("tag", filter.tag);
        button->setCheckable(true);
        button->setChecked(filter.tag == ResultLists::AllTypes);
        button->setAccessibleDescription(QStringLiteral("Show duplicates of this type"));
        connect(button, &QPushButton::clicked, this, [this, button] { filterUsingTypeAction(button); });
        m_filterButtons.append(button);
        row->addWidget(button);
    }
    markSegments(m_filterButtons, bar, true);
    row->addStretch(1);

    auto* sortLabel = secondaryLabel();
    sortLabel->setText(QStringLiteral("Sort by"));
    row->addWidget(sortLabel);
    row->addSpacing(6);
    m_sortingButton = new QPushButton;
    m_sortingButton->setObjectName(QStringLiteral("sortingButton"));
    m_sortingButton->setFocusPolicy(Qt::TabFocus);
    m_sortingButton->setAccessibleName(QStringLiteral("Sort by"));
    m_sortingButton->setMinimumWidth(150);
    m_sortMenu = new QMenu(m_sortingButton);
    for (quint64 tag = 0; tag <= ResultLists::Descending; ++tag) {
        if (tag == ResultLists::Ascending)
            m_sortMenu->addSeparator();
        const QString title = tag < ResultLists::Ascending ? QString::fromLatin1(kSortTitles[tag])
            : tag == ResultLists::Ascending                ? QStringLiteral("Ascending")
                                                           : QStringLiteral("Descending");
        QAction* item = m_sortMenu->addAction(title);
        // Named apart from "tag": the menu bar's rules enable every action carrying that property.
        item->setProperty("sortTag", tag);
        item->setCheckable(true);
        item->setChecked(m_lists.isSortItemChecked(tag));
        connect(item, &QAction::triggered, this, [this, tag] { sortDuplicatesFor(tag); });
        m_sortItems.append(item);
    }
    m_sortingButton->setMenu(m_sortMenu);
    m_sortingButton->setProperty("hasMenu", true);
    m_sortingButton->setText(m_sortItems.first()->text());
    row->addWidget(m_sortingButton);
    row->addSpacing(10);

    m_searchfieldDuplicate = new QLineEdit;
    m_searchfieldDuplicate->setObjectName(QStringLiteral("searchfieldDuplicate"));
    m_searchfieldDuplicate->setPlaceholderText(QStringLiteral("Search"));
    m_searchfieldDuplicate->setAccessibleName(QStringLiteral("Search the paths"));
    m_searchfieldDuplicate->setClearButtonEnabled(true);
    m_searchfieldDuplicate->setFixedWidth(180);
    m_searchfieldDuplicate->setStyleSheet(QStringLiteral(
        "QLineEdit { border: 1px solid #b4bac2; border-radius: 6px; padding: 3px 6px; background: #ffffff; }"
        "QLineEdit:focus { border-color: #2f80d0; }"));
    connect(m_searchfieldDuplicate, &QLineEdit::textChanged, this, [this] { m_searchDelay.start(); });
    connect(m_searchfieldDuplicate, &QLineEdit::returnPressed, this, &resultView::searchFilterAction);
    row->addWidget(m_searchfieldDuplicate);
    return bar;
}

QWidget* resultView::buildGroupHeader() {
    auto* header = new QWidget;
    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(2, 0, 0, 0);
    row->setSpacing(8);
    m_checkBoxAllDuplicates = new QCheckBox;
    m_checkBoxAllDuplicates->setObjectName(QStringLiteral("checkBoxAllDuplicates"));
    m_checkBoxAllDuplicates->setTristate(true);
    m_checkBoxAllDuplicates->setToolTip(QStringLiteral("Choose every copy of this group"));
    m_checkBoxAllDuplicates->setAccessibleName(m_checkBoxAllDuplicates->toolTip());
    // The box has no text for the style to frame: a ring round it marks the focus.
    m_checkBoxAllDuplicates->setStyleSheet(
        QStringLiteral("QCheckBox { border: 2px solid transparent; border-radius: 4px; padding: 1px; }"
                       "QCheckBox:focus { border-color: #2f80d0; }"));
    connect(m_checkBoxAllDuplicates, &QCheckBox::clicked, this, &resultView::checkBoxActionMain);
    row->addWidget(m_checkBoxAllDuplicates);
    m_groupName = new QLabel;
    QFont bold = m_groupName->font();
    bold.setBold(true);
    m_groupName->setFont(bold);
    m_groupName->setMinimumWidth(60);
    row->addWidget(m_groupName, 1);

    auto* segments = new QHBoxLayout;
    segments->setSpacing(0);
    const char* const titles[] = { "Keep All", "Keep Newest", "Keep Oldest" };
    for (int segment = KeepAll; segment <= KeepOldest; ++segment) {
        auto* button = new QPushButton(QString::fromLatin1(titles[segment]));
        button->setObjectName(QStringLiteral("keepSegment%1").arg(segment));
        button->setProperty("tag", segment);
        connect(button, &QPushButton::clicked, this, [this, segment] { keepSegmentAction(segment); });
        m_keepSegments.append(button);
        segments->addWidget(button);
    }
    markSegments(m_keepSegments, header, false);
    m_keepSegments[KeepAll]->setToolTip(QStringLiteral("Keep every copy of this group"));
    m_keepSegments[KeepNewest]->setToolTip(QStringLiteral("Choose every copy but the newest"));
    m_keepSegments[KeepOldest]->setToolTip(QStringLiteral("Choose every copy but the oldest"));
    row->addLayout(segments);
    return header;
}

QWidget* resultView::buildPreviewArea() {
    auto* viewPreview = new QWidget;
    viewPreview->setObjectName(QStringLiteral("viewPreview"));
    viewPreview->setAttribute(Qt::WA_StyledBackground);
    viewPreview->setStyleSheet(
        QStringLiteral("#viewPreview { background: #ffffff; border: 1px solid #d3d8de; border-radius: 6px; }"));
    m_quicklookview = new PreviewView;
    m_quicklookview->setObjectName(QStringLiteral("quicklookview"));
    m_selectedFileImage = new QLabel;
    m_selectedFileImage->setFixedSize(18, 18);
    m_selectedFileName = new QLabel;
    QFont bold = m_selectedFileName->font();
    bold.setBold(true);
    m_selectedFileName->setFont(bold);
    m_selectedFileName->setMinimumWidth(40);
    m_detailsAll = secondaryLabel();
    m_detailsAll->setObjectName(QStringLiteral("detailsAll"));

    auto* caption = new QHBoxLayout;
    caption->setContentsMargins(12, 0, 12, 8);
    caption->setSpacing(6);
    caption->addWidget(m_selectedFileImage);
    caption->addWidget(m_selectedFileName, 1);
    caption->addWidget(m_detailsAll);
    auto* column = new QVBoxLayout(viewPreview);
    column->setContentsMargins(1, 6, 1, 0);
    column->setSpacing(4);
    column->addWidget(m_quicklookview, 1);
    column->addLayout(caption);
    return viewPreview;
}

QWidget* resultView::buildBottomBar() {
    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    m_autoSelectBTN = new QPushButton(QStringLiteral("Auto Select"));
    m_autoSelectBTN->setObjectName(QStringLiteral("autoSelectBTN"));
    m_autoSelectBTN->setFocusPolicy(Qt::TabFocus);
    m_autoSelectMenu = new QMenu(m_autoSelectBTN);
    for (const QString& title : { Selection::keepNewestTitle(), Selection::keepOldestTitle() }) {
        QAction* item = m_autoSelectMenu->addAction(title);
        connect(item, &QAction::triggered, this, [this, title] { AutoSelectAction(title); });
    }
    m_autoSelectBTN->setMenu(m_autoSelectMenu);
    m_autoSelectBTN->setProperty("hasMenu", true);
    m_deselectAllBtn = new QPushButton(QStringLiteral("Deselect All"));
    m_deselectAllBtn->setObjectName(QStringLiteral("deselectAllBtn"));
    m_deselectAllBtn->setFocusPolicy(Qt::TabFocus);
    connect(m_deselectAllBtn, &QPushButton::clicked, this, [this] { AutoSelectAction(std::nullopt); });
    row->addWidget(m_autoSelectBTN);
    row->addWidget(m_deselectAllBtn);
    row->addStretch(1);
    return bar;
}

QList<QWidget*> resultView::tabOrder() const {
    QList<QWidget*> order(m_filterButtons.cbegin(), m_filterButtons.cend());
    order << m_sortingButton << m_searchfieldDuplicate << m_duplicateListMain << m_checkBoxAllDuplicates;
    order.append(QList<QWidget*>(m_keepSegments.cbegin(), m_keepSegments.cend()));
    order << m_sameList << m_autoSelectBTN << m_deselectAllBtn;
    return order;
}

QAction* resultView::autoSelectItem(const QString& title) const {
    const QList<QAction*> items = m_autoSelectMenu->actions();
    for (QAction* item : items) {
        if (item->text() == title)
            return item;
    }
    return nullptr;
}
