#include "engine/media/MediaFile.h"

#include "KVProjectData/Engine/Media.h"
#include "engine/media/Exif.h"
#include "platform/com/Error.h"
#include "platform/system/Paths.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

namespace kv {
namespace {

constexpr auto kTimeLimit = std::chrono::seconds(10);
/// Bytes, and microseconds of media, that are looked at in search of the streams.
constexpr std::int64_t kProbeSize = 5'000'000;
constexpr std::int64_t kAnalyseDuration = 5'000'000;
constexpr int kMaxStreams = 64;
int IsPast(void* file)
{
    return static_cast<const MediaFile*>(file)->PastDeadline();
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
        limit.Set("max_pixels", std::to_string(kMaxPixels).c_str());
        options.push_back(*limit.Put());
    }
    const int found = avformat_find_stream_info(&format, options.data());
    // The call may have exchanged them.
    for (std::size_t i = 0; i < limits.size(); ++i)
        *limits[i].Put() = options[i];
    if (found < 0) throw Error(ZXE_E_NOT_MEDIA);
}

} // namespace

MediaFile::MediaFile(std::u16string_view path)
{
    if (path.empty()) throw Error(E_INVALIDARG);
    [[maybe_unused]] static const bool quiet = (av_log_set_level(AV_LOG_QUIET), true);
    StartClock();
    const AVIOInterruptCB interrupt{&IsPast, this};
    m_input = OpenInput(FindFile(path), interrupt);
    m_format = OpenFormat(*m_input, interrupt);
    if (IsStill()) m_orientation = ReadExifOrientation(*m_input);
    FindStreams(*m_format);
}

bool MediaFile::IsStill() const
{
    return std::string_view(m_format->iformat->name).ends_with("_pipe");
}

Orientation MediaFile::OrientationOf(const AVStream& stream) const
{
    return DisplayedOrientation(stream).value_or(m_orientation);
}

void MediaFile::StartClock()
{
    m_deadline = Clock::now() + kTimeLimit;
}

bool MediaFile::PastDeadline() const
{
    return Clock::now() > m_deadline;
}

} // namespace kv
