// The filter graph, built as a module of its own: its library brings some thirty others along, and only
// interlaced pictures need it.
#include "host/decoder/PictureFilter.h"

#include <string>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/opt.h>
}

namespace host {
namespace {

constexpr AVRational kTickBase{1, 90000};

struct GraphFree {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};

class GraphFilter : public PictureFilter {
public:
    void Reset() override { m_pGraph.reset(); }
    bool Filter(FramePtr& frame, bool deinterlace, bool every, std::vector<FramePtr>& out) override;
    void Drain(std::vector<FramePtr>& out) override;

private:
    bool Build(const AVFrame& frame, bool deinterlace, bool every);
    bool Fits(const AVFrame& frame, bool deinterlace) const;
    void Collect(std::vector<FramePtr>& out);

    std::unique_ptr<AVFilterGraph, GraphFree> m_pGraph;
    AVFilterContext* m_pSource = nullptr;    // owned by the graph
    AVFilterContext* m_pSink = nullptr;
    bool m_bDeinterlaces = false;
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nFormat = -1;
};

bool GraphFilter::Fits(const AVFrame& frame, bool deinterlace) const
{
    return m_pGraph && m_bDeinterlaces == deinterlace && frame.width == m_nWidth && frame.height == m_nHeight && frame.format == m_nFormat;
}

bool GraphFilter::Build(const AVFrame& frame, bool deinterlace, bool every)
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
        chain = std::string("bwdif=mode=send_field:parity=auto:deint=") + (every ? "all" : "interlaced");
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

bool GraphFilter::Filter(FramePtr& frame, bool deinterlace, bool every, std::vector<FramePtr>& out)
{
    if (!Fits(*frame, deinterlace)) {
        Drain(out);
        if (!Build(*frame, deinterlace, every)) {
            return false;
        }
    }
    if (av_buffersrc_add_frame(m_pSource, frame.get()) < 0) {
        m_pGraph.reset();
        return true;
    }
    Collect(out);
    return true;
}

void GraphFilter::Drain(std::vector<FramePtr>& out)
{
    if (m_pGraph && av_buffersrc_add_frame(m_pSource, nullptr) >= 0) {
        Collect(out);
    }
    m_pGraph.reset();
}

void GraphFilter::Collect(std::vector<FramePtr>& out)
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

}    // namespace

}    // namespace host

extern "C" host::PictureFilter* NuvidMakePictureFilter()
{
    return new host::GraphFilter;
}
