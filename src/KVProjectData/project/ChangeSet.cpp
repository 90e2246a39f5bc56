#include "KVProjectData/project/ChangeSet.h"

namespace kv {

void ChangeSet::Insert(LONG id)
{
    const SectionLock lock(m_section);
    if (m_last == id) return;
    m_ids.insert(id);
    m_last = id;
}

ChangeSet::Report ChangeSet::Take()
{
    const SectionLock lock(m_section);
    Report report;
    auto id = m_ids.begin();
    for (; id != m_ids.end() && report.count < static_cast<LONG>(kReportSize); ++id) {
        report.ids[static_cast<std::size_t>(report.count++)] = *id;
    }
    m_ids.erase(m_ids.begin(), id);
    m_last.reset();
    return report;
}

} // namespace kv
