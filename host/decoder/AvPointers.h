// Owning pointers for the library's objects, and what it is told once.
//
// Threads:   as the objects behind them: one thread at a time.
// Ownership: the pointer frees.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
#include <libswresample/swresample.h>
}

namespace host {

struct AvFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
    void operator()(SwrContext* context) const { swr_free(&context); }
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    void operator()(AVIOContext* io) const
    {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};

using FramePtr = std::unique_ptr<AVFrame, AvFree>;
using PacketPtr = std::unique_ptr<AVPacket, AvFree>;
using CodecPtr = std::unique_ptr<AVCodecContext, AvFree>;
using ParserPtr = std::unique_ptr<AVCodecParserContext, AvFree>;
using ResamplerPtr = std::unique_ptr<SwrContext, AvFree>;
using FormatPtr = std::unique_ptr<AVFormatContext, AvFree>;
using IoPtr = std::unique_ptr<AVIOContext, AvFree>;

// A header of a few bytes may claim a picture of 400 MB, and the codecs that the library opens itself while it looks
// at a stream know no other limit. A plane of 4096 x 2304 with 16 bits a sample takes 19 MB.
inline constexpr size_t kLargestBlock = 32 << 20;

// Holds for the whole process; as often as one likes.
inline void PrepareLibrary()
{
    av_log_set_level(AV_LOG_QUIET);    // damaged streams are everyday life; nobody reads the library's complaints
    av_max_alloc(kLargestBlock);
}

}    // namespace host
