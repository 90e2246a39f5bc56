#pragma once
// One command of a command list.

#include "KVProjectData/IKVCommandList.h"
#include "KVProjectData/titles/XmlFragment.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/Object.h"

namespace kv {

class CDiscCommandNode final : public CProjectNode, public Object<IUnknown> {
public:
    CDiscCommandNode() : CProjectNode(typeCommand) {}

    /// Takes the code, the parameters and a copy of the XML data. Throws Error, with the node unchanged, for XML data
    /// that makes no fragment.
    void Assign(const DiscCommandParams& params);

    /// Fills a zeroed record. The XML data is a copy that the record's owner releases.
    void CopyTo(DiscCommandParams& params) const;

    std::string_view GetName(ULONG flags) const override;
    HRESULT LoadElement(const LoadedElement& element) override;
    bool OwnsContent(const XmlView& child) const override;
    XmlElement OwnContent() const override;
    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive& archive) override;

private:
    LONG m_cmd = PlayTitleFromChapter;
    LONG m_param1 = 0;
    LONG m_param2 = 0;
    XmlFragment m_xml;
};

} // namespace kv
