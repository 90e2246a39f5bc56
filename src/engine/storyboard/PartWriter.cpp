#include "engine/storyboard/PartWriter.h"

#include "engine/storyboard/Source.h"

#include <algorithm>

namespace kv {
namespace {

const Leftovers* RestOfPart(const Leftovers* rest, std::string_view name)
{
    if (!rest) return nullptr;
    const auto found = std::ranges::find(rest->parts, name, &Leftovers::part);
    return found == rest->parts.end() ? nullptr : &*found;
}

} // namespace

PartWriter::PartWriter(PartWriter& above, const char* name)
    : m_above(&above), m_name(name), m_rest(RestOfPart(above.m_rest, name)), m_paths(above.m_paths)
{
}

XmlElement& PartWriter::Here()
{
    if (!m_element) m_element = m_above->Here().Add(m_name);
    return m_element;
}

void PartWriter::WriteRest()
{
    if (!m_rest) return;
    for (const auto& [name, text] : m_rest->attributes) {
        if (!Here().HasAttribute(name)) Here().SetAttribute(name, text);
    }
    if (!m_rest->nodes.empty()) Here().AddMarkup(m_rest->nodes);
}

void PartWriter::Path(const char* name, Bstr& path)
{
    if (!path.Get()) return;
    Bstr text;
    const bool stands = !m_paths || IsMoniker(path.View());
    if (!stands) {
        ThrowIfFailed(m_paths->ToDocument(path.Get(), text.Put()));
        if (text.View().empty()) throw Error(E_UNEXPECTED);
    }
    Here().SetAttribute(name, XmlValue(stands ? path.View() : text.View()).Text());
}

void PartWriter::Part(const char* name, const List& list)
{
    PartWriter part(*this, name);
    list(part);
    part.WriteRest();
}

void PartWriter::Document(const char* name, StoredDocument& document)
{
    PartWriter part(*this, name);
    if (document) document.CopyInto(part.Here());
    part.WriteRest();
}

template <class T>
void PartWriter::Write(const char* name, T value, const T* initial)
{
    if (!initial || value != *initial) Here().SetAttribute(name, XmlValue(value).Text());
}

void PartWriter::Transfer(const char* name, LONG& value, const LONG* initial)
{
    Write(name, value, initial);
}

void PartWriter::Transfer(const char* name, bool& value, const bool* initial)
{
    Write(name, value, initial);
}

void PartWriter::Transfer(const char* name, double& value, const double* initial)
{
    Write(name, value, initial);
}

} // namespace kv
