#include "engine/media/FrameScaler.h"

#include "KVProjectData/Engine/Media.h"
#include "platform/com/Error.h"

#include <algorithm>
#include <utility>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace kv {
namespace {

/// In memory blue, green, red, alpha: the number 0xAARRGGBB on the machines that this runs on.
constexpr AVPixelFormat kBitmapFormat = AV_PIX_FMT_BGRA;

bool HasAlpha(const AVFrame& frame)
{
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    return format && (format->flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL));
}

/// Every channel for itself, with the colours of the frame's own standard.
void Convert(const AVFrame& frame, std::uint8_t* target, int stride, int width, int height)
{
    // The triangle filter does not overshoot, so that colours stay within alpha; the rest makes every machine agree.
    constexpr int kFlags = SWS_BILINEAR | SWS_ACCURATE_RND | SWS_BITEXACT | SWS_FULL_CHR_H_INT;
    const Scaler scaler(sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), width,
                                       height, kBitmapFormat, kFlags, nullptr, nullptr, nullptr));
    if (!scaler) throw Error(ZXE_E_NO_FRAME);
    const int* const coefficients = sws_getCoefficients(frame.colorspace);
    // Refused for frames that are RGB already.
    sws_setColorspaceDetails(scaler.get(), coefficients, frame.color_range == AVCOL_RANGE_JPEG, coefficients, 1, 0,
                             1 << 16, 1 << 16);
    if (sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, &target, &stride) < 0) {
        throw Error(ZXE_E_NO_FRAME);
    }
}

constexpr std::uint32_t Multiplied(std::uint32_t colour, std::uint32_t alpha)
{
    return (colour * alpha + 127) / 255;
}

/// Turns the picture in memory the way it is shown.
Bitmap Oriented(const Bitmap& stored, const Orientation& orientation)
{
    Bitmap shown = orientation.Turned() ? Bitmap(stored.height, stored.width) : Bitmap(stored.width, stored.height);
    const int right = orientation.xx + orientation.yx < 0 ? shown.width - 1 : 0;
    const int bottom = orientation.xy + orientation.yy < 0 ? shown.height - 1 : 0;
    for (int y = 0; y < stored.height; ++y) {
        for (int x = 0; x < stored.width; ++x) {
            const int shownX = right + orientation.xx * x + orientation.yx * y;
            const int shownY = bottom + orientation.xy * x + orientation.yy * y;
            shown.Row(shownY)[shownX] = stored.Row(y)[x];
        }
    }
    return shown;
}

} // namespace

Frame Premultiplied(Frame frame)
{
    if (!HasAlpha(*frame)) return frame;
    Frame copy(Allocated(av_frame_alloc()));
    copy->format = kBitmapFormat;
    copy->width = frame->width;
    copy->height = frame->height;
    if (av_frame_get_buffer(copy.get(), 0) < 0) throw std::bad_alloc();
    Convert(*frame, copy->data[0], copy->linesize[0], frame->width, frame->height);
    for (int y = 0; y < copy->height; ++y) {
        std::uint8_t* pixel = copy->data[0] + static_cast<std::ptrdiff_t>(y) * copy->linesize[0];
        for (int x = 0; x < copy->width; ++x, pixel += 4) {
            for (int channel = 0; channel < 3; ++channel)
                pixel[channel] = static_cast<std::uint8_t>(Multiplied(pixel[channel], pixel[3]));
        }
    }
    copy->pts = frame->pts;
    copy->pkt_duration = frame->pkt_duration;
    return copy;
}

Bitmap Scaled(const AVFrame& frame, const Orientation& orientation, int width, int height)
{
    if (orientation.Turned()) std::swap(width, height);
    Bitmap bitmap(width, height);
    Convert(frame, reinterpret_cast<std::uint8_t*>(bitmap.pixels.data()), 4 * width, width, height);
    if (HasAlpha(frame)) {
        // Channels are rounded one by one.
        for (std::uint32_t& pixel : bitmap.pixels) {
            const std::uint32_t alpha = pixel >> 24;
            pixel = alpha << 24 | std::min(pixel >> 16 & 0xFF, alpha) << 16 | std::min(pixel >> 8 & 0xFF, alpha) << 8 |
                    std::min(pixel & 0xFF, alpha);
        }
    }
    return orientation.Upright() ? std::move(bitmap) : Oriented(bitmap, orientation);
}

} // namespace kv
