#pragma once
// A picture in memory.

#include "platform/automation/SafeArray.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kv {

/// Rows from the top, without gaps. A pixel is 0xAARRGGBB with its colours multiplied by alpha: what Cairo calls
/// ARGB32, with a stride of 4 * width bytes.
struct Bitmap {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    Bitmap() = default;
    Bitmap(int columns, int rows)
        : width(columns), height(rows), pixels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows))
    {
    }
    std::uint32_t* Row(int y) { return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width); }
    const std::uint32_t* Row(int y) const
    {
        return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

/// Sizes of bitmaps end here.
inline constexpr int kMaxBitmapSide = 16'384;

/// Of a width and a height, of which one may be 0 and follows from the aspect ratio then, both.
std::pair<int, int> SizeOf(double aspectRatio, int width, int height);

/// Transparent pixels as an array of bytes, and where the first one lies. Throw on lack of memory.
SafeArray NewPixels(int width, int height);
inline std::uint32_t* PixelsIn(const SafeArray& bytes)
{
    return static_cast<std::uint32_t*>(bytes.Get()->pvData);
}
/// The pixels as such an array.
SafeArray BytesOf(const Bitmap& bitmap);

} // namespace kv
