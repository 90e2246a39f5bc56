#pragma once
// Values over time: what a channel of a transform, and the rectangle of a crop, consist of.

#include "KVProjectData/effects/ParameterXml.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kv {

template <class Value>
struct KeyFrame {
    double time = 0;
    /// Which components may be edited.
    ULONG caps = ZXP_ALL_CAPS;
    Value value{};
};

/// The element that holds a key's value.
inline constexpr const char* ValueElement(const ZXPVector&)
{
    return "Vector";
}
inline constexpr const char* ValueElement(ULONG)
{
    return "Value";
}
inline constexpr const char* ValueElement(const FloatRect&)
{
    return "fRect";
}

inline bool IsFinite(const ZXPVector& value)
{
    return std::isfinite(value.x) && std::isfinite(value.y) && std::isfinite(value.z);
}
inline bool IsFinite(ULONG)
{
    return true;
}
inline bool IsFinite(const FloatRect& value)
{
    return std::isfinite(value.fLeft) && std::isfinite(value.fTop) && std::isfinite(value.fRight) &&
           std::isfinite(value.fBottom);
}

/// The three lists of keys that one value has, each in the order of time. Operations throw Error as the interfaces tell
/// of results; then nothing has changed.
template <class Value>
class KeyFrames {
public:
    using Key = KeyFrame<Value>;
    using List = std::vector<Key>;

    bool Empty() const { return std::ranges::all_of(m_lists, &List::empty); }
    const List& Keys(ULONG list) const { return m_lists[IndexOf(list)]; }

    const Key& At(ULONG list, double time) const
    {
        const List& keys = Keys(list);
        return keys[FindKey(keys, time)];
    }

    const Key& AtIndex(ULONG list, ULONG index) const
    {
        const List& keys = Keys(list);
        if (index >= keys.size()) throw Error(E_INVALIDARG);
        return keys[index];
    }

    void Set(ULONG list, const Key& key)
    {
        List& keys = m_lists[IndexOf(list)];
        if (!std::isfinite(key.time) || !IsFinite(key.value)) throw Error(E_INVALIDARG);
        const auto place = std::ranges::lower_bound(keys, key.time, {}, &Key::time);
        if (place != keys.end() && place->time == key.time) {
            *place = key;
        } else {
            keys.insert(place, key);
        }
    }

    void Delete(ULONG list, double time)
    {
        List& keys = m_lists[IndexOf(list)];
        keys.erase(keys.begin() + static_cast<std::ptrdiff_t>(FindKey(keys, time)));
    }

    void Move(ULONG list, double from, double to)
    {
        constexpr double kLeast = 0.001;
        const List& keys = Keys(list);
        if (std::fabs(from - to) < kLeast) return;
        Key moved = keys[FindKey(keys, from)];
        moved.time = to;
        Set(list, moved);
        Delete(list, from);
    }

    void Shift(double offset)
    {
        auto shifted = m_lists;
        for (List& keys : shifted) {
            for (Key& key : keys)
                key.time += offset;
            const auto notBefore = [](const Key& left, const Key& right) { return left.time >= right.time; };
            const bool distinct = std::ranges::adjacent_find(keys, notBefore) == keys.end();
            // In ascending order, the ends are finite only if all are.
            const bool finite = keys.empty() || (std::isfinite(keys.front().time) && std::isfinite(keys.back().time));
            if (!distinct || !finite) throw Error(E_INVALIDARG);
        }
        m_lists = std::move(shifted);
    }

    /// Takes the lists from an element; all are empty without one.
    static KeyFrames Read(const XmlView& element)
    {
        KeyFrames frames;
        for (std::size_t i = 0; i < kNames.size(); ++i)
            frames.m_lists[i] = ReadList(element.Child(kNames[i]));
        return frames;
    }

    /// Adds the lists that have keys to an element, each in the place of the one that is there.
    void Write(XmlElement& element) const
    {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            element.Remove(kNames[i]);
            if (!m_lists[i].empty()) WriteList(element.Add(kNames[i]), m_lists[i]);
        }
    }

private:
    static constexpr std::array kKinds{ZXP_FROM_START, ZXP_FROM_END, ZXP_PERCENT};
    static constexpr std::array kNames{"StartOffsetElements", "EndOffsetElements", "PercentageElements"};

    static std::size_t IndexOf(ULONG list)
    {
        const auto found = std::ranges::find(kKinds, list);
        if (found == kKinds.end()) throw Error(E_INVALIDARG);
        return static_cast<std::size_t>(found - kKinds.begin());
    }

    static std::size_t FindKey(const List& keys, double time)
    {
        const auto found = std::ranges::lower_bound(keys, time, {}, &Key::time);
        if (found == keys.end() || found->time != time) throw Error(TYPE_E_ELEMENTNOTFOUND);
        return static_cast<std::size_t>(found - keys.begin());
    }

    static List ReadList(const XmlView& element)
    {
        List keys;
        for (XmlView frame = element.Child("KeyFrame"); frame; frame = frame.Next("KeyFrame")) {
            Key& key = keys.emplace_back();
            ReadParameter(frame, "Time", key.time);
            ReadParameter(frame, "Caps", key.caps);
            ReadParameter(frame, ValueElement(key.value), key.value);
        }
        std::ranges::stable_sort(keys, {}, &Key::time);
        // Of keys at one time the last counts, as if they had been set one after the other.
        const auto sameTime = [](const Key& left, const Key& right) { return left.time == right.time; };
        keys.erase(keys.begin(), std::unique(keys.rbegin(), keys.rend(), sameTime).base());
        return keys;
    }

    static void WriteList(XmlElement element, const List& keys)
    {
        for (const Key& key : keys) {
            XmlElement frame = element.Add("KeyFrame");
            frame.Add("Time", key.time);
            frame.Add("Caps", key.caps);
            WriteParameter(frame, ValueElement(key.value), key.value);
        }
    }

    std::array<List, 3> m_lists;
};

} // namespace kv
