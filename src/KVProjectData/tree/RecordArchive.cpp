#include "KVProjectData/tree/RecordArchive.h"

#include "KVProjectData/tree/ProjectNode.h"

namespace kv {

void RecordArchive::ID(CProjectNode& node)
{
    LONG id = node.ID();
    if (Number(id)) node.SetID(id);
}

bool RecordArchive::operator()(std::string_view, Bstr& field)
{
    const std::uint32_t index = m_strings++;
    if (!m_record) return false;
    if (m_exchanges) {
        field = m_record->Exchange(index, std::move(field));
    } else {
        m_record->Exchange(index, field);
    }
    return m_exchanges;
}

} // namespace kv
