#pragma once
// Decoded pictures, kept between frames.

#include "engine/media/Bitmap.h"
#include "engine/media/FileStamp.h"
#include "engine/media/FrameReader.h"
#include "engine/render/RecentlyUsed.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <tuple>

namespace kv {

/// A file with pictures.
struct ShownFile {
    FileStamp stamp;
    PictureStream picture;
    /// Seconds; 0 where it is not known.
    double duration;
};

/// How the pixels of a picture are to be had.
enum class PixelsAs {
    Picture,
    /// In the alpha of each pixel: that of the picture, or its brightness where it is opaque throughout.
    Mask,
};

/// For any number of threads; one file is decoded by one of them at a time. Pictures are kept in sizes that halve, so
/// that one that grows or shrinks from frame to frame is not decoded anew for each. A file that was changed is read
/// anew, and one that could not be read is tried again after some seconds.
class PictureStore {
public:
    static constexpr std::size_t kUsualLimit = std::size_t{192} << 20;

    /// Bytes that pictures may take; what a single one takes is held to a third of it.
    explicit PictureStore(std::size_t limit = kUsualLimit) : m_pictures(limit), m_limit(limit) {}
    PictureStore(const PictureStore&) = delete;
    PictureStore& operator=(const PictureStore&) = delete;

    /// Null for a file that cannot be read and one without pictures.
    std::shared_ptr<const ShownFile> Open(std::u16string_view path);

    /// The picture at a time: where it is larger itself, at least as large as it is needed, and on neither side twice
    /// that. Null when there is none.
    std::shared_ptr<const Bitmap> PictureOf(const ShownFile& file, double seconds, double neededWidth,
                                            double neededHeight, PixelsAs pixels = PixelsAs::Picture);

    /// Bytes that the pictures take.
    std::size_t Kept();

private:
    using Clock = std::chrono::steady_clock;

    /// Something that was looked for. That it is not there counts for a while.
    template <class T>
    struct Found {
        std::shared_ptr<const T> value;
        Clock::time_point until;

        bool Counts() const { return value || Clock::now() < until; }
    };

    struct PictureKey {
        FileStamp file;
        double seconds;
        int width;
        int height;
        PixelsAs pixels;

        bool operator<(const PictureKey& other) const
        {
            return std::tie(seconds, width, height, pixels, file) <
                   std::tie(other.seconds, other.width, other.height, other.pixels, other.file);
        }
    };

    /// A file that is open.
    struct Reader {
        explicit Reader(std::u16string_view path) : file(path), media(Describe(file)) {}

        std::mutex mutex;
        MediaFile file;
        const MediaProperties media;
        std::optional<FrameReader> frames;
    };

    template <class T>
    static Found<T> Looked(std::shared_ptr<const T> value);
    std::shared_ptr<Reader> ReaderOf(const ShownFile& file);
    std::optional<std::shared_ptr<const Bitmap>> Kept(const PictureKey& key);
    std::shared_ptr<const Bitmap> Decode(const ShownFile& file, const PictureKey& key);

    /// What holds how many.
    static constexpr std::size_t kFiles = 1'024;
    /// Pixels of the pictures of all files that stay open; what a decoder holds for a single one is some of them.
    static constexpr std::size_t kOpenPixels = std::size_t{32} << 20;

    std::mutex m_mutex;
    RecentlyUsed<FileStamp, Found<ShownFile>> m_files{kFiles};
    RecentlyUsed<FileStamp, std::shared_ptr<Reader>> m_readers{kOpenPixels};
    RecentlyUsed<PictureKey, Found<Bitmap>> m_pictures;
    const std::size_t m_limit;
};

} // namespace kv
