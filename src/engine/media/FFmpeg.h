#pragma once
// Owners of what FFmpeg's libraries hand out.

#include <memory>
#include <new>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace kv {

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

struct DecoderCloser {
    void operator()(AVCodecContext* decoder) const { avcodec_free_context(&decoder); }
};
using Decoder = std::unique_ptr<AVCodecContext, DecoderCloser>;

struct PacketCloser {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Packet = std::unique_ptr<AVPacket, PacketCloser>;

struct FrameCloser {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FrameCloser>;

struct ScalerCloser {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using Scaler = std::unique_ptr<SwsContext, ScalerCloser>;

/// The pointer itself; throws on lack of memory.
template <class T>
T* Allocated(T* pointer)
{
    if (!pointer) throw std::bad_alloc();
    return pointer;
}

} // namespace kv
