#pragma once
// The archives between a node and an element of a document.

#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/LoadedElement.h"
#include "platform/xml/Dom.h"

#include <vector>

namespace kv {

/// Gathers the attributes that a node lists, and gives them in the order of their names.
class AttributeWriter final : public AttributeArchive, public XMLAttributeSource {
public:
    /// The flags of the save.
    explicit AttributeWriter(ULONG flags);

    void ID(CProjectNode& node) override;
    bool operator()(std::string_view name, Bstr& field) override;
    bool operator()(std::string_view name, BYTE& field) override { return Number(name, LONG{field}); }
    bool operator()(std::string_view name, LONG& field) override { return Number(name, field); }
    bool operator()(std::string_view name, ULONG& field) override { return Number(name, field); }
    bool operator()(std::string_view name, float& field) override { return Number(name, field); }
    bool operator()(std::string_view name, double& field) override { return Number(name, field); }
    bool operator()(std::string_view name, bool& field) override { return Number(name, LONG{field ? -1 : 0}); }
    bool operator()(std::string_view name, OneOrZero field) override { return Number(name, LONG{field.value}); }
    bool operator()(std::string_view name, Hex field) override;

    /// Writes to an element, or to markup whose element has just been begun. The first attribute that is refused ends
    /// that and is traced.
    template <class Target>
    HRESULT WriteTo(Target& target)
    {
        Sort();
        const HRESULT written = target.WriteAttributes(this);
        if (FAILED(written)) TraceFailure();
        return written;
    }

    /// Ready for another node.
    void Clear();

    bool Next(XMLAttribute& attribute) override;

private:
    /// A place in the text of its encoding.
    struct Item {
        std::string_view name;
        bool isUtf16;
        std::size_t begin;
        std::size_t end;
    };

    bool Named(std::string_view name, ULONG& number, const ValueNames& names) override;
    template <class T>
    bool Number(std::string_view name, T value);
    void Add(std::string_view name, bool isUtf16, std::size_t begin, std::size_t end);
    void Sort();
    void TraceFailure() const;

    std::vector<Item> m_items;
    std::string m_utf8;
    std::u16string m_utf16;
    std::size_t m_next = 0;
};

/// Hands a node the attributes of an element. One that cannot be read leaves its field as it is and is reported; the
/// others are taken.
class AttributeReader final : public AttributeArchive, private XMLAttributeVisitor {
public:
    explicit AttributeReader(const LoadedElement& element);

    /// The attributes that the node did not ask for.
    void ReportRest() const;

    void ID(CProjectNode& node) override;
    bool operator()(std::string_view name, Bstr& field) override;
    bool operator()(std::string_view name, BYTE& field) override;
    bool operator()(std::string_view name, LONG& field) override;
    bool operator()(std::string_view name, ULONG& field) override;
    bool operator()(std::string_view name, float& field) override;
    bool operator()(std::string_view name, double& field) override;
    bool operator()(std::string_view name, bool& field) override;
    bool operator()(std::string_view name, OneOrZero field) override { return (*this)(name, field.value); }
    bool operator()(std::string_view name, Hex field) override;

private:
    /// Borrowed from the document.
    struct Item {
        std::string_view name;
        std::string_view text;
        bool taken;
    };

    void Attribute(std::string_view name, std::string_view text) override { m_items.push_back({name, text, false}); }
    bool Named(std::string_view name, ULONG& number, const ValueNames& names) override;
    void Refuse(HRESULT result) override;
    void Skip(std::string_view name) override { Find(name); }
    /// Null when there is none. Asking in the order of the names is the cheap case.
    const Item* Find(std::string_view name);
    void Tell(const Item& item, std::string_view fault) const;
    template <class Field, class Parse>
    bool Read(std::string_view name, Field& field, Parse&& parse);

    const LoadedElement& m_element;
    /// In the order of the names.
    std::vector<Item> m_items;
    /// Behind the item that was handed out last.
    std::size_t m_next = 0;
    std::size_t m_taken = 0;
};

} // namespace kv
