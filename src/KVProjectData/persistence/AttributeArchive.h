#pragma once
// Lets a node list its attributes once, for documents and for undo.
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

/// What a record holds of the fields that only one direction of a document concerns.
template <class Derived>
class RecordRules {
public:
    template <class Field, class Take>
    void WriteRead(std::string_view name, Field&& field, Take&&)
    {
        static_cast<Derived&> (*this)(name, std::forward<Field>(field));
    }
    template <class Field>
    void OnlyRecord(Field& field)
    {
        static_cast<Derived&> (*this)({}, field);
    }
    template <class T>
    void OnlyWrite(std::string_view, T)
    {
    }
    template <class Field>
    void OnlyRead(std::string_view, Field&&)
    {
    }
};

/// Counts the values that a record of the node holds.
class RecordCounter : public RecordRules<RecordCounter> {
public:
    std::uint32_t Strings() const { return m_strings; }
    std::uint32_t Numbers() const { return m_numbers; }

    void ID(CProjectNode&) { ++m_numbers; }
    void operator()(std::string_view, Bstr&) { ++m_strings; }
    template <class Field>
    void operator()(std::string_view, Field&&)
    {
        ++m_numbers;
    }

private:
    std::uint32_t m_strings = 0;
    std::uint32_t m_numbers = 0;
};

/// Fills a record, or exchanges the node's fields for what a record holds.
template <bool kExchange>
class RecordArchive : public RecordRules<RecordArchive<kExchange>> {
public:
    explicit RecordArchive(RecordedValues& record) : m_record(record) {}

    void ID(CProjectNode& node)
    {
        const LONG kept = m_record.Exchange(m_numbers++, node.ID());
        if (kExchange) node.SetID(kept);
    }
    template <class T>
    void operator()(std::string_view name, NamedField<T> field)
    {
        (*this)(name, field.value);
    }
    void operator()(std::string_view name, OneOrZero field) { (*this)(name, field.value); }
    void operator()(std::string_view, Bstr& field)
    {
        if constexpr (kExchange) {
            field = m_record.Exchange(m_strings++, std::move(field));
        } else {
            m_record.Exchange(m_strings++, field);
        }
    }
    template <class Number>
    void operator()(std::string_view, Number& field)
    {
        const Number kept = m_record.Exchange(m_numbers++, field);
        if (kExchange) field = kept;
    }

private:
    RecordedValues& m_record;
    std::uint32_t m_strings = 0;
    std::uint32_t m_numbers = 0;
};

class AttributeWriter {
public:
    explicit AttributeWriter(AttributeMap& attributes) : m_attributes(attributes) {}

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
    void WriteRead(std::string_view name, Field&& field, Take&&)
    {
        (*this)(name, std::forward<Field>(field));
    }
    template <class Field>
    void OnlyRead(std::string_view, Field&&)
    {
    }
    /// Undone, and in no document.
    template <class Field>
    void OnlyRecord(Field&&)
    {
    }

private:
    template <class Value>
    void Set(std::string_view name, Value&& value)
    {
        m_attributes.Append(name, std::forward<Value>(value));
    }

    AttributeMap& m_attributes;
};

/// An attribute that is absent leaves its field as it is, and so does one that cannot be read; the others are taken.
class AttributeReader {
public:
    explicit AttributeReader(const AttributeMap& attributes) : m_attributes(attributes) {}

    /// IDs so high that hardly any would be left, and 0, are passed over: the node is given one of its own.
    void ID(CProjectNode& node)
    {
        constexpr LONG kHighest = std::numeric_limits<LONG>::max() - 1'000'000;
        Read("ID", [&](const AttributeValue& value) {
            const LONG id = value.ToID();
            if (id != 0 && id <= kHighest) node.SetID(id);
        });
    }

    template <class T>
    void operator()(std::string_view name, NamedField<T> field)
    {
        Read(name, [&](const AttributeValue& value) { field.value = static_cast<T>(value.LeadingInteger()); });
    }
    void operator()(std::string_view name, OneOrZero field) { (*this)(name, field.value); }
    void operator()(std::string_view name, LONG& field)
    {
        Read(name, [&](const AttributeValue& value) { field = value.ToLong(); });
    }
    void operator()(std::string_view name, ULONG& field)
    {
        Read(name, [&](const AttributeValue& value) { field = value.ToULong(); });
    }
    void operator()(std::string_view name, bool& field)
    {
        Read(name, [&](const AttributeValue& value) { field = value.ToBool(); });
    }
    void operator()(std::string_view name, Bstr& field)
    {
        Read(name, [&](const AttributeValue& value) { field = value.ToBstr(); });
    }

    template <class T>
    void OnlyWrite(std::string_view, T)
    {
    }
    /// A value with a reading rule of its own.
    template <class Field, class Take>
    void WriteRead(std::string_view name, const Field&, Take&& take)
    {
        Read(name, take);
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

    /// Throws Error for the first attribute that could not be read.
    void Finish() const { ThrowIfFailed(m_failure); }

private:
    template <class Take>
    void Read(std::string_view name, Take&& take)
    {
        const AttributeValue* value = m_attributes.Find(name, m_hint);
        if (!value) return;
        try {
            take(*value);
        } catch (const Error& error) {
            if (SUCCEEDED(m_failure)) m_failure = error.Result();
        }
    }

    const AttributeMap& m_attributes;
    std::size_t m_hint = 0;
    HRESULT m_failure = S_OK;
};

/// Implements the attributes of `Derived` by its `Attributes` function, on top of `Base`, a kind of node.
template <class Derived, class Base = CProjectNode>
class ArchivedNode : public Base {
public:
    void GetAttributes(AttributeMap& attributes) final
    {
        constexpr std::size_t kUsualCount = 16;
        attributes.Clear();
        attributes.Reserve(kUsualCount);
        AttributeWriter writer(attributes);
        Run(writer);
    }

    void SetAttributes(const AttributeMap& attributes) final
    {
        AttributeReader reader(attributes);
        Run(reader);
        reader.Finish();
    }

    RecordedValues GetRecord() final
    {
        RecordCounter counter;
        Run(counter);
        RecordedValues record(counter.Strings(), counter.Numbers());
        RecordArchive<false> writer(record);
        Run(writer);
        return record;
    }

    void ExchangeRecord(RecordedValues& record) final
    {
        RecordArchive<true> exchanger(record);
        Run(exchanger);
    }

protected:
    using Base::Base;

private:
    template <class Archive>
    void Run(Archive& archive)
    {
        static_cast<Derived&>(*this).Attributes(archive);
    }
};

} // namespace kv
