#include "engine/render/PictureStore.h"

#include "platform/com/Error.h"

#include <algorithm>
#include <cmath>

namespace kv {
namespace {

/// What holds a picture beside its pixels, in bytes.
constexpr std::size_t kOverhead = 512;

std::size_t SizeOf(int width, int height)
{
    return sizeof(std::uint32_t) * static_cast<std::size_t>(width) * static_cast<std::size_t>(height) + kOverhead;
}

/// The smallest of the sizes that halve, rounded up, which is not below the one that is needed.
int Halved(int side, double needed)
{
    while (true) {
        const int half = (side + 1) / 2;
        if (side <= kMaxBitmapSide && (side == 1 || half < needed)) return side;
        side = half;
    }
}

/// What a file that is open costs. Even that of a small picture has a decoder.
std::size_t PixelsOf(const ShownFile& file)
{
    constexpr std::size_t kLeast = std::size_t{1} << 21;
    return std::max(std::size_t{file.picture.width} * file.picture.height, kLeast);
}

/// Moves what a mask tells into alpha.
void TurnIntoMask(Bitmap& bitmap)
{
    constexpr std::uint32_t kOpaque = 255;
    if (std::ranges::any_of(bitmap.pixels, [](std::uint32_t pixel) { return pixel >> 24 != kOpaque; })) return;
    for (std::uint32_t& pixel : bitmap.pixels) {
        // Parts of 256.
        constexpr std::uint32_t kRed = 77;
        constexpr std::uint32_t kGreen = 150;
        constexpr std::uint32_t kBlue = 29;
        const std::uint32_t light =
            (kRed * (pixel >> 16 & 0xFF) + kGreen * (pixel >> 8 & 0xFF) + kBlue * (pixel & 0xFF)) >> 8;
        pixel = light << 24;
    }
}

} // namespace

template <class T>
PictureStore::Found<T> PictureStore::Looked(std::shared_ptr<const T> value)
{
    constexpr auto kPatience = std::chrono::seconds(10);
    return {std::move(value), Clock::now() + kPatience};
}

std::shared_ptr<const ShownFile> PictureStore::Open(std::u16string_view path)
{
    const std::optional<FileStamp> stamp = StampOf(path);
    if (!stamp) return nullptr;
    {
        const std::lock_guard lock(m_mutex);
        const Found<ShownFile>* known = m_files.Find(*stamp);
        if (known && known->Counts()) return known->value;
    }
    std::shared_ptr<const ShownFile> shown;
    std::shared_ptr<Reader> reader;
    try {
        reader = std::make_shared<Reader>(path);
        const MediaProperties& media = reader->media;
        if (!media.pictures.empty()) {
            shown = std::make_shared<const ShownFile>(ShownFile{*stamp, media.pictures.front(), media.duration});
        }
    } catch (const Error&) {
        reader = nullptr;
    }
    const std::lock_guard lock(m_mutex);
    m_files.Put(*stamp, Looked(shown), 1);
    if (shown) m_readers.Put(*stamp, std::move(reader), PixelsOf(*shown));
    return shown;
}

std::shared_ptr<const Bitmap> PictureStore::PictureOf(const ShownFile& file, double seconds, double neededWidth,
                                                      double neededHeight, PixelsAs pixels)
{
    // What is no time has no place in an order.
    if (!std::isfinite(seconds)) return nullptr;
    PictureKey key{file.stamp, file.picture.moving ? seconds : 0.0,
                   Halved(static_cast<int>(file.picture.width), neededWidth),
                   Halved(static_cast<int>(file.picture.height), neededHeight), pixels};
    while (SizeOf(key.width, key.height) > m_limit / 3 && key.width + key.height > 2) {
        int& side = key.width > key.height ? key.width : key.height;
        side = (side + 1) / 2;
    }
    const auto kept = Kept(key);
    return kept ? *kept : Decode(file, key);
}

std::optional<std::shared_ptr<const Bitmap>> PictureStore::Kept(const PictureKey& key)
{
    const std::lock_guard lock(m_mutex);
    const Found<Bitmap>* known = m_pictures.Find(key);
    if (!known || !known->Counts()) return std::nullopt;
    return known->value;
}

std::shared_ptr<PictureStore::Reader> PictureStore::ReaderOf(const ShownFile& file)
{
    {
        const std::lock_guard lock(m_mutex);
        if (const auto* open = m_readers.Find(file.stamp)) return *open;
    }
    auto reader = std::make_shared<Reader>(ToUtf16(file.stamp.path));
    const std::lock_guard lock(m_mutex);
    if (const auto* open = m_readers.Find(file.stamp)) return *open;
    m_readers.Put(file.stamp, reader, PixelsOf(file));
    return reader;
}

std::shared_ptr<const Bitmap> PictureStore::Decode(const ShownFile& file, const PictureKey& key)
{
    std::shared_ptr<const Bitmap> picture;
    try {
        const std::shared_ptr<Reader> reader = ReaderOf(file);
        const std::lock_guard reading(reader->mutex);
        // Another thread may have been here before.
        if (const auto kept = Kept(key)) return *kept;
        if (!reader->frames) reader->frames.emplace(reader->file, reader->media);
        Bitmap bitmap = reader->frames->FrameAt(key.seconds, key.width, key.height);
        if (key.pixels == PixelsAs::Mask) TurnIntoMask(bitmap);
        picture = std::make_shared<const Bitmap>(std::move(bitmap));
    } catch (const Error&) {
        picture = nullptr;
    }
    const std::lock_guard lock(m_mutex);
    m_pictures.Put(key, Looked(picture), picture ? SizeOf(picture->width, picture->height) : kOverhead);
    // A still picture is had in other sizes only rarely, and its decoder holds it whole.
    if (!file.picture.moving) m_readers.Drop(file.stamp);
    return picture;
}

std::size_t PictureStore::Kept()
{
    const std::lock_guard lock(m_mutex);
    return m_pictures.Cost();
}

} // namespace kv
