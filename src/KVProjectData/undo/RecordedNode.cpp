#include "KVProjectData/undo/RecordedNode.h"

namespace kv {

Bstr RecordedNode::Description() const
{
    std::string text(NodeTypeName(m_type));
    text += '[' + std::to_string(m_id) + ']';
    return Bstr(ToUtf16(text));
}

} // namespace kv
