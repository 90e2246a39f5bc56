#pragma once
// Places and areas of a menu: normalised, the y axis upwards.

#include "platform/automation/TypeDescription.h"

struct FloatPoint {
    float x;
    float y;

    friend bool operator==(const FloatPoint&, const FloatPoint&) = default;
};

template <>
struct kv::RecordTable<FloatPoint> {
    static constexpr std::array fields{Field<&FloatPoint::x>("x"), Field<&FloatPoint::y>("y")};
};

/// `fTop` is the larger value. All zeros are empty.
struct FloatRect {
    float fLeft;
    float fTop;
    float fRight;
    float fBottom;

    friend bool operator==(const FloatRect&, const FloatRect&) = default;
};

template <>
struct kv::RecordTable<FloatRect> {
    static constexpr std::array fields{Field<&FloatRect::fLeft>("fLeft"), Field<&FloatRect::fTop>("fTop"),
                                       Field<&FloatRect::fRight>("fRight"), Field<&FloatRect::fBottom>("fBottom")};
};

/// A point or a size in the frame of a group.
struct tagPOINTF {
    float x;
    float y;

    friend bool operator==(const tagPOINTF&, const tagPOINTF&) = default;
};

template <>
struct kv::RecordTable<tagPOINTF> {
    static constexpr std::array fields{Field<&tagPOINTF::x>("x"), Field<&tagPOINTF::y>("y")};
};
