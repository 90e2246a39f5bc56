// Pictures of media files.

#include "Bench.h"

#include "KVProjectData/Engine/Media.h"
#include "platform/automation/Bstr.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <unistd.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace kv::bench {
namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 120;
constexpr double kSeconds = 3.1;

/// A clip that ffmpeg makes, and its end.
class Clip {
public:
    Clip()
    {
        const std::string command = "ffmpeg -v error -nostdin -y -f lavfi -i testsrc=duration=6:size=720x576:rate=25 "
                                    "-c:v mpeg4 -b:v 6M " +
                                    m_path;
        if (std::system(command.c_str()) != 0) throw std::runtime_error(command);
    }
    ~Clip()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    const std::string& Path() const { return m_path; }

private:
    const std::string m_path =
        (std::filesystem::temp_directory_path() / ("kv_bench_" + std::to_string(getpid()) + ".mp4")).string();
};

void MustNot(bool failed)
{
    if (failed) throw std::runtime_error("the yardstick failed");
}

/// The shortest way through FFmpeg's libraries to the same picture.
void ThumbnailByHand(const std::string& path)
{
    AVFormatContext* format = nullptr;
    MustNot(avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0);
    MustNot(avformat_find_stream_info(format, nullptr) < 0);
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    AVStream* stream = format->streams[index];
    AVCodecContext* decoder = avcodec_alloc_context3(avcodec_find_decoder(stream->codecpar->codec_id));
    avcodec_parameters_to_context(decoder, stream->codecpar);
    MustNot(avcodec_open2(decoder, decoder->codec, nullptr) < 0);
    const auto time = stream->start_time + static_cast<std::int64_t>(kSeconds / av_q2d(stream->time_base));
    MustNot(av_seek_frame(format, index, time, AVSEEK_FLAG_BACKWARD) < 0);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    bool reached = false;
    // The frame that shows is the last one that begins by then.
    const std::int64_t last = time - av_rescale_q(1, av_inv_q(stream->avg_frame_rate), stream->time_base);
    while (!reached && av_read_frame(format, packet) >= 0) {
        if (packet->stream_index == index) avcodec_send_packet(decoder, packet);
        av_packet_unref(packet);
        while (!reached && avcodec_receive_frame(decoder, frame) >= 0)
            reached = frame->best_effort_timestamp > last;
    }
    MustNot(!reached);
    std::vector<std::uint8_t> pixels(4 * kWidth * kHeight);
    std::uint8_t* rows = pixels.data();
    const int stride = 4 * kWidth;
    SwsContext* scaler =
        sws_getContext(frame->width, frame->height, decoder->pix_fmt, kWidth, kHeight, AV_PIX_FMT_BGRA,
                       SWS_BILINEAR | SWS_ACCURATE_RND | SWS_BITEXACT | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr);
    sws_scale(scaler, frame->data, frame->linesize, 0, frame->height, &rows, &stride);
    sws_freeContext(scaler);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    avformat_close_input(&format);
}

void Thumbnail(const Bstr& path)
{
    ComPtr<IZXMediaInformation> media;
    Must(CreateInstance(CLSID_ZXMediaInformation, media));
    Must(media->Open(path.Get()));
    ULONG width = 0;
    ULONG height = 0;
    ULONG stride = 0;
    SafeArray pixels;
    Must(Query<IZXMediaFrames>(media)->GetFrame(kSeconds, kWidth, kHeight, &width, &height, &stride, pixels.Put()));
}

} // namespace

void MeasureMedia(std::vector<Row>& rows)
{
    constexpr int kRounds = 15;
    const Clip clip;
    const Bstr path(ToUtf16(clip.Path()));
    const Medians medians = InTurn(
        kRounds, [&] { return 1e3 * Time([&] { Thumbnail(path); }); },
        [&] { return 1e3 * Time([&] { ThumbnailByHand(clip.Path()); }); });
    rows.push_back(
        {"thumbnail of a video frame | FFmpeg's libraries by hand", "ms", medians.ours, medians.yardstick, 1.1});
}

} // namespace kv::bench
