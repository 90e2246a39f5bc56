#include "engine/media/Bitmap.h"

#include "platform/com/Error.h"

#include <algorithm>
#include <cmath>
#include <cstring>

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

SafeArray BytesOf(const Bitmap& bitmap)
{
    const std::size_t size = bitmap.pixels.size() * sizeof bitmap.pixels[0];
    SafeArray bytes(SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(size)));
    if (!bytes.Get()) throw Error(E_OUTOFMEMORY);
    std::memcpy(bytes.Get()->pvData, bitmap.pixels.data(), size);
    return bytes;
}

void Give(const Bitmap& bitmap, ULONG* width, ULONG* height, ULONG* stride, SAFEARRAY** pixels)
{
    SafeArray bytes = BytesOf(bitmap);
    *width = static_cast<ULONG>(bitmap.width);
    *height = static_cast<ULONG>(bitmap.height);
    *stride = *width * sizeof(std::uint32_t);
    *pixels = bytes.Detach();
}

} // namespace kv
