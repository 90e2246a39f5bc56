#include "KVProjectData/persistence/XMLDataLoader.h"

#include "KVProjectData/content/StringRefs.h"
#include "KVProjectData/tree/ElementArchives.h"
#include "platform/system/ErrorReporter.h"

namespace kv {
namespace {

constexpr std::string_view kSource = "KVXMLDataLoader";
constexpr std::string_view kRoot = "Root";
/// What hosts keep beside the project.
constexpr std::string_view kProductions = "Productions";

template <class Each>
void ForEachChild(const XmlView& parent, Each&& each)
{
    for (XmlView child = parent.FirstChild(); child; child = child.Next())
        each(child);
}

} // namespace

HRESULT CKVXMLDataLoader::Load(IXMLDOMNode* root)
{
    const HRESULT loaded = Guarded([&] {
        LoadRoot(root);
        return S_OK;
    });
    const HRESULT numbered = Guarded([&] {
        for (const Item& item : m_unnumbered) {
            for (LONG i = 0; i < item.node->ChildCount(); ++i)
                item.node->GetChild(i)->AssignID();
            item.node->AssignID();
        }
        return S_OK;
    });
    return FAILED(loaded) ? loaded : numbered;
}

void CKVXMLDataLoader::LoadRoot(IXMLDOMNode* root)
{
    m_scope = XmlElement(root);
    if (!m_scope) return LoadDocument(*root);
    // What cannot be resolved is loaded as it is.
    const HRESULT resolved = ResolveStringRefs(root);
    if (FAILED(resolved)) ZXUReportError(ZXUErrResultStr({kSource, __LINE__}, "ResolveStringRefs()", resolved));
    const XmlView place = m_scope.View();
    const ElementRow* row = FindElement(place.Name());
    if (row && IsTarget(*row, nullptr)) return LoadNode(place, m_target, *row);
    if (place.Name() == kRoot) ReportAttributes(place);
    if (row && row->Leaf()) return;
    ForEachChild(place, [&](const XmlView& child) { LoadPlace(child, nullptr); });
}

void CKVXMLDataLoader::LoadDocument(IXMLDOMNode& document)
{
    ComPtr<IXMLDOMNode> child;
    ThrowIfFailed(document.get_firstChild(child.Put()));
    while (child) {
        m_scope = XmlElement(child.Get());
        if (m_scope) LoadPlace(m_scope.View(), nullptr);
        ComPtr<IXMLDOMNode> next;
        ThrowIfFailed(child->get_nextSibling(next.Put()));
        child = std::move(next);
    }
}

CProjectNode* CKVXMLDataLoader::FindNode(const ElementRow* row, std::string_view name, CProjectNode* parent)
{
    if (!row) return nullptr;
    if (IsTarget(*row, parent)) return &m_target;
    if (!parent) return nullptr;
    return row->Item() ? CreateItem(row->type, *parent) : parent->FindChildByTypeAndName(row->type, name);
}

CProjectNode* CKVXMLDataLoader::CreateItem(NodeType type, CProjectNode& parent)
{
    CProjectNode* item = nullptr;
    const HRESULT made = Guarded([&] {
        item = parent.CreateItem(type);
        return S_OK;
    });
    if (made == E_OUTOFMEMORY) throw Error(made);
    return item;
}

void CKVXMLDataLoader::PassOverBeside(const XmlView& place)
{
    if (place.Name() != kProductions) {
        PassOver(place);
    } else if (std::exchange(m_metProductions, true)) {
        m_report.PassOver(place, "further productions are not loaded");
    }
}

void CKVXMLDataLoader::LoadPlace(const XmlView& place, CProjectNode* parent)
{
    if (!place.IsElement()) return PassOver(place);
    const std::string_view name = place.Name();
    const ElementRow* row = FindElement(name);
    if (CProjectNode* node = FindNode(row, name, parent)) return LoadNode(place, *node, *row);
    const bool isRoot = !parent && name == kRoot;
    if (isRoot) {
        ReportAttributes(place);
    } else {
        parent ? PassOver(place) : PassOverBeside(place);
    }
    if (row && row->Leaf()) return;
    ForEachChild(place, [&](const XmlView& child) {
        const ElementRow* childRow = child.IsElement() ? FindElement(child.Name()) : nullptr;
        if (childRow && IsTarget(*childRow, nullptr)) {
            LoadPlace(child, nullptr);
        } else if (isRoot) {
            PassOverBeside(child);
        }
    });
}

void CKVXMLDataLoader::LoadNode(const XmlView& element, CProjectNode& node, const ElementRow& row)
{
    if (&node == &m_target) m_found = true;
    const bool read = ReadElement(element, node);
    if (row.Item() && (node.ID() == 0 || node.ChildCount() > 0)) m_unnumbered.push_back({node.Identity(), &node});
    if (!read) return;
    ForEachChild(element, [&](const XmlView& child) {
        if (!row.Leaf()) {
            LoadPlace(child, &node);
        } else if (!node.OwnsContent(child)) {
            PassOver(child);
        }
    });
}

bool CKVXMLDataLoader::ReadElement(const XmlView& element, CProjectNode& node)
{
    const HRESULT result = Guarded([&] { return node.LoadElement({m_scope, element, m_report}); });
    // Lack of memory is no fault of the element: it ends the load.
    if (result == E_OUTOFMEMORY) throw Error(result);
    if (FAILED(result)) m_report.PassOver(element, "the element cannot be read: " + ResultText(result));
    return SUCCEEDED(result);
}

void CKVXMLDataLoader::PassOver(const XmlView& place)
{
    if (place.IsText()) {
        m_report.PassOver(place.Parent(), "text does not belong here: " + LoadReport::Quote(place.Text()));
    } else if (place.IsElement()) {
        const bool known = FindElement(place.Name());
        m_report.PassOver(place, known ? "the element does not belong here" : "the element is not known");
    }
}

void CKVXMLDataLoader::ReportAttributes(const XmlView& element)
{
    const LoadedElement loaded(m_scope, element, m_report);
    AttributeReader(loaded).ReportRest();
}

} // namespace kv
