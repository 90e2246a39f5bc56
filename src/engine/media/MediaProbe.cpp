#include "engine/media/MediaProbe.h"

#include "KVProjectData/Engine/Media.h"
#include "engine/media/MediaFile.h"
#include "platform/com/Error.h"

#include <utility>

namespace kv {
namespace {

double RateOf(const AVStream& stream)
{
    for (const AVRational rate : {stream.avg_frame_rate, stream.r_frame_rate}) {
        if (rate.num > 0 && rate.den > 0) return av_q2d(rate);
    }
    return 0.0;
}

double AspectOf(const MediaFile& file, AVStream& stream)
{
    const AVRational sample = av_guess_sample_aspect_ratio(&file.Format(), &stream, nullptr);
    const double pixel = sample.num > 0 && sample.den > 0 ? av_q2d(sample) : 1.0;
    const double aspect = pixel * stream.codecpar->width / stream.codecpar->height;
    return file.OrientationOf(stream).Turned() ? 1.0 / aspect : aspect;
}

PictureStream PictureOf(const MediaFile& file, AVStream& stream, bool moving)
{
    auto width = static_cast<ULONG>(stream.codecpar->width);
    auto height = static_cast<ULONG>(stream.codecpar->height);
    if (file.OrientationOf(stream).Turned()) std::swap(width, height);
    return {width, height, moving ? RateOf(stream) : 0.0, AspectOf(file, stream), moving, stream.index};
}

} // namespace

MediaProperties Describe(const MediaFile& file)
{
    AVFormatContext& format = file.Format();
    const int best = av_find_best_stream(&format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    MediaProperties media;
    bool plays = false;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream& stream = *format.streams[i];
        const AVCodecParameters& codec = *stream.codecpar;
        if (codec.codec_type == AVMEDIA_TYPE_AUDIO) plays = true;
        if (codec.codec_type != AVMEDIA_TYPE_VIDEO || codec.width <= 0 || codec.height <= 0) continue;
        const bool moving = !file.IsStill() && !(stream.disposition & AV_DISPOSITION_ATTACHED_PIC);
        plays = plays || moving;
        const PictureStream picture = PictureOf(file, stream, moving);
        const bool first = static_cast<int>(i) == best;
        media.pictures.insert(first ? media.pictures.begin() : media.pictures.end(), picture);
    }
    if (!plays && media.pictures.empty()) throw Error(ZXE_E_NOT_MEDIA);
    if (plays && format.duration > 0) media.duration = static_cast<double>(format.duration) / AV_TIME_BASE;
    return media;
}

MediaProperties ProbeMedia(std::u16string_view path)
{
    return Describe(MediaFile(path));
}

} // namespace kv
