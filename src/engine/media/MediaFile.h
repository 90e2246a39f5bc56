#pragma once
// A media file that is open for reading, within limits of time and memory.

#include "engine/media/FFmpeg.h"
#include "engine/media/Orientation.h"

#include <chrono>
#include <cstdint>
#include <string_view>

namespace kv {

/// Pictures with more pixels are not decoded.
inline constexpr std::int64_t kMaxPixels = 134'217'728;

class MediaFile {
public:
    /// Opens a local file and finds its streams; either separator is understood. Only the content counts, not the
    /// name's ending; no other file is opened, whatever the content asks for. Throws Error(E_INVALIDARG) for an empty
    /// path, Error(ZXE_E_NOT_MEDIA) for what cannot be read as media.
    explicit MediaFile(std::u16string_view path);
    MediaFile(const MediaFile&) = delete;
    MediaFile& operator=(const MediaFile&) = delete;

    AVFormatContext& Format() const { return *m_format; }

    /// It is one still picture, whatever frame rate its reader makes up.
    bool IsStill() const;
    /// What the file tells of how a stream is shown.
    Orientation OrientationOf(const AVStream& stream) const;

    /// Gives reading the time of one operation anew; what reads past it fails.
    void StartClock();
    bool PastDeadline() const;

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point m_deadline;
    Input m_input;
    /// Reads from the input, so that it is closed before.
    kv::Format m_format;
    /// Of a still picture.
    Orientation m_orientation;
};

} // namespace kv
