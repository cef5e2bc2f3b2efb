#include "removal/RemovalRun.h"

RemovalRun::RemovalRun(RemovalActions::Action action, const QList<DuplicateFilePtr>& files,
    const QList<DuplicateGroupPtr>& duplicateMainArray, const QList<QByteArray>& roots,
    const QList<QByteArray>& protectedFolders)
    : m_action(action)
    , m_plan(files, duplicateMainArray, protectedFolders)
    , m_resolver(roots) {
    m_outcomes.reserve(total());
}

const RemovalActions::Outcome& RemovalRun::step() {
    const RemovalPlan::Item& item = m_plan.items().at(static_cast<size_t>(m_outcomes.size()));
    if (item.container >= 0 && m_outcomes.at(item.container).done) {
        RemovalActions::Outcome outcome;
        outcome.file = item.file;
        outcome.keptCopy = item.kept ? item.kept->urlFile() : QByteArray();
        outcome.done = true;
        m_outcomes.append(outcome);
    } else {
        m_outcomes.append(RemovalActions::actOn(m_action, item, m_resolver, &m_journal));
    }
    if (atEnd())
        m_journal.flush();
    return m_outcomes.last();
}
