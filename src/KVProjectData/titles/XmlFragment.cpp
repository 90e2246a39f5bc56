#include "KVProjectData/titles/XmlFragment.h"

namespace kv {

XmlFragment::XmlFragment(IXMLDOMNode* element)
{
    // The elements from the document's root to a button's command.
    constexpr int kLevelsAbove = 8;
    if (!element) return;
    const XmlElement own(element);
    if (!own || !own.FitsBelow(kLevelsAbove)) throw Error(E_INVALIDARG);
    m_markup = std::make_unique<const std::string>(own.View().CompactMarkup());
}

} // namespace kv
