#include "KVProjectData/undo/ButtonStlState.h"

#include "KVProjectData/menus/MenuButtonImpl.h"
#include "KVProjectData/menus/MenuNode.h"
#include "KVProjectData/tree/LineageLock.h"
#include "KVProjectData/tree/NodeList.h"

#include <algorithm>

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

void CKVButtonStlState::ReportTo(CProjectNode& button, DrivingUndo&)
{
    const LineageLock lock(button);
    ReportChange(button);
    for (const Element& element : ElementsOf(*button.GetChild(kButtonElements)->List()))
        ReportChange(button, element.node->ID());
    for (const Element& element : m_elements)
        ReportChange(button, element.node->ID());
}

HRESULT CKVButtonStlState::Exchange(CProjectNode& button, DrivingUndo& driving)
{
    const LineageLock lock(button);
    CNodeList& list = *button.GetChild(kButtonElements)->List();
    const SectionLock listLock(list.Section());
    std::vector<Element> before = ElementsOf(list);
    std::vector<Outside> outside;
    outside.reserve(m_elements.size());
    for (const Element& element : m_elements) {
        // A host may have put it elsewhere.
        if (!element.node->Parent()) outside.push_back({element, NodeImage(*element.node)});
    }
    for (const Outside& left : m_outside)
        driving.Keep(left.element.object);
    list.ReserveRoom(outside.size());

    RecordedValues present = button.GetRecord();
    // Its own place is stored before another one is.
    button.DetachEffect();
    button.ExchangeRecord(m_button);
    m_button = std::move(present);
    button.GetChild(kButtonLinks)->ExchangeRecord(m_links);
    button.GetChild(kButtonRegion)->ExchangeRecord(m_region);
    list.DropAll();
    for (Outside& left : m_outside) {
        const auto isLeft = [&](const Element& element) { return element.node == left.element.node; };
        if (std::ranges::none_of(before, isLeft)) continue;
        // The element is out all the same.
        Guarded([&] {
            left.image.Restore();
            return S_OK;
        });
    }
    m_elements = std::move(before);
    m_outside = std::move(outside);
    for (const Outside& come : m_outside)
        list.Adopt(*come.element.node, -1, false);
    CMenuNode* menu = MenuOf(button);
    if (menu && !menu->IsNativeMenu()) AttachNowOrLater(button);
    return S_OK;
}

} // namespace kv
