#include "review/ResultLists.h"

#include "base/Log.h"
#include "engine/ScanState.h"
#include "review/LetGo.h"
#include "review/ResultIndex.h"
#include "review/SearchIndex.h"
#include "review/Selection.h"
#include "review/TextCompare.h"

#include <QMutex>
#include <QMutexLocker>
#include <malloc.h>
#include <numeric>

// What is worked out for one state of the groups, shared by the rebuilds on either thread.
struct ResultLists::Work {
    QMutex mutex;
    // The groups it was worked out from, to notice a list changed without resultWillChange.
    const DuplicateGroupPtr* groupsData = nullptr;
    qsizetype groupsSize = -1;
    // Set when the groups change: even the index stops then.
    std::atomic<bool> dropped { false };
    std::shared_ptr<const ResultIndex> index;
    // The search's index, made once by whichever asks first (a second asker waits for it).
    QMutex searchBuild;
    std::shared_ptr<const SearchIndex> search;
    // The orders of keys 0 to 3, ascending and descending; key 4 follows the selection and is
    // worked out for each rebuild.
    std::shared_ptr<const std::vector<quint32>> orders[4][2];
    QString needle;
    std::shared_ptr<const std::vector<bool>> matches;
};

struct ResultLists::Request {
    QList<DuplicateGroupPtr> groups;
    quint64 key = 0;
    bool descending = false;
    quint64 typefilter = AllTypes;
    QString needle; // folded
    QList<DuplicateFilePtr> chosen; // for key 4
};

namespace {

// The search's index of the result, made when first needed; nothing when the result changed first.
std::shared_ptr<const SearchIndex> searchIndexFor(ResultLists::Work& work, const QList<DuplicateGroupPtr>& groups) {
    QMutexLocker building(&work.searchBuild);
    {
        QMutexLocker lock(&work.mutex);
        if (work.search)
            return work.search;
    }
    std::shared_ptr<const SearchIndex> made = SearchIndex::make(groups, work.dropped);
    QMutexLocker lock(&work.mutex);
    work.search = made;
    return made;
}

// The rows of one rebuild; nothing when `stop` turned true first.
std::optional<std::vector<quint32>> rowsFor(
    ResultLists::Work& work, const ResultLists::Request& request, const std::atomic<bool>& stop) {
    std::shared_ptr<const ResultIndex> index;
    {
        QMutexLocker lock(&work.mutex);
        index = work.index;
    }
    if (!index) {
        index = ResultIndex::make(request.groups, work.dropped);
        if (!index)
            return std::nullopt;
        QMutexLocker lock(&work.mutex);
        work.index = index;
    }

    std::shared_ptr<const std::vector<quint32>> order;
    const bool kept = request.key < 4;
    if (kept) {
        QMutexLocker lock(&work.mutex);
        order = work.orders[request.key][request.descending];
    }
    if (!order) {
        const FileSet chosen = request.key == ResultLists::DuplicateSelected ? FileSet(request.chosen) : FileSet();
        std::optional<std::vector<quint32>> made
            = index->order(request.groups, request.key, request.descending, chosen, stop);
        if (!made && request.key <= ResultLists::DuplicateSelected)
            return std::nullopt;
        if (!made) { // an unknown key leaves the groups in their order
            made.emplace(static_cast<size_t>(index->size()));
            std::iota(made->begin(), made->end(), quint32(0));
        }
        order = std::make_shared<const std::vector<quint32>>(std::move(*made));
        if (kept) {
            QMutexLocker lock(&work.mutex);
            work.orders[request.key][request.descending] = order;
        }
    }

    std::shared_ptr<const std::vector<bool>> matches;
    if (!request.needle.isEmpty()) {
        std::shared_ptr<const std::vector<bool>> within;
        {
            QMutexLocker lock(&work.mutex);
            if (work.needle == request.needle)
                matches = work.matches;
            else if (!work.needle.isEmpty() && work.matches && request.needle.contains(work.needle))
                within = work.matches;
        }
        if (!matches) {
            const std::shared_ptr<const SearchIndex> search = searchIndexFor(work, request.groups);
            if (!search || stop.load())
                return std::nullopt;
            std::optional<std::vector<bool>> made
                = search->matching(request.groups, request.needle, within.get(), stop);
            if (!made)
                return std::nullopt;
            matches = std::make_shared<const std::vector<bool>>(std::move(*made));
            QMutexLocker lock(&work.mutex);
            work.needle = request.needle;
            work.matches = matches;
        }
    }

    std::vector<quint32> rows;
    rows.reserve(order->size());
    const bool allTypes = request.typefilter == ResultLists::AllTypes;
    for (const quint32 group : *order) {
        if (!allTypes) {
            const std::optional<int>& type = index->typeAt(group);
            if (!type || static_cast<quint64>(*type) != request.typefilter)
                continue;
        }
        if (matches && !(*matches)[group])
            continue;
        rows.push_back(group);
    }
    return rows;
}

} // namespace

ResultLists::ResultLists(ScanState& state, const Selection& selection)
    : m_state(state)
    , m_selection(selection)
    , m_work(std::make_shared<Work>())
    , m_receiver(std::make_unique<QObject>()) {
    // One rebuild at a time: a newer one waits behind an older one, which stops early.
    m_pool.setMaxThreadCount(1);
    m_searchPool.setMaxThreadCount(1);
}

ResultLists::~ResultLists() {
    m_work->dropped = true;
    if (m_stopCurrent)
        *m_stopCurrent = true;
    m_pool.waitForDone();
    m_searchPool.waitForDone();
}

void ResultLists::resetSortAndFilter() {
    typesort = OriginalFilename;
    typesortorder = Ascending;
    typefilter = AllTypes;
}

bool ResultLists::sortDuplicatesFor(quint64 tag) {
    if (tag == typesortorder || tag == typesort) {
        Log::line(QStringLiteral("no need to sort"));
        return false;
    }
    if (tag == Ascending || tag == Descending)
        typesortorder = tag;
    else
        typesort = tag;
    Log::line(QStringLiteral("sorting"));
    return true;
}

bool ResultLists::setTypeFilter(quint64 tag) {
    if (tag == typefilter)
        return false;
    typefilter = tag;
    return true;
}

bool ResultLists::filterUsingTypeAction(quint64 tag) {
    if (!setTypeFilter(tag))
        return false;
    getDiplayListAndReloadMainList();
    return true;
}

ResultLists::Request ResultLists::request() const {
    Request request;
    request.groups = m_state.duplicateMainArray;
    request.key = typesort;
    request.descending = typesortorder != Ascending;
    request.typefilter = typefilter;
    if (!searchText.isEmpty())
        request.needle = TextCompare::foldedNeedle(searchText);
    if (typesort == DuplicateSelected)
        request.chosen = m_selection.duplicateSelectedArray;
    return request;
}

void ResultLists::forgetIfChanged() {
    const QList<DuplicateGroupPtr>& groups = m_state.duplicateMainArray;
    if (m_work->groupsData == groups.constData() && m_work->groupsSize == groups.size())
        return;
    resultWillChange();
    m_work->groupsData = groups.constData();
    m_work->groupsSize = groups.size();
}

bool ResultLists::isQuick(const Request& request) const {
    if (request.groups.size() < kBackgroundFrom)
        return true;
    QMutexLocker lock(&m_work->mutex);
    return m_work->index && request.key < 4 && m_work->orders[request.key][request.descending]
        && (request.needle.isEmpty() || request.needle == m_work->needle);
}

void ResultLists::getDiplayListAndReloadMainList() {
    forgetIfChanged();
    if (m_stopCurrent)
        *m_stopCurrent = true;
    ++m_generation;
    m_busy = false;
    if (typesort > DuplicateSelected)
        Log::line(QStringLiteral("error"));
    const Request now = request();
    const std::atomic<bool> never { false };
    selectedMain = 0;
    duplicateDisplayArray = DisplayList(now.groups, rowsFor(*m_work, now, never).value_or(std::vector<quint32>()));
}

bool ResultLists::rebuildDisplayList() {
    forgetIfChanged();
    if (isQuick(request())) {
        getDiplayListAndReloadMainList();
        return true;
    }
    if (typesort > DuplicateSelected)
        Log::line(QStringLiteral("error"));
    if (m_stopCurrent)
        *m_stopCurrent = true;
    auto stop = std::make_shared<std::atomic<bool>>(false);
    m_stopCurrent = stop;
    const quint64 generation = ++m_generation;
    m_busy = true;
    m_pool.start([this, work = m_work, request = request(), stop, generation, receiver = m_receiver.get()] {
        std::optional<std::vector<quint32>> rows = rowsFor(*work, request, *stop);
        if (!rows)
            return;
        // Handed over on the lists' own thread, where a newer rebuild or a change of the result makes
        // this one stale; the receiver is deleted only after the pool has finished.
        QMetaObject::invokeMethod(
            receiver,
            [this, groups = request.groups, rows = std::move(*rows), generation]() mutable {
                if (generation != m_generation)
                    return;
                m_busy = false;
                selectedMain = 0;
                // The list replaced may hold the last references to groups a removal took away.
                letGoElsewhere(std::exchange(duplicateDisplayArray, DisplayList(groups, std::move(rows))));
                if (m_listener && m_listenerContext)
                    m_listener();
            },
            Qt::QueuedConnection);
    });
    return false;
}

void ResultLists::setDisplayListener(QObject* context, std::function<void()> listener) {
    m_listenerContext = context;
    m_listener = std::move(listener);
}

void ResultLists::prepare() {
    forgetIfChanged();
    Request first;
    first.groups = m_state.duplicateMainArray;
    if (first.groups.size() < kBackgroundFrom)
        return;
    const auto never = std::make_shared<std::atomic<bool>>(false);
    // The first list's needs first; then the search's index, beside the rebuilds that follow.
    m_pool.start([work = m_work, first, never, searchPool = &m_searchPool] {
        if (!rowsFor(*work, first, *never))
            return;
        searchPool->start([work, groups = first.groups] {
            searchIndexFor(*work, groups);
            // The scan's tables and what making the indexes took are free now: the memory goes
            // back to the system instead of staying with the process for as long as it runs.
            malloc_trim(0);
        });
    });
}

void ResultLists::resultWillChange() {
    m_work->dropped = true;
    if (m_stopCurrent)
        *m_stopCurrent = true;
    ++m_generation;
    m_busy = false;
    m_pool.waitForDone();
    m_searchPool.waitForDone();
    m_work = std::make_shared<Work>();
    m_work->groupsData = m_state.duplicateMainArray.constData();
    m_work->groupsSize = m_state.duplicateMainArray.size();
}
