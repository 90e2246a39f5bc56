#include "KVProjectData/undo/ButtonStlState.h"

#include "KVProjectData/menus/MenuButtonImpl.h"
#include "KVProjectData/menus/MenuNode.h"
#include "KVProjectData/tree/LineageLock.h"
#include "KVProjectData/tree/NodeList.h"

namespace kv {
namespace {

LONG AnchorOf(CProjectNode& button)
{
    const auto* const shown = dynamic_cast<CMenuButtonImpl*>(&button);
    return shown ? shown->AnchorID() : 0;
}

} // namespace

CKVButtonStlState::CKVButtonStlState(CProjectNode& button)
    : StateRecord(button),
      m_button(button.GetRecord()),
      m_links(button.GetChild(kButtonLinks)->GetRecord()),
      m_region(button.GetChild(kButtonRegion)->GetRecord()),
      m_anchorID(AnchorOf(button)),
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

void CKVButtonStlState::ReportTo(CProjectNode& button, DrivingUndo&)
{
    const LineageLock lock(button);
    ReportChange(button);
    for (const auto& elements : {ElementsOf(*button.GetChild(kButtonElements)->List()), m_elements})
        for (const Element& element : elements)
            ReportChange(button, element.node->ID());
}

HRESULT CKVButtonStlState::Exchange(CProjectNode& button, DrivingUndo&)
{
    const LineageLock lock(button);
    CNodeList& list = *button.GetChild(kButtonElements)->List();
    const SectionLock listLock(list.Section());
    std::vector<Element> before = ElementsOf(list);
    list.ReserveRoom(m_elements.size());

    auto* const shown = dynamic_cast<CMenuButtonImpl*>(&button);
    LONG anchorID = AnchorOf(button);
    // Its own place is stored before another one is.
    button.DetachEffect();
    button.ExchangeRecord(m_button);
    button.GetChild(kButtonLinks)->ExchangeRecord(m_links);
    button.GetChild(kButtonRegion)->ExchangeRecord(m_region);
    list.DropAll();
    for (const Element& element : m_elements) {
        // A host may have put it elsewhere.
        if (!element.node->Parent()) list.Adopt(*element.node, -1, false);
    }
    m_elements = std::move(before);
    std::swap(m_anchorID, anchorID);
    if (shown) shown->SetAnchorID(anchorID);
    CMenuNode* menu = MenuOf(button);
    if (menu && !menu->IsNativeMenu()) AttachNowOrLater(button);
    // Elements whose effects come later are still to find the anchor.
    if (shown && !shown->HasEffect()) shown->SetAnchorID(anchorID);
    return S_OK;
}

} // namespace kv
