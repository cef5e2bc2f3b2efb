#include "app/ScanListReview.h"

#include "removal/DeletingPanel.h"

ScanListReview::ScanListReview(Prompter& prompter, QWidget* window, QObject* parent)
    : QObject(parent)
    , m_prompter(prompter)
    , m_window(window) { }

ScanListReview::~ScanListReview() = default;

void ScanListReview::open(const QList<GroupDictionary>& groups, const QList<FileDictionary>& chosen) {
    m_files.clear();
    m_state.duplicateMainArray.clear();
    m_selection.duplicateSelectedArray.clear();
    QHash<QByteArray, DuplicateFilePtr> records;
    quint64 count = 0;
    quint64 wasted = 0;
    for (const GroupDictionary& dictionary : groups) {
        if (dictionary.SameFileList.isEmpty())
            continue;
        auto group = std::make_shared<duplicates>();
        QList<DuplicateFilePtr> members;
        for (const FileDictionary& file : dictionary.SameFileList) {
            auto record = std::make_shared<duplicateFile>(file.url, file.dateNs);
            record->setIdentity(identityOfPath(file.url));
            members.append(record);
            records.insert(file.url, record);
            m_files.insert(file.url, file);
        }
        group->setListAll(members);
        group->setSizeFile(dictionary.SameFileList.first().FileSize);
        group->setOriginal(dictionary.original.url);
        m_state.duplicateMainArray.append(group);
        count += static_cast<quint64>(members.size());
        wasted += static_cast<quint64>(group->sizeFile()) * static_cast<quint64>(members.size());
    }
    for (const FileDictionary& file : chosen) {
        if (const DuplicateFilePtr record = records.value(file.url))
            m_selection.duplicateSelectedArray.append(record);
    }
    m_state.totalDuplicateCount = count;
    m_state.wastedSpaceDuplicates = wasted;
    m_SelectedFileFolderArray = chosen;
    m_lists.getDiplayListAndReloadMainList();

    if (!m_panel) {
        m_panel = std::make_unique<DeletingPanel>(
            m_state, m_selection, m_lists, m_SelectedFileFolderArray, m_prompter, m_window);
        connect(m_panel.get(), &DeletingPanel::closed, this, &ScanListReview::sheetClosed);
    } else {
        m_panel->loadAllData();
    }
    m_panel->open();
}

void ScanListReview::close() {
    if (m_panel && m_panel->isVisible())
        m_panel->closewindow();
}

void ScanListReview::sheetClosed() {
    Outcome outcome;
    for (const DuplicateGroupPtr& group : std::as_const(m_state.duplicateMainArray)) {
        GroupDictionary dictionary;
        for (const DuplicateFilePtr& member : group->listAll())
            dictionary.SameFileList.append(m_files.value(member->urlFile()));
        dictionary.original = m_files.value(group->original());
        outcome.groups.append(dictionary);
    }
    for (const DuplicateFilePtr& record : std::as_const(m_selection.duplicateSelectedArray))
        outcome.chosen.append(m_files.value(record->urlFile()));
    emit finished(outcome);
}
