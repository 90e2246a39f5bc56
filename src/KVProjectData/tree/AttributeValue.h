#pragma once
// The value of one attribute on its way between a node and a document.

#include "platform/automation/Variant.h"

#include <string>
#include <string_view>
#include <variant>

namespace kv {

/// Gives numbers their readable text, for a person who reads the file.
class ValueNames {
public:
    virtual void AppendText(ULONG value, std::string& text) const = 0;

protected:
    ~ValueNames() = default;
};

/// A number that is written as text with a name in it.
struct NamedValue {
    ULONG value;
    const ValueNames* names;
};

/// Either typed, as a node gives it, or text borrowed from a document, as a document gives it.
class AttributeValue {
public:
    AttributeValue(LONG value) : m_value(value) {}
    AttributeValue(ULONG value) : m_value(value) {}
    AttributeValue(double value) : m_value(value) {}
    AttributeValue(bool value) : m_value(value) {}
    AttributeValue(NamedValue value) : m_value(value) {}
    /// Null is an empty text.
    AttributeValue(Bstr value) : m_value(std::move(value)) {}
    /// UTF-8 that outlives this value.
    AttributeValue(std::string_view borrowed) : m_value(borrowed) {}

    /// Conversions throw Error with DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW where the value is no such number.
    LONG ToLong() const;
    ULONG ToULong() const;
    /// An object ID, which is written unsigned and held signed.
    LONG ToID() const;
    /// Any non-zero number, and the word true, is true.
    bool ToBool() const;
    Bstr ToBstr() const;
    /// The 32 bits of the integer, signed or unsigned, that the text starts with; 0 when it starts with none. Never
    /// fails.
    LONG LeadingInteger() const;

    /// UTF-8 text as a document holds it. Throws for a string, which `AsString` gives, and for a real number that is
    /// not finite, which has no text.
    void AppendText(std::string& text) const;

    /// The string, or null for every other kind of value.
    const Bstr* AsString() const { return std::get_if<Bstr>(&m_value); }

private:
    Variant ToVariant() const;

    std::variant<LONG, ULONG, double, bool, NamedValue, Bstr, std::string_view> m_value;
};

} // namespace kv
