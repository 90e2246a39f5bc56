#include "KVProjectData/undo/NodeImage.h"

#include "KVProjectData/tree/UndoContext.h"

namespace kv {
namespace {

/// Commands are put into a list and taken out, and are never changed.
bool IsFixed(const CProjectNode& node)
{
    return node.Type() == typeCommand;
}

bool StandInOneTree(CProjectNode& left, CProjectNode& right)
{
    const SectionLock links(ParentLinks());
    return &left.Root() == &right.Root();
}

} // namespace

NodeImage::NodeImage(CProjectNode& node, ComPtr<IUnknown> object) : m_object(std::move(object)), m_node(&node)
{
    if (IsFixed(node)) return;
    const SectionLock lock(node.Section());
    m_mode = node.PresentMode();
    m_values = node.GetRecord();
    m_xml = node.KeptXml();
    m_children.reserve(static_cast<std::size_t>(node.ChildCount()));
    for (LONG i = 0; i < node.ChildCount(); ++i) {
        CProjectNode& child = *node.GetChild(i);
        m_children.emplace_back(child, node.List() ? child.Identity() : nullptr);
    }
}

void NodeImage::KeepAbsent(const NodeImage& other)
{
    for (const NodeImage& child : other.m_children) {
        if (child.m_object && !child.m_node->Parent() && !IsFixed(*child.m_node)) {
            m_absent.emplace_back(*child.m_node, child.m_object);
        } else {
            KeepAbsent(child);
        }
    }
}

NodeImage NodeImage::Copy() const
{
    NodeImage copy;
    copy.m_object = m_object;
    copy.m_node = m_node;
    copy.m_mode = m_mode;
    copy.m_values = m_values.Copy();
    copy.m_xml = m_xml;
    copy.m_children.reserve(m_children.size());
    for (const NodeImage& child : m_children)
        copy.m_children.push_back(child.Copy());
    copy.m_absent.reserve(m_absent.size());
    for (const NodeImage& node : m_absent)
        copy.m_absent.push_back(node.Copy());
    if (CNodeList* list = m_node->List()) {
        // Others edit the list meanwhile.
        const SectionLock lock(m_node->Section());
        list->ReserveRoom(m_children.size());
    }
    return copy;
}

void NodeImage::Restore()
{
    if (IsFixed(*m_node)) return;
    const SectionLock lock(m_node->Section());
    const bool entered = m_mode && m_mode->Enter();
    if (CNodeList* list = m_node->List()) {
        RestoreItems(*list);
    } else {
        for (NodeImage& child : m_children)
            child.Restore();
    }
    // Last: a button is where elements that have left it let it stand.
    m_node->ExchangeRecord(m_values);
    m_node->KeepXml(m_xml);
    if (entered) m_mode->Bind();
    for (NodeImage& node : m_absent)
        if (!node.m_node->Parent()) node.Restore();
}

void NodeImage::RestoreXml()
{
    if (IsFixed(*m_node)) return;
    const SectionLock lock(m_node->Section());
    m_node->KeepXml(m_xml);
    for (NodeImage& child : m_children)
        child.RestoreXml();
}

void NodeImage::RestoreItems(CNodeList& list)
{
    LONG place = 0;
    // How far behind its place the last item was found: most of the others are, too.
    LONG behind = 0;
    for (NodeImage& item : m_children) {
        CProjectNode& node = *item.m_node;
        CProjectNode* parent = node.Parent();
        if (parent && parent != &list) {
            if (!parent->List() || !StandInOneTree(*parent, list)) continue;
            const SectionLock lock(parent->Section());
            node.DetachEffect();
            parent->List()->TakeOut(parent->List()->IndexOf(node, 0));
            parent = nullptr;
        }
        if (parent) {
            const LONG index = list.IndexOf(node, place + behind);
            behind = index - place;
            list.MoveChild(index, place);
        } else {
            list.Adopt(node, place, false);
        }
        ++place;
        item.Restore();
        // Elements may be bound to effects that were taken away.
        if (!parent || list.Type() == typeElementList) AttachNowOrLater(node);
    }
    while (list.ChildCount() > place) {
        list.GetChild(list.ChildCount() - 1)->DetachEffect();
        list.TakeOut(list.ChildCount() - 1);
    }
}

} // namespace kv
