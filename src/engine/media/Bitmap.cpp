#include "engine/media/Bitmap.h"

#include "platform/com/Error.h"

#include <cstring>

namespace kv {

SafeArray BytesOf(const Bitmap& bitmap)
{
    const std::size_t size = bitmap.pixels.size() * sizeof bitmap.pixels[0];
    SafeArray bytes(SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(size)));
    if (!bytes.Get()) throw Error(E_OUTOFMEMORY);
    std::memcpy(bytes.Get()->pvData, bitmap.pixels.data(), size);
    return bytes;
}

} // namespace kv
