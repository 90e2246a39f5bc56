#pragma once
// A menu with what is looked up in it: the elements and groups that paths name, and the document that it is saved as.

#include "KVProjectData/IKVMenu.h"
#include "Markup.h"

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kvproject {

/// A kind of elements, and the list that paths count them in.
struct ElementKind {
    std::string_view name;
    std::string_view list;
    const GUID& iid;
};

extern const std::array<ElementKind, 3> kElementKinds;

/// The list of elements of all kinds.
inline constexpr std::string_view kElementList = "elements";

/// Null for an element of no known kind.
const ElementKind* KindOf(IKVMenuElement& element);

/// Those of a menu or of a button, in the order of the list. Empty for any other object.
std::vector<kv::ComPtr<IKVMenuElement>> ElementsOf(IUnknown* owner);

/// The interface of an element's own kind.
kv::ComPtr<IDispatch> OwnInterface(IKVMenuElement& element);

/// What stands in a list of a menu or of a button, such as the second of "buttons"; counted from 1. Null for a list
/// that the object has not got. Throws Failure for a position where nothing stands.
kv::ComPtr<IDispatch> ItemOfMenu(IDispatch& owner, std::string_view list, LONG position);

/// As it was when it was first looked at.
class MenuView {
public:
    explicit MenuView(kv::ComPtr<IKVMenu> menu) : m_menu(std::move(menu)) {}

    IKVMenu& Menu() const { return *m_menu; }

    /// "buttons[2]", and "buttons[1].texts[1]" for what stands in a button. Empty for an ID that no element has.
    std::optional<std::string> NameOf(LONG id) const;
    /// The ID of the element of that name, which may count among all kinds, or a number as it is. Throws Failure for
    /// any other text.
    LONG IdOf(std::string_view name) const;

    /// "buttons[1]" to the last.
    std::vector<std::string> ButtonNames() const;

    std::vector<kv::ComPtr<IGroupInfoNode>> Groups() const;

    /// The element that the menu is saved as; reading it changes nothing.
    const Element& Document() const;

private:
    void Collect(IUnknown* owner, const std::string& prefix) const;
    const std::map<LONG, std::string>& Names() const;

    kv::ComPtr<IKVMenu> m_menu;
    mutable std::map<LONG, std::string> m_names;
    mutable std::vector<std::pair<std::string, LONG>> m_ids;
    mutable std::optional<Element> m_document;
};

/// Of the menu itself, or of the one that an element stands in. Null for any other object.
std::shared_ptr<const MenuView> ViewMenuOf(IUnknown* object);

} // namespace kvproject
