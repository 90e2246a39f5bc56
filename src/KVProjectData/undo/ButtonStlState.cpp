#include "KVProjectData/undo/ButtonStlState.h"

#include "KVProjectData/menus/MenuButtonImpl.h"
#include "KVProjectData/menus/MenuNode.h"
#include "KVProjectData/tree/LineageLock.h"
#include "KVProjectData/tree/NodeList.h"

namespace kv {

CKVButtonStlState::CKVButtonStlState(CProjectNode& button)
    : StateRecord(button),
      m_button(button.GetRecord()),
      m_links(button.GetChild(kButtonLinks)->GetRecord()),
      m_region(button.GetChild(kButtonRegion)->GetRecord()),
      m_elements(ElementsOf(*button.GetChild(kButtonElements)->List()))
{
}

std::vector<CKVButtonStlState::Element> CKVButtonStlState::ElementsOf(const CNodeList& list)
{
    std::vector<Element> elements;
    elements.reserve(static_cast<std::size_t>(list.ChildCount()));
    for (LONG i = 0; i < list.ChildCount(); ++i)
        elements.push_back({list.GetChild(i)->Identity(), list.GetChild(i)});
    return elements;
}

HRESULT CKVButtonStlState::Exchange(CProjectNode& button, DrivingUndo&)
{
    const LineageLock lock(button);
    CNodeList& list = *button.GetChild(kButtonElements)->List();
    std::vector<Element> before = ElementsOf(list);
    list.ReserveRoom(m_elements.size());

    button.ExchangeRecord(m_button);
    button.GetChild(kButtonLinks)->ExchangeRecord(m_links);
    button.GetChild(kButtonRegion)->ExchangeRecord(m_region);
    button.DetachEffect();
    list.DropAll();
    for (const Element& element : m_elements) {
        // A host may have put it elsewhere.
        if (!element.node->Parent()) list.Adopt(*element.node, -1, false);
    }
    m_elements = std::move(before);
    CMenuNode* menu = MenuOf(button);
    return menu && !menu->IsNativeMenu() ? button.AttachEffect() : S_OK;
}

} // namespace kv
