#include "engine/media/FrameReader.h"

#include "KVProjectData/Engine/Media.h"
#include "engine/media/FrameScaler.h"
#include "platform/com/Error.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace kv {
namespace {

/// Seconds ahead that decoding reaches sooner than seeking.
constexpr double kNear = 0.5;

const PictureStream& FirstPicture(const MediaProperties& media)
{
    if (media.pictures.empty()) throw Error(ZXE_E_NO_STREAM);
    return media.pictures.front();
}

Decoder OpenDecoder(const AVStream& stream)
{
    const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!codec) throw Error(ZXE_E_NO_FRAME);
    Decoder decoder(Allocated(avcodec_alloc_context3(codec)));
    Dictionary limit;
    limit.Set("max_pixels", std::to_string(kMaxPixels).c_str());
    if (avcodec_parameters_to_context(decoder.get(), stream.codecpar) < 0) throw Error(ZXE_E_NO_FRAME);
    decoder->pkt_timebase = stream.time_base;
    if (avcodec_open2(decoder.get(), codec, limit.Put()) < 0) throw Error(ZXE_E_NO_FRAME);
    return decoder;
}

} // namespace

FrameReader::FrameReader(MediaFile& file, const MediaProperties& media)
    : m_file(file),
      m_picture(FirstPicture(media)),
      m_stream(*file.Format().streams[m_picture.stream]),
      m_orientation(file.OrientationOf(m_stream)),
      m_decoder(OpenDecoder(m_stream)),
      m_indexed(!(file.Format().iformat->flags & AVFMT_TS_DISCONT)),
      m_frameDuration(m_picture.frameRate > 0.0 ? std::llround(1.0 / m_picture.frameRate / av_q2d(m_stream.time_base))
                                                : 1)
{
    // What else the file holds is not even taken apart.
    for (unsigned i = 0; i < file.Format().nb_streams; ++i)
        file.Format().streams[i]->discard = static_cast<int>(i) == m_picture.stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

Bitmap FrameReader::FrameAt(double seconds, int width, int height)
{
    if (!std::isfinite(seconds) || seconds < 0.0) throw Error(E_INVALIDARG);
    if (width < 0 || height < 0 || width > kMaxBitmapSide || height > kMaxBitmapSide) throw Error(E_INVALIDARG);
    if (width == 0 && height == 0) {
        width = static_cast<int>(m_picture.width);
        height = static_cast<int>(m_picture.height);
    }
    const auto [columns, rows] = SizeOf(m_picture.aspectRatio, width, height);
    m_file.StartClock();
    Find(m_picture.moving ? InStreamTime(seconds) : INT64_MAX);
    return Scaled(*m_shown, m_orientation, columns, rows);
}

std::int64_t FrameReader::InStreamTime(double seconds) const
{
    // A time that is told in decimals lies within the frame that it means, not a rounding error before it. A unit may
    // be as long as a frame.
    constexpr double kDecimals = 0.0005;
    const double unit = av_q2d(m_stream.time_base);
    const double units = seconds / unit + std::min(kDecimals / unit, 0.5);
    const std::int64_t start = m_stream.start_time == AV_NOPTS_VALUE ? 0 : m_stream.start_time;
    return units < 1e15 ? start + static_cast<std::int64_t>(units) : INT64_MAX / 4;
}

bool FrameReader::Shows(std::int64_t time) const
{
    if (!m_shown) return false;
    if (time < m_shown->pts) return false;
    // A frame whose length is told by an index shows until then; others until the next one is known.
    const bool within = m_indexed && time - m_shown->pts < std::min(m_shown->pkt_duration, m_frameDuration);
    return within || (m_next ? time < m_next->pts : m_ended);
}

void FrameReader::Find(std::int64_t time)
{
    if (Shows(time)) return;
    const auto near = static_cast<std::int64_t>(kNear / av_q2d(m_stream.time_base));
    const bool ahead = m_shown ? time >= m_shown->pts && time - m_shown->pts < near : !m_started && time < near;
    if ((ahead || !m_picture.moving) && Advance(time)) return;
    const std::int64_t start = m_stream.start_time == AV_NOPTS_VALUE ? 0 : m_stream.start_time;
    // Without an index a search ends within a group of pictures, not at its beginning, which half a second before does.
    // Past the end, and before frames that stand on later ones, the first attempt comes out too late.
    for (const double back : {m_indexed ? 0.0 : 0.6, 2.0, 10.0}) {
        const std::int64_t from = time - static_cast<std::int64_t>(back / av_q2d(m_stream.time_base));
        if (from > start && Seek(from) && Advance(time)) return;
    }
    if (m_started) SeekStart();
    if (Advance(time)) return;
    if (!m_next) throw Error(ZXE_E_NO_FRAME);
    m_shown = std::move(m_next);
}

bool FrameReader::Seek(std::int64_t time)
{
    const std::int64_t duration = m_stream.duration;
    if (duration > 0 && m_stream.start_time != AV_NOPTS_VALUE) time = std::min(time, m_stream.start_time + duration);
    return Restart(av_seek_frame(&m_file.Format(), m_stream.index, time, AVSEEK_FLAG_BACKWARD));
}

void FrameReader::SeekStart()
{
    // A search by time may end behind the first pictures.
    if (!m_indexed && Restart(av_seek_frame(&m_file.Format(), -1, 0, AVSEEK_FLAG_BYTE))) return;
    Seek(m_stream.start_time == AV_NOPTS_VALUE ? 0 : m_stream.start_time);
}

bool FrameReader::Restart(int soughtResult)
{
    if (soughtResult < 0) return false;
    avcodec_flush_buffers(m_decoder.get());
    m_shown.reset();
    m_next.reset();
    m_started = false;
    m_ended = false;
    return true;
}

bool FrameReader::Advance(std::int64_t time)
{
    m_started = true;
    while (true) {
        if (!m_next && !m_ended) {
            m_next = Decode();
            m_ended = !m_next;
        }
        if (!m_next || m_next->pts > time) return m_shown != nullptr;
        m_shown = std::move(m_next);
        m_ended = m_ended || !m_picture.moving;
        if (Shows(time)) return true;
    }
}

Frame FrameReader::Decode()
{
    Frame frame(Allocated(av_frame_alloc()));
    while (true) {
        if (m_file.PastDeadline()) throw Error(ZXE_E_NO_FRAME);
        const int result = avcodec_receive_frame(m_decoder.get(), frame.get());
        if (result == AVERROR_EOF) return nullptr;
        if (result >= 0 && frame->width > 0 && frame->height > 0) break;
        if (!Feed()) return nullptr;
    }
    frame->pts = frame->best_effort_timestamp;
    // Files that tell no times show their frames in turn.
    if (frame->pts == AV_NOPTS_VALUE) frame->pts = m_shown ? m_shown->pts + m_frameDuration : 0;
    return Premultiplied(std::move(frame));
}

bool FrameReader::Feed()
{
    const Packet packet(Allocated(av_packet_alloc()));
    // A file that breaks off ends there.
    const bool more = av_read_frame(&m_file.Format(), packet.get()) >= 0;
    if (more && packet->stream_index != m_stream.index) return true;
    const int sent = avcodec_send_packet(m_decoder.get(), more ? packet.get() : nullptr);
    // A packet that cannot be decoded is passed over.
    return more || sent >= 0;
}

} // namespace kv
