#include "host/decoder/FrameFilter.h"

#include <string>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/opt.h>
}

namespace host {
namespace {

constexpr AVRational kTickBase{1, 90000};

}    // namespace

bool ScreenTakes(int pixelFormat)
{
    switch (pixelFormat) {
    case AV_PIX_FMT_YUV420P:
    case AV_PIX_FMT_YUV422P:
    case AV_PIX_FMT_YUV444P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ444P:
        return true;
    default:
        return false;
    }
}

void FrameFilter::Reset()
{
    m_pGraph.reset();
    m_bWantsFields = false;
}

bool FrameFilter::Fits(const AVFrame& frame) const
{
    return m_pGraph && frame.width == m_nWidth && frame.height == m_nHeight && frame.format == m_nFormat;
}

bool FrameFilter::Build(const AVFrame& frame, bool deinterlace)
{
    m_pGraph.reset(avfilter_graph_alloc());
    if (!m_pGraph) {
        return false;
    }
    m_pGraph->nb_threads = 1;
    const AVRational aspect = frame.sample_aspect_ratio.num > 0 ? frame.sample_aspect_ratio : AVRational{1, 1};
    const std::string size = "video_size=" + std::to_string(frame.width) + "x" + std::to_string(frame.height) + ":pix_fmt=" + std::to_string(frame.format) + ":time_base=1/90000:pixel_aspect=" +
                             std::to_string(aspect.num) + "/" + std::to_string(aspect.den);
    if (avfilter_graph_create_filter(&m_pSource, avfilter_get_by_name("buffer"), "in", size.c_str(), nullptr, m_pGraph.get()) < 0 ||
        avfilter_graph_create_filter(&m_pSink, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr, m_pGraph.get()) < 0) {
        m_pGraph.reset();
        return false;
    }
    std::string chain;
    if (deinterlace) {
        chain = std::string("bwdif=mode=send_field:parity=auto:deint=") + (CurrentHostOptions().deinterlace == Deinterlace::kOn ? "all" : "interlaced");
    }
    if (!ScreenTakes(frame.format)) {
        chain = "format=yuv420p" + (chain.empty() ? "" : "," + chain);
    }
    AVFilterInOut* ends[2] = {avfilter_inout_alloc(), avfilter_inout_alloc()};
    bool good = ends[0] != nullptr && ends[1] != nullptr;
    if (good) {
        *ends[0] = {av_strdup("in"), m_pSource, 0, nullptr};
        *ends[1] = {av_strdup("out"), m_pSink, 0, nullptr};
        good = avfilter_graph_parse_ptr(m_pGraph.get(), chain.c_str(), &ends[1], &ends[0], nullptr) >= 0 && avfilter_graph_config(m_pGraph.get(), nullptr) >= 0;
    }
    avfilter_inout_free(&ends[0]);
    avfilter_inout_free(&ends[1]);
    if (!good) {
        m_pGraph.reset();
        return false;
    }
    m_bDeinterlaces = deinterlace;
    m_nWidth = frame.width;
    m_nHeight = frame.height;
    m_nFormat = frame.format;
    return true;
}

void FrameFilter::Filter(FramePtr frame, int64_t duration, std::vector<FramePtr>& out)
{
    const Deinterlace policy = CurrentHostOptions().deinterlace;
    m_bWantsFields = m_bWantsFields || frame->interlaced_frame != 0 || policy == Deinterlace::kOn;
    const bool deinterlace = m_bWantsFields && policy != Deinterlace::kOff;
    const bool takes = ScreenTakes(frame->format);
    // A picture that is split into two fields shows each half as long; what the filter makes inherits this.
    const bool split = deinterlace && (frame->interlaced_frame != 0 || policy == Deinterlace::kOn);
    frame->pkt_duration = split ? duration / 2 : duration;
    if (!deinterlace && takes) {
        out.push_back(std::move(frame));
        return;
    }
    if (!Fits(*frame) || m_bDeinterlaces != deinterlace) {
        Drain(out);
        if (!Build(*frame, deinterlace)) {
            if (takes) {
                out.push_back(std::move(frame));
            }
            return;
        }
    }
    if (av_buffersrc_add_frame(m_pSource, frame.get()) < 0) {
        m_pGraph.reset();
        return;
    }
    Collect(out);
}

void FrameFilter::Drain(std::vector<FramePtr>& out)
{
    if (m_pGraph && av_buffersrc_add_frame(m_pSource, nullptr) >= 0) {
        Collect(out);
    }
    m_pGraph.reset();
}

void FrameFilter::Collect(std::vector<FramePtr>& out)
{
    const AVRational base = av_buffersink_get_time_base(m_pSink);
    while (true) {
        FramePtr frame(av_frame_alloc());
        if (!frame || av_buffersink_get_frame(m_pSink, frame.get()) < 0) {
            return;
        }
        frame->pts = av_rescale_q(frame->pts, base, kTickBase);
        out.push_back(std::move(frame));
    }
}

}    // namespace host
