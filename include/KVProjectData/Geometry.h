#pragma once
// Places and areas of a menu: normalised, the y axis upwards.

struct FloatPoint {
    float x;
    float y;
};

/// `fTop` is the larger value. All zeros are empty.
struct FloatRect {
    float fLeft;
    float fTop;
    float fRight;
    float fBottom;

    friend bool operator==(const FloatRect&, const FloatRect&) = default;
};
