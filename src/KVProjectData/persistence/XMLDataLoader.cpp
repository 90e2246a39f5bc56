#include "KVProjectData/persistence/XMLDataLoader.h"

#include "KVProjectData/content/StringRefs.h"

namespace kv {
namespace {

/// The name of an element; empty for every other node.
std::string_view ElementName(IXMLDOMNode* node)
{
    std::string_view name;
    if (const auto element = Query<IXMLElementAttributes>(node)) element->ElementName(&name);
    return name;
}

template <class Each>
void ForEachChild(IXMLDOMNode* parent, Each&& each)
{
    ComPtr<IXMLDOMNode> child;
    ThrowIfFailed(parent->get_firstChild(child.Put()));
    while (child) {
        each(child.Get());
        ComPtr<IXMLDOMNode> next;
        ThrowIfFailed(child->get_nextSibling(next.Put()));
        child = std::move(next);
    }
}

/// False for a node that cannot read its element. Lack of memory is no fault of the element: it ends the load.
bool ReadElement(CProjectNode& node, IXMLDOMNode* element)
{
    const HRESULT result = Guarded([&] { return node.LoadXML(element); });
    if (result == E_OUTOFMEMORY) throw Error(result);
    return SUCCEEDED(result);
}

} // namespace

HRESULT CKVXMLDataLoader::Load(IXMLDOMNode* root)
{
    const HRESULT loaded = Guarded([&] {
        LoadRoot(root);
        return S_OK;
    });
    const HRESULT numbered = Guarded([&] {
        for (const Item& item : m_unnumbered)
            item.node->AssignID();
        return S_OK;
    });
    return FAILED(loaded) ? loaded : numbered;
}

void CKVXMLDataLoader::LoadRoot(IXMLDOMNode* root)
{
    // What cannot be resolved is loaded as it is.
    if (!ElementName(root).empty()) ResolveStringRefs(root);
    const std::string_view name = ElementName(root);
    const ElementRow* row = FindElement(name);
    CProjectNode* node = FindNode(row, name, nullptr);
    if (node && !ReadElement(*node, root)) return;
    if (!row || !row->Leaf()) {
        ForEachChild(root, [&](IXMLDOMNode* child) { LoadElement(child, node); });
    }
}

CProjectNode* CKVXMLDataLoader::FindNode(const ElementRow* row, std::string_view name, CProjectNode* parent)
{
    if (!row) return nullptr;
    if (row->type == typeProject) return &m_project;
    if (!parent) return nullptr;
    return row->Item() ? m_factory.CreateItem(row->type, *parent) : parent->FindChildByTypeAndName(row->type, name);
}

void CKVXMLDataLoader::LoadElement(IXMLDOMNode* element, CProjectNode* parent)
{
    const std::string_view name = ElementName(element);
    if (name.empty()) return;
    const ElementRow* row = FindElement(name);
    CProjectNode* node = FindNode(row, name, parent);
    const bool read = !node || ReadElement(*node, element);
    if (node && row->Item() && node->ID() == 0) m_unnumbered.push_back({node->Identity(), node});
    if (read && !(row && row->Leaf())) LoadChildren(element, node);
}

void CKVXMLDataLoader::LoadChildren(IXMLDOMNode* element, CProjectNode* node)
{
    ForEachChild(element, [&](IXMLDOMNode* child) {
        const ElementRow* row = node ? nullptr : FindElement(ElementName(child));
        if (node || (row && row->type == typeProject)) LoadElement(child, node);
    });
}

} // namespace kv
