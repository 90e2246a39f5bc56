#include "engine/media/Orientation.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace kv {

std::optional<Orientation> DisplayedOrientation(const AVStream& stream)
{
    constexpr std::size_t kEntries = 9;
    std::int32_t matrix[kEntries];
    std::size_t size = 0;
    const auto* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!data || size < sizeof matrix) return std::nullopt;
    std::memcpy(matrix, data, sizeof matrix);
    const auto sign = [](std::int32_t value) { return value < 0 ? -1 : 1; };
    // Numbers as large as the lowest one have no absolute value of their own type.
    if (std::abs(std::int64_t{matrix[0]}) >= std::abs(std::int64_t{matrix[1]})) {
        return Orientation{sign(matrix[0]), 0, 0, sign(matrix[4])};
    }
    return Orientation{0, sign(matrix[1]), sign(matrix[3]), 0};
}

} // namespace kv
