// Owning pointers for the library's objects.
//
// Threads:   as the objects behind them: one thread at a time.
// Ownership: the pointer frees.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
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

}    // namespace host
