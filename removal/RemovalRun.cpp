#include "removal/RemovalRun.h"

#include <algorithm>
#include <numeric>

namespace {

// The folder that holds an item, as its path says.
QByteArrayView folderOf(const QByteArray& path) {
    return QByteArrayView(path.constData(), std::max<qsizetype>(path.lastIndexOf('/'), 0));
}

} // namespace

RemovalRun::RemovalRun(RemovalActions::Action action, const QList<DuplicateFilePtr>& files,
    const QList<DuplicateGroupPtr>& duplicateMainArray, const QList<QByteArray>& roots,
    const QList<QByteArray>& protectedFolders)
    : m_action(action)
    , m_plan(files, duplicateMainArray, protectedFolders)
    , m_resolver(roots) {
    const std::vector<RemovalPlan::Item>& items = m_plan.items();
    m_order.resize(items.size());
    std::iota(m_order.begin(), m_order.end(), size_t(0));
    // The plan puts the items inside chosen folders after all the others, each after its folder.
    const auto inside = std::find_if(m_order.begin(), m_order.end(), [&](size_t i) { return items[i].container >= 0; });
    std::vector<QByteArrayView> folders(items.size());
    for (auto it = m_order.begin(); it != inside; ++it)
        folders[*it] = folderOf(items[*it].file->urlFile());
    std::stable_sort(m_order.begin(), inside, [&](size_t a, size_t b) { return folders[a] < folders[b]; });
    m_outcomes.resize(total());
}

const RemovalActions::Outcome& RemovalRun::step() {
    const size_t index = m_order[static_cast<size_t>(m_handled++)];
    const RemovalPlan::Item& item = m_plan.items()[index];
    RemovalActions::Outcome& outcome = m_outcomes[static_cast<qsizetype>(index)];
    if (item.container >= 0 && m_outcomes.at(item.container).done) {
        outcome.file = item.file;
        outcome.keptCopy = item.kept ? item.kept->urlFile() : QByteArray();
        outcome.done = true;
    } else {
        outcome = RemovalActions::actOn(m_action, item, m_resolver, &m_journal);
    }
    if (atEnd())
        m_journal.flush();
    return outcome;
}
