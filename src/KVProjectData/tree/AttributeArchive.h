#pragma once
// Lets a node list its attributes once, for documents and for undo.
//
//     void CKVTitle::Attributes(AttributeArchive& archive)
//     {
//         archive.ID(*this);
//         archive("label", m_label);
//         archive("tag", Flags(m_tag, kTitleTypeNames));
//     }
//
// An archive runs the list for one purpose: it writes the attributes to an element, reads them from one, or keeps their
// values in an undo record. What only one of them does says so there, by `OnlyRead` and its like or by a question. In a
// record every run of a list has the same fields, whatever the node is like at the time.

#include "platform/automation/Bstr.h"
#include "platform/com/Error.h"

#include <string>
#include <string_view>
#include <utility>

namespace kv {

class CProjectNode;

/// Gives numbers their readable text, for a person who reads the file.
class ValueNames {
public:
    virtual void AppendText(ULONG value, std::string& text) const = 0;

protected:
    ~ValueNames() = default;
};

/// A number that is written with its names and read as the number in front.
template <class T>
struct NamedField {
    T& value;
    const ValueNames& names;
};

/// A boolean that is written as 1 or 0.
struct OneOrZero {
    bool& value;
};

/// Bits that are written as "0x" with so many hexadecimal digits at least. Any other text is read as all bits set.
struct Hex {
    ULONG& value;
    int digits;
};

/// A save that has this flag writes what a node would otherwise leave to its effect or production.
inline constexpr ULONG kSaveNative = 1;

class AttributeArchive {
public:
    AttributeArchive(const AttributeArchive&) = delete;
    AttributeArchive& operator=(const AttributeArchive&) = delete;

    bool Writes() const { return m_purpose == Purpose::Write; }
    bool Reads() const { return m_purpose == Purpose::Read; }
    bool Records() const { return m_purpose == Purpose::Record; }
    /// The attributes are written for a save that has `kSaveNative`.
    bool ForcesNative() const { return m_forcesNative; }

    /// The object ID, which is written unsigned and held signed. 0 is read as none.
    virtual void ID(CProjectNode& node) = 0;

    /// Each field in its own form; the text of a null string is empty, a plain boolean is -1 or 0. True when the field
    /// was set: it stays as it is when its attribute is absent or cannot be read.
    virtual bool operator()(std::string_view name, Bstr& field) = 0;
    virtual bool operator()(std::string_view name, BYTE& field) = 0;
    virtual bool operator()(std::string_view name, LONG& field) = 0;
    virtual bool operator()(std::string_view name, ULONG& field) = 0;
    virtual bool operator()(std::string_view name, float& field) = 0;
    virtual bool operator()(std::string_view name, double& field) = 0;
    virtual bool operator()(std::string_view name, bool& field) = 0;
    virtual bool operator()(std::string_view name, OneOrZero field) = 0;
    virtual bool operator()(std::string_view name, Hex field) = 0;
    template <class T>
    bool operator()(std::string_view name, NamedField<T> field)
    {
        auto number = static_cast<ULONG>(field.value);
        const bool set = Named(name, number, field.names);
        if (set) field.value = static_cast<T>(number);
        return set;
    }

    /// A value that lives elsewhere: `current` gives it, `take` sets it. What `take` throws refuses the attribute.
    template <class T, class Current, class Take>
    bool Value(std::string_view name, Current&& current, Take&& take)
    {
        T value{};
        if (!Reads()) value = current();
        if (!(*this)(name, value)) return false;
        try {
            take(std::move(value));
            return true;
        } catch (const Error& error) {
            Refuse(error.Result());
            return false;
        }
    }

    /// A field with a reading rule of its own: `parse` makes its value of the text, or throws.
    template <class Field, class Parse>
    bool Parsed(std::string_view name, Field& field, Parse&& parse)
    {
        if (!Reads()) return (*this)(name, field);
        return Value<Bstr>(
            name, [] { return Bstr(); }, [&](const Bstr& text) { field = parse(text.View()); });
    }

    /// Nobody takes the value from a document.
    template <class T>
    void OnlyWrite(std::string_view name, T value)
    {
        if (Writes()) {
            (*this)(name, value);
        } else {
            Skip(name);
        }
    }
    template <class Field>
    bool OnlyRead(std::string_view name, Field&& field)
    {
        return Reads() && (*this)(name, std::forward<Field>(field));
    }
    /// Undone, and in no document.
    template <class Field>
    void OnlyRecord(Field& field)
    {
        if (Records()) (*this)({}, field);
    }

protected:
    enum class Purpose { Write, Read, Record };

    explicit AttributeArchive(Purpose purpose, bool forcesNative = false)
        : m_purpose(purpose), m_forcesNative(forcesNative)
    {
    }
    ~AttributeArchive() = default;

    virtual bool Named(std::string_view name, ULONG& number, const ValueNames& names) = 0;
    /// The value of the attribute that was handed out last was not taken.
    virtual void Refuse(HRESULT result) { throw Error(result); }
    /// A document may have the attribute all the same.
    virtual void Skip(std::string_view) {}

private:
    const Purpose m_purpose;
    const bool m_forcesNative;
};

} // namespace kv
