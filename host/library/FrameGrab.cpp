#include "host/library/FrameGrab.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <span>
#include <utility>

#include "host/library/RecordingPart.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

namespace host {
namespace {

using namespace std::chrono_literals;

constexpr int kLargest = 256;
constexpr double kWidestSample = 4.0;    // what streams really have is between 0.5 and 2.2
constexpr int64_t kMostPixels = 4096 * 2304;    // a header of a few bytes may claim 400 MB a picture
constexpr int64_t kMostBytes = 24 << 20;    // of one part: several key pictures at 20 Mbit/s
constexpr int kKeyPictures = 6;    // of one part, before it counts as dark throughout
constexpr double kProcessorSeconds = 6.0;
constexpr auto kPatience = 60s;    // at lowest priority on a busy machine
constexpr double kParts[] = {0.1, 0.15, 0.3, 0.5, 0.0};
constexpr double kImageParts[] = {0.3, 0.5, 0.7};
// What is played is what may have a picture: the library has decoders for much else that nobody tends.
constexpr AVCodecID kCodecs[] = {AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_H264, AV_CODEC_ID_HEVC};
// Almost black: fewer than so many of a hundred pixels are brighter than that.
constexpr uint32_t kDarkLevel = 56;
constexpr double kFewBright = 3.0;

struct Free {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
template <typename T> using Owned = std::unique_ptr<T, Free>;

double ProcessorSeconds()
{
    timespec used {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return double(used.tv_sec) + double(used.tv_nsec) / 1e9;
}

double BrightPercent(const SmallPicture& picture)
{
    int bright = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const uint32_t pixel = picture.pixels[size_t(y) * size_t(picture.stride) + size_t(x)];
            bright += std::max({pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF}) > kDarkLevel;
        }
    }
    return 100.0 * bright / std::max(1, picture.width * picture.height);
}

bool Shrink(const AVFrame& frame, SmallPicture& picture)
{
    FitPicture(frame.width, frame.height, frame.sample_aspect_ratio.den > 0 ? av_q2d(frame.sample_aspect_ratio) : 0, picture.width, picture.height);
    const Owned<SwsContext> scaler(sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), picture.width, picture.height,
        AV_PIX_FMT_RGB32, SWS_AREA, nullptr, nullptr, nullptr));
    if (scaler == nullptr) {
        return false;
    }
    const bool isHigh = frame.colorspace == AVCOL_SPC_BT709 || (frame.colorspace == AVCOL_SPC_UNSPECIFIED && frame.height > 576);
    const int* const table = sws_getCoefficients(isHigh ? SWS_CS_ITU709 : SWS_CS_ITU601);
    sws_setColorspaceDetails(scaler.get(), table, frame.color_range == AVCOL_RANGE_JPEG, table, 1, 0, 1 << 16, 1 << 16);
    // Room at the end of each row and behind the last: the scaler writes whole vectors.
    picture.stride = (picture.width + 63) / 64 * 64;
    picture.pixels.assign(size_t(picture.stride) * size_t(picture.height + 1), 0);
    uint8_t* const planes[4] = {reinterpret_cast<uint8_t*>(picture.pixels.data()), nullptr, nullptr, nullptr};
    const int strides[4] = {picture.stride * 4, 0, 0, 0};
    return sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes, strides) > 0;
}

// One part of the recording, from opening to its first key picture that is not dark.
class PartReader {
public:
    PartReader(RecordingPart& part, const std::function<bool()>& stop, SmallPicture& best, double& bestBright)
        : m_Part(part)
        , m_Stop(stop)
        , m_Best(best)
        , m_BestBright(bestBright)
    {
    }

    // True: the best picture is bright enough. False: the part is over.
    bool Run();

private:
    bool Open();
    bool Take(const AVPacket* packet);    // null: the end; true as Run
    bool OpenCodec(const AVCodecParameters& parameters);

    RecordingPart& m_Part;
    const std::function<bool()>& m_Stop;
    SmallPicture& m_Best;
    double& m_BestBright;
    Owned<AVFormatContext> m_pFormat;
    Owned<AVCodecContext> m_pCodec;
    Owned<AVFrame> m_pFrame {av_frame_alloc()};
    int m_nVideo = -1;
    int m_nPictures = 0;
};

bool PartReader::Open()
{
    const AVInputFormat* const kind = m_Part.Kind();
    AVFormatContext* format = kind == nullptr || m_Part.Io() == nullptr ? nullptr : avformat_alloc_context();
    if (format == nullptr) {
        return false;
    }
    format->pb = m_Part.Io();
    format->flags |= AVFMT_FLAG_DISCARD_CORRUPT;
    if (avformat_open_input(&format, nullptr, kind, nullptr) < 0) {    // frees it on failure
        return false;
    }
    m_pFormat.reset(format);
    return true;
}

bool PartReader::OpenCodec(const AVCodecParameters& parameters)
{
    const bool isKnown = std::find(std::begin(kCodecs), std::end(kCodecs), parameters.codec_id) != std::end(kCodecs);
    const AVCodec* const codec = isKnown ? avcodec_find_decoder(parameters.codec_id) : nullptr;
    m_pCodec.reset(codec == nullptr ? nullptr : avcodec_alloc_context3(codec));
    if (m_pCodec == nullptr || avcodec_parameters_to_context(m_pCodec.get(), &parameters) < 0) {
        return false;
    }
    m_pCodec->thread_count = 1;
    m_pCodec->max_pixels = kMostPixels;
    m_pCodec->skip_frame = AVDISCARD_NONKEY;
    m_pCodec->flags |= AV_CODEC_FLAG_LOW_DELAY;    // a key picture comes out at once, not with the next one
    return avcodec_open2(m_pCodec.get(), codec, nullptr) == 0;
}

bool PartReader::Take(const AVPacket* packet)
{
    avcodec_send_packet(m_pCodec.get(), packet);    // a damaged packet is like a missing one
    while (avcodec_receive_frame(m_pCodec.get(), m_pFrame.get()) == 0) {
        const bool damaged = (m_pFrame->flags & AV_FRAME_FLAG_CORRUPT) != 0 || m_pFrame->decode_error_flags != 0;
        SmallPicture picture;
        if (damaged || !Shrink(*m_pFrame, picture)) {
            continue;
        }
        ++m_nPictures;
        const double bright = BrightPercent(picture);
        if (m_Best.pixels.empty() || bright > m_BestBright) {
            m_Best = std::move(picture);
            m_BestBright = bright;
        }
        if (bright >= kFewBright) {
            return true;
        }
    }
    return false;
}

bool PartReader::Run()
{
    const Owned<AVPacket> packet(av_packet_alloc());
    if (packet == nullptr || m_pFrame == nullptr || !Open()) {
        return false;
    }
    while (m_nPictures < kKeyPictures && !m_Stop() && av_read_frame(m_pFormat.get(), packet.get()) >= 0) {
        const AVCodecParameters& parameters = *m_pFormat->streams[packet->stream_index]->codecpar;
        if (m_nVideo < 0 && parameters.codec_type == AVMEDIA_TYPE_VIDEO && OpenCodec(parameters)) {
            m_nVideo = packet->stream_index;
        }
        if (packet->stream_index == m_nVideo && Take(packet.get())) {
            return true;
        }
        av_packet_unref(packet.get());
    }
    return m_nVideo >= 0 && m_nPictures < kKeyPictures && !m_Stop() && Take(nullptr);
}

}    // namespace

void FitPicture(int width, int height, double sampleAspect, int& fittedWidth, int& fittedHeight)
{
    const double sample = sampleAspect > 0 ? std::clamp(sampleAspect, 1 / kWidestSample, kWidestSample) : 1.0;
    const double shownWidth = width * std::max(sample, 1.0);
    const double shownHeight = height / std::min(sample, 1.0);
    const double scale = std::min({1.0, kLargest / shownWidth, kLargest / shownHeight});
    fittedWidth = std::clamp(int(std::lround(shownWidth * scale)), 1, kLargest);
    fittedHeight = std::clamp(int(std::lround(shownHeight * scale)), 1, kLargest);
}

Grab GrabPicture(int fd, int64_t size, bool isImage, const std::function<bool()>& stop, SmallPicture& picture)
{
    av_log_set_level(AV_LOG_QUIET);    // nobody reads the library's complaints about damaged streams
    const double processorEnd = ProcessorSeconds() + kProcessorSeconds;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    bool givenUp = false;
    const std::function<bool()> enough = [&] {
        givenUp = givenUp || stop() || std::chrono::steady_clock::now() > end;
        return givenUp || ProcessorSeconds() > processorEnd;
    };
    double bright = 0;
    const std::span<const double> places = isImage ? std::span<const double>(kImageParts) : std::span<const double>(kParts);
    for (const double place : places) {
        const int64_t begin = int64_t(double(size) * place) / 2048 * 2048;
        RecordingPart part(fd, begin, std::min(size - begin, kMostBytes), enough);
        const bool found = PartReader(part, enough, picture, bright).Run();
        givenUp = givenUp || (part.WasBroken() && ProcessorSeconds() <= processorEnd);
        if (found || enough()) {
            break;
        }
    }
    // A dark picture is better than none.
    return givenUp ? Grab::kGivenUp : picture.pixels.empty() ? Grab::kNothing : Grab::kPicture;
}

}    // namespace host
