#include "platform/xml/DomEdit.h"

#include "platform/xml/XmlText.h"

#include <new>
#include <string>

namespace kv {
namespace {

/// A zero-terminated copy of a short text, on the stack where it fits.
class Terminated {
public:
    explicit Terminated(std::string_view text)
    {
        if (text.size() < sizeof m_short) {
            text.copy(m_short, text.size());
            m_short[text.size()] = '\0';
        } else {
            m_long = text;
        }
    }

    const char* Get() const { return m_long.empty() ? m_short : m_long.c_str(); }

private:
    char m_short[48];
    std::string m_long;
};

} // namespace

bool CheckedText(const XMLAttribute& attribute, std::string& buffer, std::string_view& text)
{
    if (const auto* utf8 = std::get_if<std::string_view>(&attribute.value)) {
        text = *utf8;
        return IsXmlUtf8(text);
    }
    if (!ToXmlUtf8(std::get<std::u16string_view>(attribute.value), buffer)) return false;
    text = buffer;
    return true;
}

pugi::xml_node AddNode(pugi::xml_node parent, pugi::xml_node_type type, std::string_view name, std::string_view value)
{
    pugi::xml_node node = parent.append_child(type);
    const bool named = node && (name.empty() || node.set_name(Terminated(name).Get()));
    if (named && (value.empty() || node.set_value(value.data(), value.size()))) return node;
    parent.remove_child(node);
    throw std::bad_alloc();
}

void AddAttribute(pugi::xml_node element, std::string_view name, std::string_view value)
{
    pugi::xml_attribute attribute = element.append_attribute(Terminated(name).Get());
    // One for whose name there is no memory is there without it.
    if (*attribute.name() && attribute.set_value(value.data(), value.size())) return;
    element.remove_attribute(attribute);
    throw std::bad_alloc();
}

void SetAttribute(pugi::xml_node element, std::string_view name, std::string_view value)
{
    pugi::xml_attribute known = FindAttribute(element, name);
    if (!known) return AddAttribute(element, name, value);
    if (!known.set_value(value.data(), value.size())) throw std::bad_alloc();
}

pugi::xml_attribute FindAttribute(pugi::xml_node element, std::string_view name)
{
    pugi::xml_attribute attribute = element.first_attribute();
    for (const char* own = attribute.name(); *own; own = attribute.name()) {
        if (IsText(own, name)) break;
        attribute = attribute.next_attribute();
    }
    return attribute;
}

} // namespace kv
