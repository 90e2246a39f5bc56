#include "MenuView.h"

#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/com/Activation.h"
#include "platform/system/Case.h"

#include <algorithm>

namespace kvproject {

using kv::ComPtr;
using kv::Query;

const std::array<ElementKind, 3> kElementKinds{{{"Button", "buttons", IKVMenuButton::IID},
                                                {"Overlay", "overlays", IKVMenuOverlay::IID},
                                                {"Text", "texts", IKVMenuText::IID}}};

const ElementKind* KindOf(IKVMenuElement& element)
{
    for (const ElementKind& kind : kElementKinds) {
        ComPtr<IUnknown> same;
        if (SUCCEEDED(element.QueryInterface(kind.iid, reinterpret_cast<void**>(same.Put())))) return &kind;
    }
    return nullptr;
}

std::vector<ComPtr<IKVMenuElement>> ElementsOf(IUnknown* owner)
{
    std::vector<ComPtr<IKVMenuElement>> elements;
    const auto list = Query<IKVMenuElementList>(owner);
    ComPtr<IKVMenuElement> element;
    for (LONG i = 1; list && SUCCEEDED(list->GetElement(i, element.Put())); ++i)
        elements.push_back(element);
    return elements;
}

ComPtr<IDispatch> OwnInterface(IKVMenuElement& element)
{
    const ElementKind* kind = KindOf(element);
    ComPtr<IDispatch> own(&element);
    if (kind) element.QueryInterface(kind->iid, reinterpret_cast<void**>(own.Put()));
    return own;
}

ComPtr<IDispatch> ItemOfMenu(IDispatch& owner, std::string_view list, LONG position)
{
    const auto menu = Query<IKVMenu>(&owner);
    std::vector<ComPtr<IDispatch>> items;
    if (menu && kv::SameText(list, "groups")) {
        for (const auto& group : MenuView(menu).Groups())
            items.emplace_back(group.Get());
    } else {
        const auto* kind = std::ranges::find_if(
            kElementKinds, [list](const ElementKind& row) { return kv::SameText(row.list, list); });
        const bool isAll = kv::SameText(list, kElementList);
        if (!Query<IKVMenuElementList>(&owner) || (!isAll && kind == kElementKinds.end())) return nullptr;
        for (const auto& element : ElementsOf(&owner)) {
            if (isAll || KindOf(*element) == kind) items.push_back(OwnInterface(*element));
        }
    }
    if (position < 1 || static_cast<std::size_t>(position) > items.size()) {
        throw Failure(std::string(list) + "[" + std::to_string(position) + "]: " + Describe(KV_E_BAD_POSITION));
    }
    return items[static_cast<std::size_t>(position) - 1];
}

void MenuView::Collect(IUnknown* owner, const std::string& prefix) const
{
    std::map<const ElementKind*, int> counts;
    int position = 0;
    for (const auto& element : ElementsOf(owner)) {
        const ElementKind* kind = KindOf(*element);
        LONG id = 0;
        ++position;
        if (!kind || FAILED(element->get_ID(&id))) continue;
        const std::string name = prefix + std::string(kind->list) + "[" + std::to_string(++counts[kind]) + "]";
        m_names.emplace(id, name);
        m_ids.emplace_back(name, id);
        m_ids.emplace_back(prefix + std::string(kElementList) + "[" + std::to_string(position) + "]", id);
        Collect(element.Get(), name + ".");
    }
}

const std::map<LONG, std::string>& MenuView::Names() const
{
    if (m_names.empty()) Collect(m_menu.Get(), {});
    return m_names;
}

std::optional<std::string> MenuView::NameOf(LONG id) const
{
    const auto found = Names().find(id);
    return found == Names().end() ? std::nullopt : std::optional(found->second);
}

LONG MenuView::IdOf(std::string_view name) const
{
    Names();
    for (const auto& [known, id] : m_ids) {
        if (kv::SameText(known, name)) return id;
    }
    const auto id = ReadId(std::string(name));
    if (!id) throw Failure("'" + std::string(name) + "' names no element of the menu, such as buttons[1]");
    return static_cast<LONG>(*id);
}

std::vector<std::string> MenuView::ButtonNames() const
{
    Names();
    std::vector<std::string> names;
    for (const auto& [name, id] : m_ids) {
        if (name.starts_with(kElementKinds[0].list) && name.find('.') == name.npos) names.push_back(name);
    }
    return names;
}

std::vector<ComPtr<IGroupInfoNode>> MenuView::Groups() const
{
    std::vector<ComPtr<IGroupInfoNode>> groups;
    for (const Element& list : Document().Children()) {
        if (list.Name() != "GroupInfoList") continue;
        for (const Element& group : list.Children()) {
            const auto id = ReadId(group.Attributes()["ID"]);
            ComPtr<IUnknown> object;
            if (!id || FAILED(m_menu->GetGroupByGroupID(static_cast<LONG>(*id), object.Put()))) continue;
            if (const auto found = Query<IGroupInfoNode>(object)) groups.push_back(found);
        }
    }
    return groups;
}

const Element& MenuView::Document() const
{
    if (!m_document) {
        ComPtr<IXMLDOMDocument> document;
        ComPtr<IXMLDOMElement> root;
        ComPtr<IXMLDOMNode> menu;
        Require(kv::CreateInstance(CLSID_DOMDocument, document), "cannot create a document");
        Require(document->createElement(kv::Bstr(u"Root").Get(), root.Put()), "cannot create a document");
        Require(m_menu->SaveXML(root.Get(), VARIANT_FALSE), "cannot write the menu");
        Require(root->get_firstChild(menu.Put()), "cannot write the menu");
        m_document.emplace(menu);
    }
    return *m_document;
}

std::shared_ptr<const MenuView> ViewMenuOf(IUnknown* object)
{
    auto menu = Query<IKVMenu>(object);
    const auto element = Query<IKVMenuElement>(object);
    if (!menu && element) element->GetMenu(menu.Put());
    return menu ? std::make_shared<const MenuView>(menu) : nullptr;
}

} // namespace kvproject
