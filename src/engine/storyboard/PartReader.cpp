#include "engine/storyboard/PartReader.h"

#include "engine/storyboard/Item.h"

#include <algorithm>
#include <charconv>

namespace kv {
namespace {

bool Has(const std::vector<std::string_view>& names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

template <class T>
T Number(std::string_view text)
{
    T value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    PartArchive::Require(error == std::errc() && stop == end);
    return value;
}

} // namespace

std::optional<std::string_view> PartReader::Attribute(const char* name)
{
    m_attributes.push_back(name);
    return m_place.Attribute(name);
}

XmlView PartReader::Child(const char* name)
{
    m_parts.push_back(name);
    XmlView found;
    for (XmlView child = m_place.FirstChild(); child; child = child.Next()) {
        if (!child.IsElement() || child.Name() != name) continue;
        Require(!found);
        found = child;
    }
    return found;
}

Leftovers PartReader::TakeRest(const XmlView& taken)
{
    Leftovers rest;
    rest.parts = std::move(m_rest);
    for (const auto& [name, text] : m_place.Attributes()) {
        if (!Has(m_attributes, name)) rest.attributes.emplace_back(name, text);
    }
    for (XmlView child = m_place.FirstChild(); child; child = child.Next()) {
        const bool isForeign = child.IsText() || (child.IsElement() && !Has(m_parts, child.Name()));
        if (isForeign && child != taken) rest.nodes += child.CompactMarkup();
    }
    return rest;
}

void PartReader::KeepRest(const char* part, Leftovers rest)
{
    if (rest.Empty()) return;
    rest.part = part;
    m_rest.push_back(std::move(rest));
}

void PartReader::Path(const char* name, Bstr& path)
{
    const auto text = Attribute(name);
    if (!text) return;
    const Bstr stored(ToUtf16(*text));
    Bstr read;
    if (m_paths && !IsMoniker(stored.View())) {
        ThrowIfFailed(m_paths->FromDocument(stored.Get(), read.Put()));
    } else {
        read = stored;
    }
    Require(!read.View().empty());
    path = std::move(read);
}

void PartReader::Part(const char* name, const List& list)
{
    const XmlView place = Child(name);
    if (!place) return;
    PartReader part(place, m_paths);
    list(part);
    KeepRest(name, part.TakeRest());
}

void PartReader::Document(const char* name, StoredDocument& document)
{
    const XmlView place = Child(name);
    if (!place) return;
    XmlView root = place.FirstChild();
    while (root && !root.IsElement())
        root = root.Next();
    if (root) document = StoredDocument::FromMarkup(root.CompactMarkup());
    PartReader part(place, m_paths);
    KeepRest(name, part.TakeRest(root));
}

void PartReader::Transfer(const char* name, LONG& value, const LONG* initial)
{
    const auto text = Attribute(name);
    Require(text || initial);
    if (text) value = Number<LONG>(*text);
}

void PartReader::Transfer(const char* name, bool& value, const bool* initial)
{
    const auto text = Attribute(name);
    Require(text ? *text == "0" || *text == "1" : initial != nullptr);
    if (text) value = *text == "1";
}

void PartReader::Transfer(const char* name, double& value, const double* initial)
{
    const auto text = Attribute(name);
    Require(text || initial);
    if (!text) return;
    value = Number<double>(*text);
    Require(IsAmount(value));
}

} // namespace kv
