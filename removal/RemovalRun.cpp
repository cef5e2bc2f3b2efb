#include "removal/RemovalRun.h"

RemovalRun::RemovalRun(RemovalActions::Action action, const QList<DuplicateFilePtr>& files,
    const QList<DuplicateGroupPtr>& duplicateMainArray)
    : m_action(action)
    , m_files(files) {
    m_outcomes.reserve(files.size());
    for (const DuplicateFilePtr& file : files)
        m_chosen.insert(file.get());
    for (const DuplicateGroupPtr& group : duplicateMainArray) {
        for (const DuplicateFilePtr& member : group->listAll()) {
            if (m_chosen.count(member.get()))
                m_groupOf.emplace(member.get(), group);
        }
    }
}

QByteArray RemovalRun::keptCopyFor(const DuplicateFilePtr& file) {
    const auto found = m_groupOf.find(file.get());
    if (found == m_groupOf.end())
        return {};
    const duplicates& group = *found->second;
    auto kept = m_keptCopies.find(&group);
    if (kept == m_keptCopies.end()) {
        const QByteArray copy = RemovalActions::keptCopyOf(
            group, [this](const DuplicateFilePtr& member) { return m_chosen.count(member.get()) > 0; });
        kept = m_keptCopies.emplace(&group, copy).first;
    }
    return kept->second;
}

const RemovalActions::Outcome& RemovalRun::step() {
    const DuplicateFilePtr& file = m_files.at(m_outcomes.size());
    m_outcomes.append(RemovalActions::runOne(m_action, file, keptCopyFor(file)));
    return m_outcomes.last();
}
