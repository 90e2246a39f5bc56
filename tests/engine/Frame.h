#pragma once
// Frames as productions and media hand them out.

#include "platform/automation/SafeArray.h"
#include "platform/com/ComPtr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace kv::test {

struct Frame {
    HRESULT result = S_OK;
    ULONG width = 9;
    ULONG height = 9;
    std::vector<std::uint8_t> bytes;

    /// Blue, green, red, alpha, of a place in parts of the width and height.
    std::vector<int> At(double x, double y) const
    {
        const std::size_t place = static_cast<std::size_t>(y * height) * width + static_cast<std::size_t>(x * width);
        return {bytes.begin() + static_cast<std::ptrdiff_t>(place * 4),
                bytes.begin() + static_cast<std::ptrdiff_t>(place * 4 + 4)};
    }

    /// The same as a letter: of red, green, blue, yellow, white, k for black; - for what is less than half seen.
    char Letter(double x, double y) const
    {
        const std::vector<int> pixel = At(x, y);
        const auto lit = [&](int channel, int bit) { return pixel[static_cast<std::size_t>(channel)] > 128 ? bit : 0; };
        return lit(3, 1) ? "kbg?r?yw"[lit(2, 4) + lit(1, 2) + lit(0, 1)] : '-';
    }

    /// The letters of the corners, from the top left in rows.
    std::string Corners() const { return {Letter(0.2, 0.2), Letter(0.8, 0.2), Letter(0.2, 0.8), Letter(0.8, 0.8)}; }
};

template <class Interface>
Frame FrameBy(IUnknown* object, double seconds, ULONG width, ULONG height)
{
    Frame frame;
    ULONG stride = 9;
    SafeArray pixels;
    frame.result =
        Query<Interface>(object)->GetFrame(seconds, width, height, &frame.width, &frame.height, &stride, pixels.Put());
    EXPECT_EQ(frame.width * 4, stride);
    EXPECT_EQ(SUCCEEDED(frame.result), pixels.Get() != nullptr);
    if (pixels.Get()) {
        const auto* bytes = static_cast<const std::uint8_t*>(pixels.Get()->pvData);
        frame.bytes.assign(bytes, bytes + pixels.Get()->rgsabound[0].cElements);
        EXPECT_EQ(frame.height * stride, frame.bytes.size());
    }
    return frame;
}

} // namespace kv::test
