#pragma once
// The pictures of a media file, one at a time.

#include "engine/media/Bitmap.h"
#include "engine/media/MediaFile.h"
#include "engine/media/MediaProbe.h"
#include "engine/media/Orientation.h"

#include <cstdint>

namespace kv {

/// Belongs to one thread at a time. Times that grow in small steps cost no seeking.
class FrameReader {
public:
    /// Reads the first picture stream. The file outlives the reader, which alone reads from it. Throws
    /// Error(ZXE_E_NO_STREAM) for media without pictures, Error(ZXE_E_NO_FRAME) for pictures of an unknown coding.
    FrameReader(MediaFile& file, const MediaProperties& media);

    /// The picture at a time in seconds, scaled; IZXMediaFrames::GetFrame tells times, sizes and errors.
    Bitmap FrameAt(double seconds, int width, int height);

private:
    void Find(std::int64_t time);
    bool Shows(std::int64_t time) const;
    bool Seek(std::int64_t time);
    void SeekStart();
    /// Forgets what was decoded, unless seeking failed.
    bool Restart(int soughtResult);
    /// Goes on until the frame at a time is `m_shown`. False when all that follow come later.
    bool Advance(std::int64_t time);
    /// The next frame; null at the end of the file.
    Frame Decode();
    bool Feed();
    std::int64_t InStreamTime(double seconds) const;

    MediaFile& m_file;
    const PictureStream m_picture;
    AVStream& m_stream;
    const Orientation m_orientation;
    Decoder m_decoder;
    /// The file tells where its frames are; in others, such as programme streams, times are searched for.
    const bool m_indexed;
    /// In the units of the stream's times.
    const std::int64_t m_frameDuration;
    /// The frame that was asked for last, and the one after it when it is known already.
    Frame m_shown;
    Frame m_next;
    bool m_started = false;
    bool m_ended = false;
};

} // namespace kv
