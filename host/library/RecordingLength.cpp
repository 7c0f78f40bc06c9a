#include "host/library/RecordingLength.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string_view>

#include "host/library/RecordingPart.h"

namespace host {
namespace {

constexpr int64_t kMostBytes = 2 << 20;    // of a part: at 20 Mbit/s most of a second
constexpr int kMostPackets = 5000;
constexpr double kWrap = 8589934592.0 / 90000;    // 33 bits of ISO/IEC 13818-1 2.4.3.7
constexpr double kLeastRate = 4e3;    // bytes per second: slower or faster is no recording
constexpr double kMostRate = 6e6;
constexpr double kMiddleSlack = 0.3;    // of the whole, that the middle's time may be off the half: bit rates vary
constexpr double kMostAtOdds = 1.8;    // by what factor the whole may last longer or shorter than its parts let expect

struct Times {
    bool known = false;
    double first = 0;
    double last = 0;    // with the duration of what begins then
    double Span() const { return last - first; }
};

// From one time to another, where the clock may have begun anew at 0: the shorter way.
double Since(double first, double time)
{
    const double seconds = std::fmod(time - first, kWrap);
    return seconds > kWrap / 2 ? seconds - kWrap : seconds < -kWrap / 2 ? seconds + kWrap : seconds;
}

// Earliest and latest time of one stream in a part, pictures before sound.
Times TimesIn(AVFormatContext& format)
{
    Times best;
    bool ofVideo = false;
    int chosen = -1;
    const std::unique_ptr<AVPacket, void (*)(AVPacket*)> packet(av_packet_alloc(), [](AVPacket* one) { av_packet_free(&one); });
    for (int i = 0; packet != nullptr && i < kMostPackets && av_read_frame(&format, packet.get()) >= 0; ++i) {
        const AVStream& stream = *format.streams[packet->stream_index];
        const bool isVideo = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
        const bool isTimed = packet->pts != AV_NOPTS_VALUE && (isVideo || stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO);
        if (isTimed && (chosen < 0 || (isVideo && !ofVideo))) {
            chosen = packet->stream_index;
            ofVideo = isVideo;
            best = {};
        }
        if (isTimed && packet->stream_index == chosen) {
            const double begin = double(packet->pts) * av_q2d(stream.time_base);
            const double end = begin + std::max(0.0, double(packet->duration) * av_q2d(stream.time_base));
            best = best.known ? Times {true, best.first - std::max(0.0, Since(begin, best.first)), best.first + std::max(Since(best.first, best.last), Since(best.first, end))} :
                                Times {true, begin, end};
        }
        av_packet_unref(packet.get());
    }
    return best;
}

Times TimesIn(RecordingPart& part, const AVInputFormat* kind)
{
    AVFormatContext* format = part.Io() == nullptr ? nullptr : avformat_alloc_context();
    if (format == nullptr) {
        return {};
    }
    format->pb = part.Io();
    format->correct_ts_overflow = 0;
    if (avformat_open_input(&format, nullptr, kind, nullptr) < 0) {    // frees it on failure
        return {};
    }
    const Times times = TimesIn(*format);
    avformat_close_input(&format);
    return times;
}

}    // namespace

int RecordingLength(int fd, int64_t size, const std::function<bool()>& stop)
{
    const int64_t length = std::min(size, kMostBytes);
    // The beginning tells what it is, for all three.
    const AVInputFormat* const kind = RecordingPart(fd, 0, length, stop).Kind();
    if (kind == nullptr || std::string_view(kind->name) == "mpegvideo") {    // video alone bears no times
        return 0;
    }
    const auto at = [&](double place) {
        RecordingPart part(fd, int64_t(double(size - length) * place) / 2048 * 2048, length, stop);
        return TimesIn(part, kind);
    };
    const Times begin = at(0);
    const Times middle = begin.known ? at(0.5) : Times {};
    const Times end = middle.known ? at(1) : Times {};
    if (!end.known) {
        return 0;
    }
    const double seconds = Since(begin.first, end.last);
    const double half = Since(begin.first, middle.first + middle.Span() / 2);
    const double expected = (begin.Span() + middle.Span() + end.Span()) / 3 * double(size) / double(length);
    const bool isPlausible = double(size) >= seconds * kLeastRate && double(size) <= seconds * kMostRate && expected <= seconds * kMostAtOdds
        && seconds <= expected * kMostAtOdds;
    return isPlausible && std::abs(half - seconds / 2) <= seconds * kMiddleSlack ? int(std::lround(seconds)) : 0;
}

}    // namespace host
