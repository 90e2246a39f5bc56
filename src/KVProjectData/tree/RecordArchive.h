#pragma once
// The archive between a node and an undo record.

#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/RecordedValues.h"

namespace kv {

/// Without a record it counts the values that one of the node holds; with one it fills it, or exchanges the node's
/// fields for what it holds.
class RecordArchive final : public AttributeArchive {
public:
    enum class Task { Fill, Exchange };

    RecordArchive() : AttributeArchive(Purpose::Record) {}
    RecordArchive(RecordedValues& record, Task task)
        : AttributeArchive(Purpose::Record), m_record(&record), m_exchanges(task == Task::Exchange)
    {
    }

    RecordedValues NewRecord() const { return {m_strings, m_numbers}; }

    void ID(CProjectNode& node) override;
    bool operator()(std::string_view, Bstr& field) override;
    bool operator()(std::string_view, BYTE& field) override { return Number(field); }
    bool operator()(std::string_view, LONG& field) override { return Number(field); }
    bool operator()(std::string_view, ULONG& field) override { return Number(field); }
    bool operator()(std::string_view, float& field) override { return Number(field); }
    bool operator()(std::string_view, double& field) override { return Number(field); }
    bool operator()(std::string_view, bool& field) override { return Number(field); }
    bool operator()(std::string_view, OneOrZero field) override { return Number(field.value); }
    bool operator()(std::string_view, Hex field) override { return Number(field.value); }

private:
    bool Named(std::string_view, ULONG& number, const ValueNames&) override { return Number(number); }

    template <class T>
    bool Number(T& field)
    {
        const std::uint32_t index = m_numbers++;
        if (!m_record) return false;
        const T kept = m_record->Exchange(index, field);
        if (m_exchanges) field = kept;
        return m_exchanges;
    }

    RecordedValues* const m_record = nullptr;
    const bool m_exchanges = false;
    std::uint32_t m_strings = 0;
    std::uint32_t m_numbers = 0;
};

} // namespace kv
