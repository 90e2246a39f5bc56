#include "engine/media/Exif.h"

#include <array>
#include <cstdint>
#include <optional>

namespace kv {
namespace {

/// Exif data: a TIFF file within the file.
struct Exif {
    std::int64_t start;
    std::int64_t end;
};

constexpr std::uint32_t Tag(const char (&text)[5])
{
    const auto at = [&](int i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
    return at(0) << 24 | at(1) << 16 | at(2) << 8 | at(3);
}

/// Pictures have their data behind a few other parts.
constexpr int kMaxParts = 64;

std::optional<Exif> FindInJpeg(AVIOContext& input)
{
    constexpr unsigned kMarker = 0xFF;
    constexpr unsigned kApp1 = 0xFFE1;
    constexpr unsigned kStartOfScan = 0xFFDA;
    avio_seek(&input, 2, SEEK_SET);
    for (int i = 0; i < kMaxParts && !avio_feof(&input); ++i) {
        const unsigned marker = avio_rb16(&input);
        const std::int64_t end = avio_tell(&input) + avio_rb16(&input);
        if (marker >> 8 != kMarker || marker == kStartOfScan) break;
        if (marker == kApp1 && avio_rb32(&input) == Tag("Exif") && avio_rb16(&input) == 0) {
            return Exif{avio_tell(&input), end};
        }
        avio_seek(&input, end, SEEK_SET);
    }
    return std::nullopt;
}

std::optional<Exif> FindInPng(AVIOContext& input)
{
    constexpr int kSignature = 8;
    constexpr int kChecksum = 4;
    avio_seek(&input, kSignature, SEEK_SET);
    for (int i = 0; i < kMaxParts && !avio_feof(&input); ++i) {
        const std::int64_t length = avio_rb32(&input);
        const std::uint32_t type = avio_rb32(&input);
        const std::int64_t start = avio_tell(&input);
        if (type == Tag("eXIf")) return Exif{start, start + length};
        if (type == Tag("IDAT")) break;
        avio_seek(&input, start + length + kChecksum, SEEK_SET);
    }
    return std::nullopt;
}

/// The value of the tag "Orientation" in the first directory; 0 without one.
unsigned OrientationIn(AVIOContext& input, const Exif& exif)
{
    constexpr unsigned kOrientation = 0x0112;
    constexpr unsigned kMaxEntries = 256;
    constexpr int kEntrySize = 12;
    avio_seek(&input, exif.start, SEEK_SET);
    const bool little = avio_rb16(&input) == 0x4949;
    const auto read16 = [&] { return little ? avio_rl16(&input) : avio_rb16(&input); };
    const auto read32 = [&] { return little ? avio_rl32(&input) : avio_rb32(&input); };
    if (read16() != 42) return 0;
    std::int64_t place = exif.start + read32();
    avio_seek(&input, place, SEEK_SET);
    const unsigned entries = read16();
    place += 2;
    for (unsigned i = 0; i < entries && i < kMaxEntries && place + kEntrySize <= exif.end; ++i, place += kEntrySize) {
        avio_seek(&input, place, SEEK_SET);
        if (read16() != kOrientation) continue;
        // A short number, one of it.
        return read16() == 3 && read32() == 1 ? read16() : 0;
    }
    return 0;
}

} // namespace

Orientation ReadExifOrientation(AVIOContext& input)
{
    constexpr std::array<Orientation, 8> kOrientations{{
        {1, 0, 0, 1},
        {-1, 0, 0, 1},
        {-1, 0, 0, -1},
        {1, 0, 0, -1},
        {0, 1, 1, 0},
        {0, 1, -1, 0},
        {0, -1, -1, 0},
        {0, -1, 1, 0},
    }};
    constexpr unsigned kJpeg = 0xFFD8;
    constexpr unsigned kPng = 0x8950;
    avio_seek(&input, 0, SEEK_SET);
    const unsigned signature = avio_rb16(&input);
    const std::optional<Exif> exif = signature == kJpeg  ? FindInJpeg(input)
                                     : signature == kPng ? FindInPng(input)
                                                         : std::nullopt;
    const unsigned told = exif ? OrientationIn(input, *exif) : 0;
    avio_seek(&input, 0, SEEK_SET);
    return told >= 1 && told <= kOrientations.size() ? kOrientations[told - 1] : Orientation{};
}

} // namespace kv
