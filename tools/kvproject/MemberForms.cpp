#include "MemberForms.h"

#include "Failure.h"

namespace kvproject {

Edges EdgesOf(const FloatRect& rect)
{
    return {rect.fLeft, rect.fTop, rect.fRight, rect.fBottom};
}

FloatRect RectOf(const Edges& edges)
{
    return {edges[0], edges[1], edges[2], edges[3]};
}

Json Reference(const MenuView* view, LONG id)
{
    if (id == 0) return {};
    const auto name = view ? view->NameOf(id) : std::nullopt;
    return name ? *name : std::to_string(id);
}

LONG Referenced(const MenuView* view, const std::string& text)
{
    if (text.empty()) return 0;
    // A menu's elements may have changed since the view was made for showing it; setting makes a view of its own.
    if (!view) throw Failure("the button stands in no menu");
    return view->IdOf(text);
}

} // namespace kvproject
