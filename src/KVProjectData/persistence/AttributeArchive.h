#pragma once
// Lets a node list its attributes once, for reading and for writing.
//
// A node has one function `template <class Archive> void Attributes(Archive& archive)` that names its attributes in
// the order of their names; `ArchivedNode` runs it in every direction.

#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/tree/AttributeMap.h"
#include "KVProjectData/tree/ProjectNode.h"

#include <limits>
#include <utility>

namespace kv {

/// A field that is written with its names and read as the number in front.
template <class T>
struct NamedField {
    T& value;
    const ValueNames& names;
};

template <class T>
NamedField<T> Enumeration(T& value, const EnumNames& names)
{
    return {value, names};
}

template <class T>
NamedField<T> Flags(T& value, const FlagNames& names)
{
    return {value, names};
}

/// A boolean that is written as 1 or 0.
struct OneOrZero {
    bool& value;
};

/// Counts the values that are recorded.
class AttributeCounter {
public:
    std::size_t Count() const { return m_count; }

    void ID(CProjectNode&) { ++m_count; }
    template <class Field>
    void operator()(std::string_view, Field&&)
    {
        ++m_count;
    }
    template <class T>
    void OnlyWrite(std::string_view, T)
    {
        ++m_count;
    }
    template <class Field, class Take>
    void WriteRead(std::string_view, const Field&, Take&&)
    {
        ++m_count;
    }
    template <class Field>
    void OnlyRead(std::string_view, Field&&)
    {
    }
    template <class Field>
    void OnlyRecord(Field&&)
    {
        ++m_count;
    }

private:
    std::size_t m_count = 0;
};

/// Appends to an AttributeMap, or to AttributeValues alone.
template <class Target>
class AttributeWriter {
public:
    explicit AttributeWriter(Target& attributes) : m_attributes(attributes) {}

    void ID(CProjectNode& node) { Set("ID", static_cast<ULONG>(node.ID())); }

    template <class T>
    void operator()(std::string_view name, NamedField<T> field)
    {
        Set(name, NamedValue{static_cast<ULONG>(field.value), &field.names});
    }
    void operator()(std::string_view name, OneOrZero field) { Set(name, LONG{field.value}); }
    void operator()(std::string_view name, const Bstr& value) { Set(name, value); }
    template <class T>
    void operator()(std::string_view name, const T& value)
    {
        Set(name, value);
    }

    template <class T>
    void OnlyWrite(std::string_view name, T value)
    {
        Set(name, value);
    }
    template <class Field, class Take>
    void WriteRead(std::string_view name, const Field& value, Take&&)
    {
        Set(name, value);
    }
    template <class Field>
    void OnlyRead(std::string_view, Field&&)
    {
    }
    /// Undone, and in no document.
    template <class Field>
    void OnlyRecord(const Field& value)
    {
        if constexpr (std::is_same_v<Target, AttributeValues>) Set({}, value);
    }

private:
    void Set(std::string_view name, AttributeValue value) { m_attributes.Append(name, std::move(value)); }

    Target& m_attributes;
};

/// An attribute that is absent leaves its field as it is.
class AttributeReader {
public:
    explicit AttributeReader(const AttributeMap& attributes) : m_attributes(attributes) {}

    /// IDs so high that hardly any would be left, and 0, are passed over: the node is given one of its own.
    void ID(CProjectNode& node)
    {
        constexpr LONG kHighest = std::numeric_limits<LONG>::max() - 1'000'000;
        if (const AttributeValue* value = Find("ID")) {
            const LONG id = value->ToID();
            if (id != 0 && id <= kHighest) node.SetID(id);
        }
    }

    template <class T>
    void operator()(std::string_view name, NamedField<T> field)
    {
        if (const AttributeValue* value = Find(name)) field.value = static_cast<T>(value->LeadingInteger());
    }
    void operator()(std::string_view name, OneOrZero field) { (*this)(name, field.value); }
    void operator()(std::string_view name, LONG& field)
    {
        if (const AttributeValue* value = Find(name)) field = value->ToLong();
    }
    void operator()(std::string_view name, ULONG& field)
    {
        if (const AttributeValue* value = Find(name)) field = value->ToULong();
    }
    void operator()(std::string_view name, bool& field)
    {
        if (const AttributeValue* value = Find(name)) field = value->ToBool();
    }
    void operator()(std::string_view name, Bstr& field)
    {
        if (const AttributeValue* value = Find(name)) field = value->ToBstr();
    }

    template <class T>
    void OnlyWrite(std::string_view, T)
    {
    }
    /// A value with a reading rule of its own.
    template <class Field, class Take>
    void WriteRead(std::string_view name, const Field&, Take&& take)
    {
        if (const AttributeValue* value = Find(name)) take(*value);
    }
    template <class Field>
    void OnlyRead(std::string_view name, Field&& field)
    {
        (*this)(name, std::forward<Field>(field));
    }
    template <class Field>
    void OnlyRecord(Field&&)
    {
    }

private:
    const AttributeValue* Find(std::string_view name) { return m_attributes.Find(name, m_hint); }

    const AttributeMap& m_attributes;
    std::size_t m_hint = 0;
};

/// Exchanges the fields for the values that the same node has written.
class AttributeExchanger {
public:
    explicit AttributeExchanger(AttributeValues& values) : m_values(values) {}

    void ID(CProjectNode& node)
    {
        AttributeValue& stored = Next();
        const auto before = static_cast<ULONG>(node.ID());
        node.SetID(stored.ToID());
        stored = before;
    }
    template <class T>
    void operator()(std::string_view, NamedField<T> field)
    {
        AttributeValue& stored = Next();
        const T before = std::exchange(field.value, static_cast<T>(stored.LeadingInteger()));
        stored = NamedValue{static_cast<ULONG>(before), &field.names};
    }
    void operator()(std::string_view, OneOrZero field)
    {
        AttributeValue& stored = Next();
        stored = LONG{std::exchange(field.value, stored.ToBool())};
    }
    void operator()(std::string_view, Bstr& field)
    {
        AttributeValue& stored = Next();
        stored = std::exchange(field, stored.TakeBstr());
    }
    void operator()(std::string_view, LONG& field)
    {
        AttributeValue& stored = Next();
        stored = std::exchange(field, stored.ToLong());
    }
    void operator()(std::string_view, ULONG& field)
    {
        AttributeValue& stored = Next();
        stored = std::exchange(field, stored.ToULong());
    }
    void operator()(std::string_view, bool& field)
    {
        AttributeValue& stored = Next();
        stored = std::exchange(field, stored.ToBool());
    }
    template <class T>
    void OnlyWrite(std::string_view, T)
    {
        Next();
    }
    template <class Field, class Take>
    void WriteRead(std::string_view, const Field& value, Take&& take)
    {
        AttributeValue& stored = Next();
        const Field before = value;
        take(stored);
        stored = before;
    }
    template <class Field>
    void OnlyRead(std::string_view, Field&&)
    {
    }
    template <class Field>
    void OnlyRecord(Field& field)
    {
        (*this)({}, field);
    }

private:
    AttributeValue& Next() { return m_values.At(m_next++); }

    AttributeValues& m_values;
    std::size_t m_next = 0;
};

/// Implements the attributes of `Derived` by its `Attributes` function, on top of `Base`, a kind of node.
template <class Derived, class Base = CProjectNode>
class ArchivedNode : public Base {
public:
    void GetAttributes(AttributeMap& attributes) final { Write(attributes); }

    void SetAttributes(const AttributeMap& attributes) final
    {
        AttributeReader reader(attributes);
        static_cast<Derived&>(*this).Attributes(reader);
    }

    void GetState(AttributeValues& values) final { Write(values); }

    void ExchangeState(AttributeValues& values) final
    {
        AttributeExchanger exchanger(values);
        static_cast<Derived&>(*this).Attributes(exchanger);
    }

protected:
    using Base::Base;

private:
    template <class Target>
    void Write(Target& attributes)
    {
        AttributeCounter counter;
        static_cast<Derived&>(*this).Attributes(counter);
        attributes.Clear();
        attributes.Reserve(counter.Count());
        AttributeWriter<Target> writer(attributes);
        static_cast<Derived&>(*this).Attributes(writer);
    }
};

} // namespace kv
