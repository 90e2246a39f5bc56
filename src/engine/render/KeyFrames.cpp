#include "engine/render/KeyFrames.h"

#include <algorithm>
#include <cmath>

namespace kv {
namespace {

/// 0 where there is none; nothing for what is no finite number.
std::optional<double> NumberOf(const XmlView& element)
{
    if (!element) return 0.0;
    const auto number = element.Value<double>();
    return number && std::isfinite(*number) ? number : std::nullopt;
}

template <std::size_t N>
std::optional<typename KeyFrames<N>::Key> ReadKey(const XmlElement& frame, const char* value,
                                                  const std::array<const char*, N>& numbers)
{
    const auto time = NumberOf(frame.View("Time"));
    if (!time) return std::nullopt;
    typename KeyFrames<N>::Key key{*time, {}};
    const XmlView element = frame.View(value);
    for (std::size_t i = 0; i < N; ++i) {
        const auto number = NumberOf(numbers[i] ? element.Child(numbers[i]) : element);
        if (!number) return std::nullopt;
        key.value[i] = *number;
    }
    return key;
}

template <std::size_t N>
typename KeyFrames<N>::Keys ReadKeys(const XmlElement& list, const char* value,
                                     const std::array<const char*, N>& numbers, double direction)
{
    typename KeyFrames<N>::Keys keys;
    for (const XmlElement& frame : list.Children("KeyFrame")) {
        const auto key = ReadKey<N>(frame, value, numbers);
        if (key) keys.push_back({direction * key->time, key->value});
    }
    std::ranges::stable_sort(keys, {}, &KeyFrames<N>::Key::time);
    return keys;
}

} // namespace

template <std::size_t N>
std::optional<typename KeyFrames<N>::Value> KeyFrames<N>::At(double time, double span) const
{
    std::optional<Key> before;
    std::optional<Key> after;
    const auto look = [&](const Keys& keys, double base, double unit) {
        const auto timeOf = [&](const Key& key) { return base + unit * key.time; };
        const auto next = std::ranges::upper_bound(keys, time, {}, timeOf);
        if (next != keys.begin() && (!before || timeOf(next[-1]) >= before->time)) {
            before = {timeOf(next[-1]), next[-1].value};
        }
        if (next != keys.end() && (!after || timeOf(*next) < after->time)) after = {timeOf(*next), next->value};
    };
    look(fromStart, 0.0, 1.0);
    // One that ends before it starts has no length.
    span = std::max(span, 0.0);
    if (std::isfinite(span)) {
        look(fromEnd, span, 1.0);
        look(ofSpan, 0.0, span / 100.0);
    }
    if (!before || !after) return before ? before->value : after ? std::optional(after->value) : std::nullopt;
    const double part = (time - before->time) / (after->time - before->time);
    Value value;
    for (std::size_t i = 0; i < N; ++i)
        value[i] = std::lerp(before->value[i], after->value[i], part);
    return value;
}

template <std::size_t N>
KeyFrames<N> ReadKeyFrames(const XmlElement& channel, const char* value, const std::array<const char*, N>& numbers)
{
    const auto read = [&](const char* list, double direction) {
        return ReadKeys<N>(channel.Child(list), value, numbers, direction);
    };
    return {read("StartOffsetElements", 1.0), read("EndOffsetElements", -1.0), read("PercentageElements", 1.0)};
}

template struct KeyFrames<1>;
template struct KeyFrames<3>;
template struct KeyFrames<4>;
template KeyFrames<1> ReadKeyFrames(const XmlElement&, const char*, const std::array<const char*, 1>&);
template KeyFrames<3> ReadKeyFrames(const XmlElement&, const char*, const std::array<const char*, 3>&);
template KeyFrames<4> ReadKeyFrames(const XmlElement&, const char*, const std::array<const char*, 4>&);

} // namespace kv
