#include "KVProjectData/persistence/XMLDataLoader.h"

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
    parent->get_firstChild(child.Put());
    while (child) {
        each(child.Get());
        ComPtr<IXMLDOMNode> next;
        child->get_nextSibling(next.Put());
        child = std::move(next);
    }
}

} // namespace

HRESULT CKVXMLDataLoader::Load(IXMLDOMNode* root)
{
    const std::string_view name = ElementName(root);
    const ElementRow* row = FindElement(name);
    CProjectNode* node = FindNode(row, name, nullptr);
    if (node) {
        const HRESULT loaded = Guarded([&] { return node->LoadXML(root); });
        if (FAILED(loaded)) return S_OK;
    }
    if (!row || !row->Leaf()) {
        ForEachChild(root, [&](IXMLDOMNode* child) { LoadElement(child, node); });
    }
    return S_OK;
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
    if (node) {
        const HRESULT loaded = Guarded([&] { return node->LoadXML(element); });
        if (row->Item()) node->AssignID();
        if (FAILED(loaded) || row->Leaf()) return;
    }
    LoadChildren(element, node);
}

void CKVXMLDataLoader::LoadChildren(IXMLDOMNode* element, CProjectNode* node)
{
    ForEachChild(element, [&](IXMLDOMNode* child) {
        const ElementRow* row = node ? nullptr : FindElement(ElementName(child));
        if (node || (row && row->type == typeProject)) LoadElement(child, node);
    });
}

} // namespace kv
