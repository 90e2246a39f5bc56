#include "engine/MediaProbe.h"

#include "KVProjectData/Engine.h"
#include "platform/com/Error.h"
#include "platform/system/Paths.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <memory>
#include <new>
#include <string>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

namespace kv {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kTimeLimit = std::chrono::seconds(10);
/// Bytes, and microseconds of media, that are looked at in search of the streams.
constexpr std::int64_t kProbeSize = 5'000'000;
constexpr std::int64_t kAnalyseDuration = 5'000'000;
constexpr int kMaxStreams = 64;
/// Pictures with more are not decoded while the streams are looked for.
constexpr const char* kMaxPixels = "134217728";

class Dictionary {
public:
    Dictionary() = default;
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;
    ~Dictionary() { av_dict_free(&m_entries); }

    void Set(const char* key, const char* value)
    {
        if (av_dict_set(&m_entries, key, value, 0) < 0) throw std::bad_alloc();
    }
    AVDictionary** Put() { return &m_entries; }

private:
    AVDictionary* m_entries = nullptr;
};

struct InputCloser {
    void operator()(AVIOContext* input) const { avio_close(input); }
};
using Input = std::unique_ptr<AVIOContext, InputCloser>;

struct FormatCloser {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
using Format = std::unique_ptr<AVFormatContext, FormatCloser>;

int PastDeadline(void* deadline)
{
    return Clock::now() > *static_cast<const Clock::time_point*>(deadline);
}

/// Media files that keep some of their media in others are read without those.
int RefuseToOpen(AVFormatContext*, AVIOContext** input, const char*, int, AVDictionary**)
{
    *input = nullptr;
    return AVERROR(EACCES);
}

/// The path of a regular file: a device or a pipe could keep its reader for ever.
std::string FindFile(std::u16string_view path)
{
    if (path.find(u'\0') != path.npos) throw Error(ZXE_E_NOT_MEDIA);
    std::string file = ToHostPath(path);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) throw Error(ZXE_E_NOT_MEDIA);
    return file;
}

Input OpenInput(const std::string& file, const AVIOInterruptCB& interrupt)
{
    Dictionary options;
    options.Set("protocol_whitelist", "file");
    AVIOContext* input = nullptr;
    if (avio_open2(&input, ("file:" + file).c_str(), AVIO_FLAG_READ, &interrupt, options.Put()) < 0) {
        throw Error(ZXE_E_NOT_MEDIA);
    }
    return Input(input);
}

/// The format, told by the content alone. Playlists and descriptions of what is elsewhere are no media here.
const AVInputFormat* FindInputFormat(AVIOContext& input)
{
    constexpr std::string_view kLeadElsewhere[] = {"concat", "dash", "hls", "image2", "imf", "rtsp", "sdp"};
    const AVInputFormat* format = nullptr;
    if (av_probe_input_buffer2(&input, &format, "", nullptr, 0, 0) < 0 ||
        std::ranges::find(kLeadElsewhere, format->name) != std::end(kLeadElsewhere)) {
        throw Error(ZXE_E_NOT_MEDIA);
    }
    return format;
}

Format OpenFormat(AVIOContext& input, const AVIOInterruptCB& interrupt)
{
    const AVInputFormat* const inputFormat = FindInputFormat(input);
    AVFormatContext* format = avformat_alloc_context();
    if (!format) throw std::bad_alloc();
    format->pb = &input;
    format->interrupt_callback = interrupt;
    format->io_open = RefuseToOpen;
    format->probesize = kProbeSize;
    format->max_analyze_duration = kAnalyseDuration;
    format->max_streams = kMaxStreams;
    // A failure frees the context.
    if (avformat_open_input(&format, "", inputFormat, nullptr) < 0) throw Error(ZXE_E_NOT_MEDIA);
    return Format(format);
}

void FindStreams(AVFormatContext& format)
{
    std::vector<Dictionary> limits(format.nb_streams);
    std::vector<AVDictionary*> options;
    for (Dictionary& limit : limits) {
        limit.Set("max_pixels", kMaxPixels);
        options.push_back(*limit.Put());
    }
    const int found = avformat_find_stream_info(&format, options.data());
    // The call may have exchanged them.
    for (std::size_t i = 0; i < limits.size(); ++i)
        *limits[i].Put() = options[i];
    if (found < 0) throw Error(ZXE_E_NOT_MEDIA);
}

double RateOf(const AVStream& stream)
{
    for (const AVRational rate : {stream.avg_frame_rate, stream.r_frame_rate}) {
        if (rate.num > 0 && rate.den > 0) return av_q2d(rate);
    }
    return 0.0;
}

MediaProperties Describe(AVFormatContext& format)
{
    // Readers of single pictures make up a frame rate.
    const bool singlePicture = std::string_view(format.iformat->name).ends_with("_pipe");
    const int best = av_find_best_stream(&format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    MediaProperties media;
    bool plays = false;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const AVStream& stream = *format.streams[i];
        const AVCodecParameters& codec = *stream.codecpar;
        if (codec.codec_type == AVMEDIA_TYPE_AUDIO) plays = true;
        if (codec.codec_type != AVMEDIA_TYPE_VIDEO || codec.width <= 0 || codec.height <= 0) continue;
        const bool moving = !singlePicture && !(stream.disposition & AV_DISPOSITION_ATTACHED_PIC);
        plays = plays || moving;
        const PictureStream picture{static_cast<ULONG>(codec.width), static_cast<ULONG>(codec.height),
                                    moving ? RateOf(stream) : 0.0, moving};
        const bool first = static_cast<int>(i) == best;
        media.pictures.insert(first ? media.pictures.begin() : media.pictures.end(), picture);
    }
    if (!plays && media.pictures.empty()) throw Error(ZXE_E_NOT_MEDIA);
    if (plays && format.duration > 0) media.duration = static_cast<double>(format.duration) / AV_TIME_BASE;
    return media;
}

} // namespace

MediaProperties ProbeMedia(std::u16string_view path)
{
    if (path.empty()) throw Error(E_INVALIDARG);
    [[maybe_unused]] static const bool quiet = (av_log_set_level(AV_LOG_QUIET), true);
    Clock::time_point deadline = Clock::now() + kTimeLimit;
    const AVIOInterruptCB interrupt{&PastDeadline, &deadline};
    const Input input = OpenInput(FindFile(path), interrupt);
    const Format format = OpenFormat(*input, interrupt);
    FindStreams(*format);
    return Describe(*format);
}

} // namespace kv
