#pragma once
// A part of a project as it was at one time.

#include "KVProjectData/tree/NodeList.h"
#include "platform/xml/Element.h"

#include <vector>

namespace kv {

/// A node and all that stands below it: values, XML and children. What lists hold is kept by reference, so that those
/// that come back are the objects that hosts know, with all that is not recorded.
class NodeImage {
public:
    /// The node exists for as long as the image, unless `object` keeps it.
    explicit NodeImage(CProjectNode& node, ComPtr<IUnknown> object = nullptr);

    /// Takes in, as they are now, the objects that stand nowhere and that another image of the node would bring back:
    /// this one makes them again what they are.
    void KeepAbsent(const NodeImage& other);

    /// A copy to restore from, which takes no more memory unless the node is changed meanwhile.
    NodeImage Copy() const;

    /// Makes the node, and what is below it, what it was; once. An object that stands in another list of the project
    /// meanwhile comes back from there. Throws Error where a value is refused; then the node may be anything between.
    void Restore();
    /// Gives the XML back, and leaves everything else.
    void RestoreXml();

private:
    NodeImage() = default;
    void RestoreItems(CNodeList& list);

    ComPtr<IUnknown> m_object;
    CProjectNode* m_node = nullptr;
    std::shared_ptr<const ModeImage> m_mode;
    RecordedValues m_values;
    XmlElement m_xml;
    std::vector<NodeImage> m_children;
    std::vector<NodeImage> m_absent;
};

} // namespace kv
