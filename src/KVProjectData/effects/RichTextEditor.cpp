#include "KVProjectData/effects/RichTextEditor.h"

#include "KVProjectData/Engine/TextMarkup.h"
#include "platform/com/Error.h"

#include <algorithm>

namespace kv {
namespace {

/// Of elements that a text's tree may stand below in a project's document.
constexpr int kLevelsAbove = 31;

bool IsStyle(std::string_view name)
{
    return name == "b" || name == "i" || name == "u";
}

bool Is(const XmlView& place, std::string_view name)
{
    return place.Name() == name && place.IsElement();
}

bool IsParagraph(const XmlView& place)
{
    return Is(place, "p");
}

/// An element that holds no text.
bool IsVoid(const XmlView& place)
{
    return Is(place, "br") || Is(place, "hr");
}

/// What stands right below `top`, around a place or there.
XmlView TopAround(XmlView place, const XmlView& top)
{
    for (XmlView above = place.Parent(); above != top; above = above.Parent())
        place = above;
    return place;
}

/// Whether a place, or one below it, is such a one.
template <class Predicate>
bool Holds(const XmlView& top, Predicate&& is)
{
    for (XmlView place = top; place; place = place.Following(top)) {
        if (is(place)) return true;
    }
    return false;
}

bool HasChild(const XmlView& parent, std::string_view name)
{
    XmlView child = parent.FirstChild();
    while (child && !Is(child, name))
        child = child.Next();
    return static_cast<bool>(child);
}

/// Finds the runs of a text that stand in no element of a name.
class RunSearch {
public:
    explicit RunSearch(std::string_view name) : m_name(name) {}

    std::vector<XmlView> In(const XmlView& body)
    {
        Look(body, true);
        if (!m_hasText && m_last) m_found = {m_last};
        return std::move(m_found);
    }

private:
    void Look(const XmlView& parent, bool outside)
    {
        for (XmlView child = parent.FirstChild(); child; child = child.Next()) {
            if (child.IsText()) {
                m_hasText = true;
                if (outside) m_found.push_back(child);
            } else if (child.IsElement()) {
                const bool still = outside && child.Name() != m_name;
                m_last = still ? child : XmlView();
                Look(child, still);
            }
        }
    }

    std::string_view m_name;
    std::vector<XmlView> m_found;
    bool m_hasText = false;
    /// Empty when it is, or stands in, such an element.
    XmlView m_last;
};

} // namespace

void RichTextEditor::Apply(const TextCommand& command)
{
    try {
        Run(command);
    } catch (const Error& error) {
        throw Error(error.Result() == E_OUTOFMEMORY ? E_OUTOFMEMORY : E_FAIL);
    }
}

void RichTextEditor::Run(const TextCommand& command)
{
    switch (command.mode) {
    case 'f':
        return Force(command);
    case 'x':
        if (!IsStyle(command.element)) throw Error(E_FAIL);
        return RemoveStyle(m_body.View(), command.element);
    case 'r':
        return command.text.empty() ? EmptyText() : ReplaceText(command.text);
    default:
        return;
    }
}

void RichTextEditor::Force(const TextCommand& command)
{
    const bool isStyle = IsStyle(command.element);
    if (!isStyle && command.element != "font" && command.element != "p") throw Error(E_FAIL);
    const auto isRun = [](const XmlView& place) { return place.IsText() || place.IsElement(); };
    const XmlView body = m_body.View();
    XmlView child = body.FirstChild();
    while (child && !isRun(child))
        child = child.Next();
    // Of a body without any, the new element is.
    if (!child) return Take(m_body.Add(std::string_view(command.element)).View(), command.attributes);
    if (isStyle) return ForceStyle(command.element);
    command.element == "font" ? ForceFont(command.attributes) : ForceParagraph(command.attributes);
}

void RichTextEditor::ForceFont(const Attributes& attributes)
{
    struct Row {
        XmlView first;
        XmlView last;
    };
    const XmlView body = m_body.View();
    std::vector<Row> rows;
    if (!HasChild(body, "font")) {
        rows.push_back({body.FirstChild(), {}});
    } else {
        for (const XmlView& run : RunsOutside("font")) {
            const XmlView top = TopAround(run, body);
            if (!rows.empty() && (rows.back().last == top || rows.back().last.Next() == top)) {
                rows.back().last = top;
            } else {
                rows.push_back({top, top});
            }
        }
    }
    if (!rows.empty()) CheckRoom();
    for (const Row& row : rows)
        Wrap(body, row.first, row.last, "font");
    for (XmlView place = body.Following(body); place; place = place.Following(body)) {
        if (Is(place, "font")) Take(place, attributes);
    }
}

void RichTextEditor::ForceParagraph(const Attributes& attributes)
{
    const std::vector<XmlView> outside = RunsOutside("p");
    if (!outside.empty()) CheckRoom();
    const XmlView body = m_body.View();
    const auto isInner = [&](const XmlView& place) {
        XmlView above = place.Parent();
        while (above != body && !IsParagraph(above))
            above = above.Parent();
        return above != body;
    };
    const auto tellsOne = [&](const XmlView& place) {
        return std::ranges::any_of(attributes, [&](const auto& own) { return place.Attribute(own.first).has_value(); });
    };
    for (XmlView place = body.Following(body); place; place = place.Following(body)) {
        // An inner paragraph that tells nothing has what the outer one tells.
        if (IsParagraph(place) && (tellsOne(place) || !isInner(place))) Take(place, attributes);
    }
    if (!outside.empty()) CoverWithParagraphs(body, outside, attributes);
}

void RichTextEditor::ForceStyle(std::string_view name)
{
    const std::vector<XmlView> outside = RunsOutside(name);
    if (!outside.empty()) CheckRoom();
    for (const XmlView& run : outside)
        Wrap(run.Parent(), run, run, name);
}

void RichTextEditor::RemoveStyle(const XmlView& parent, std::string_view name)
{
    // The text that takes those that come out of elements right behind it, and these.
    XmlView row;
    std::vector<XmlView> taken;
    std::string joined;
    const auto join = [&] {
        if (taken.empty()) return;
        m_body.At(row).SetText(joined);
        for (const XmlView& text : taken)
            m_body.Remove(text);
        taken.clear();
    };
    bool cameOut = false;
    for (XmlView place = parent.FirstChild(); place;) {
        if (Is(place, name)) {
            // What it holds comes out in front of it, and is looked at, too.
            const XmlView inner = place.FirstChild();
            const XmlView next = inner ? inner : place.Next();
            inner ? m_body.Move(inner, parent, place) : m_body.Remove(place);
            cameOut = static_cast<bool>(inner);
            place = next;
            continue;
        }
        if (cameOut && place.IsText() && row) {
            if (taken.empty()) joined = row.Text();
            if (!joined.empty() && !joined.ends_with(' ') && !place.Text().empty()) joined += ' ';
            joined += place.Text();
            taken.push_back(place);
        } else {
            join();
            row = place.IsText() ? place : XmlView();
            RemoveStyle(place, name);
        }
        cameOut = false;
        place = place.Next();
    }
    join();
}

void RichTextEditor::ReplaceText(const std::string& text)
{
    const XmlView body = m_body.View();
    for (XmlView place = KeepOnly(text); place != body; place = place.Parent()) {
        if (IsParagraph(place)) m_body.RemoveAttribute(place, "placeholder");
    }
}

void RichTextEditor::EmptyText()
{
    CheckRoom();
    const XmlView body = m_body.View();
    const XmlView kept = KeepOnly(std::string(kTextPlaceholder));
    const XmlView top = body.FirstChild();
    // One paragraph, around everything.
    XmlView paragraph;
    for (XmlView place = kept; place != body; place = place.Parent()) {
        if (IsParagraph(place)) paragraph = place;
    }
    if (!paragraph) {
        paragraph = Wrap(body, top, top, "p").View();
    } else if (paragraph != top) {
        const XmlView parent = paragraph.Parent();
        while (const XmlView child = paragraph.FirstChild())
            m_body.Move(child, parent, paragraph);
        m_body.Move(paragraph, body);
        m_body.Move(top, paragraph);
    }
    for (XmlView place = kept; place != paragraph; place = place.Parent()) {
        if (IsParagraph(place)) m_body.SetAttribute(place, "placeholder", "1");
    }
    m_body.SetAttribute(paragraph, "placeholder", "1");
}

std::vector<XmlView> RichTextEditor::RunsOutside(std::string_view name) const
{
    return RunSearch(name).In(m_body.View());
}

void RichTextEditor::CoverWithParagraphs(const XmlView& parent, const std::vector<XmlView>& runs,
                                         const Attributes& attributes)
{
    // All texts below what holds no paragraph are among the runs; or an element is the only one.
    const auto isRun = [&](const XmlView& place) { return place.IsText() || place == runs.front(); };
    XmlView first;
    XmlView last;
    const auto cover = [&] {
        if (first) Take(Wrap(parent, first, last, "p").View(), attributes);
        first = {};
    };
    for (XmlView child = parent.FirstChild(); child;) {
        const XmlView next = child.Next();
        if (Holds(child, IsParagraph)) {
            cover();
            if (!IsParagraph(child)) CoverWithParagraphs(child, runs, attributes);
        } else if (Holds(child, isRun)) {
            if (!first) first = child;
            last = child;
        }
        child = next;
    }
    cover();
}

XmlView RichTextEditor::KeepOnly(const std::string& text)
{
    const XmlView body = m_body.View();
    XmlView kept;
    for (XmlView place = body.Following(body); place && !kept.IsText(); place = place.Following(body)) {
        if (place.IsText() || place.IsElement()) kept = place;
    }
    while (kept && kept != body && IsVoid(kept))
        kept = kept.Parent();
    if (!kept || kept == body) kept = m_body.Add("p").View();
    for (XmlView place = kept; place != body; place = place.Parent()) {
        for (XmlView sibling = place.Parent().FirstChild(); sibling;) {
            const XmlView next = sibling.Next();
            if (sibling != place) m_body.Remove(sibling);
            sibling = next;
        }
    }
    m_body.At(kept).SetText(text);
    return kept;
}

XmlElement RichTextEditor::Wrap(const XmlView& parent, const XmlView& first, const XmlView& last, std::string_view name)
{
    XmlElement wrapper = ElementAt(parent).Add(name);
    const XmlView place = wrapper.View();
    m_body.Move(place, parent, first);
    for (XmlView next = first; next;) {
        const XmlView moved = next;
        next = moved == last ? XmlView() : moved.Next();
        m_body.Move(moved, place);
    }
    return wrapper;
}

void RichTextEditor::Take(const XmlView& element, const Attributes& attributes)
{
    for (const auto& [name, value] : attributes) {
        if (value == kRemoveAttribute) {
            m_body.RemoveAttribute(element, name);
        } else if (element.Attribute(name) != value) {
            m_body.SetAttribute(element, name, value);
        }
    }
}

void RichTextEditor::CheckRoom(int levels) const
{
    if (levels > 0 && !m_body.FitsBelow(kLevelsAbove + levels)) throw Error(E_FAIL);
}

} // namespace kv
