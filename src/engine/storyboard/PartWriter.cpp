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
    : m_target(above.m_target),
      m_above(&above),
      m_name(name),
      m_rest(RestOfPart(above.m_rest, name)),
      m_paths(above.m_paths)
{
}

void PartWriter::Begin()
{
    if (m_state != State::Absent) return;
    if (m_above) m_above->Content();
    m_target.Put('<');
    m_target.Put(m_name);
    m_state = State::InTag;
}

XmlBuffer& PartWriter::Content()
{
    if (m_state == State::InContent) return m_target;
    EndAttributes();
    m_target.Put('>');
    m_state = State::InContent;
    return m_target;
}

void PartWriter::End()
{
    if (m_rest && !m_rest->nodes.empty()) Content().Put(m_rest->nodes);
    if (m_state == State::Absent && (!m_rest || m_rest->attributes.empty())) return;
    if (m_state == State::InContent) {
        m_target.Put("</");
        m_target.Put(m_name);
        m_target.Put('>');
    } else {
        EndAttributes();
        m_target.Put("/>");
    }
}

void PartWriter::EndAttributes()
{
    Begin();
    if (!m_rest) return;
    for (const auto& [name, text] : m_rest->attributes) {
        if (std::ranges::find(m_written, name) == m_written.end()) PutAttribute(name, text);
    }
}

void PartWriter::PutAttribute(std::string_view name, std::string_view text)
{
    m_target.Put(' ');
    m_target.PutAttribute(name, text);
}

void PartWriter::Attribute(const char* name, const XmlValue& value)
{
    Begin();
    if (m_rest && !m_rest->attributes.empty()) m_written.push_back(name);
    PutAttribute(name, value.Text());
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
    Attribute(name, stands ? path.View() : text.View());
}

void PartWriter::Part(const char* name, const List& list)
{
    PartWriter part(*this, name);
    list(part);
    part.End();
}

void PartWriter::Document(const char* name, StoredDocument& document)
{
    PartWriter part(*this, name);
    if (document) document.WriteTo(part.Content());
    part.End();
}

template <class T>
void PartWriter::Write(const char* name, T value, const T* initial)
{
    if (!initial || value != *initial) Attribute(name, value);
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
