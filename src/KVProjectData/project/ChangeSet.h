#pragma once
// The objects that changed since the last report.

#include "platform/com/BaseTypes.h"
#include "platform/system/CriticalSection.h"

#include <array>
#include <optional>
#include <set>

namespace kv {

class ChangeSet {
public:
    static constexpr std::size_t kReportSize = 50;

    /// IDs in ascending order; the first `count` count.
    struct Report {
        LONG count = 0;
        std::array<LONG, kReportSize> ids{};
    };

    void Insert(LONG id);

    /// Takes the smallest IDs out, at most kReportSize.
    Report Take();

private:
    CriticalSection m_section;
    std::set<LONG> m_ids;
    /// The ID inserted last, which changes in a row of one object share.
    std::optional<LONG> m_last;
};

} // namespace kv
