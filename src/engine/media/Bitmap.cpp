#include "engine/media/Bitmap.h"

#include "platform/com/Error.h"

#include <algorithm>
#include <cmath>

namespace kv {

std::pair<int, int> SizeOf(double aspectRatio, int width, int height)
{
    const auto side = [](double length) {
        return static_cast<int>(std::clamp(std::round(length), 1.0, double{kMaxBitmapSide}));
    };
    if (width == 0) width = side(height * aspectRatio);
    if (height == 0) height = side(width / aspectRatio);
    return {width, height};
}

SafeArray NewPixels(int width, int height)
{
    const auto pixels = static_cast<ULONG>(width) * static_cast<ULONG>(height);
    SafeArray bytes(SafeArrayCreateVector(VT_UI1, 0, pixels * ULONG{sizeof(std::uint32_t)}));
    if (!bytes.Get()) throw Error(E_OUTOFMEMORY);
    return bytes;
}

SafeArray BytesOf(const Bitmap& bitmap)
{
    SafeArray bytes = NewPixels(bitmap.width, bitmap.height);
    std::ranges::copy(bitmap.pixels, PixelsIn(bytes));
    return bytes;
}

} // namespace kv
