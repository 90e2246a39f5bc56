#pragma once
// A value that changes over the time of an effect or a panel.

#include "platform/xml/Element.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace kv {

/// Between two keys a value changes evenly; before the first and after the last one it stands. N is 1, 3 or 4.
template <std::size_t N>
struct KeyFrames {
    using Value = std::array<double, N>;
    struct Key {
        double time;
        Value value;
    };
    /// In the order of their times; of two with the same time the later one counts.
    using Keys = std::vector<Key>;

    /// Seconds after the start of the span.
    Keys fromStart;
    /// Seconds after its end: what a document counts backwards is negative here.
    Keys fromEnd;
    /// Percent of the span.
    Keys ofSpan;

    bool IsEmpty() const { return fromStart.empty() && fromEnd.empty() && ofSpan.empty(); }

    /// The value so many seconds after the start of a span; nothing without keys. A span without an end has none of
    /// the keys that stand by it.
    std::optional<Value> At(double time, double span) const;
};

/// Reads what an element has in "StartOffsetElements", "EndOffsetElements" and "PercentageElements". The numbers of a
/// key are those children of its element `value`, or that element itself for null. What is missing is 0, as it is for
/// who edits the document; a key with anything that is no finite number is passed over.
template <std::size_t N>
KeyFrames<N> ReadKeyFrames(const XmlElement& channel, const char* value, const std::array<const char*, N>& numbers);

} // namespace kv
