#include "host/screen/VideoScaler.h"

#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/cpu.h>
#include <libswscale/swscale.h>
}

namespace screen {
namespace {

// The converters write whole vectors: rows have to begin on 64 bytes, and a row's last vector may be wider than the
// picture by that much.
constexpr int kAlignment = 64;
constexpr int kDirectAlignment = 16;    // enough for them not to fall back to slow code
constexpr int kVectorPixels = 16;
constexpr int kSliceBytes = 256 << 10;
constexpr int kLowestSlice = 16;    // rows of the source: each slice costs a little

AVPixelFormat FormatOf(host::PixelFormat format)
{
    switch (format) {
    case host::PixelFormat::kYuv422:
        return AV_PIX_FMT_YUV422P;
    case host::PixelFormat::kYuv444:
        return AV_PIX_FMT_YUV444P;
    default:
        return AV_PIX_FMT_YUV420P;
    }
}

// The library takes gathering loads for quick wherever they exist. They are microcode on some processors and held
// back by security fixes on others; with the cache cold, as it is between two pictures, plain loads are a third
// quicker and give the same bits. What is chosen stays with the context, so the flag is only raised for a moment.
class WithoutGathering {
public:
    WithoutGathering()
    {
#if defined(__x86_64__) || defined(__i386__)
        av_force_cpu_flags(m_nFlags | AV_CPU_FLAG_SLOW_GATHER);
#endif
    }
    ~WithoutGathering() { av_force_cpu_flags(m_nFlags); }
    WithoutGathering(const WithoutGathering&) = delete;
    WithoutGathering& operator=(const WithoutGathering&) = delete;

private:
    const int m_nFlags = av_get_cpu_flags();
};

}    // namespace

VideoScaler::~VideoScaler()
{
    sws_freeContext(m_pContext);
}

bool VideoScaler::Prepare(const host::VideoFrame& frame, CascadeDims from, CascadeDims to, bool toYuv)
{
    const Task task {from, to, frame.format, frame.bt709, frame.fullRange, toYuv};
    if (m_pContext != nullptr && task == m_Task) {
        return true;
    }
    sws_freeContext(m_pContext);
    const WithoutGathering plainLoads;
    m_pContext = sws_getContext(from.width, from.height, FormatOf(frame.format), to.width, to.height, toYuv ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_BGRA,
        SWS_FAST_BILINEAR, nullptr, nullptr, nullptr);
    if (m_pContext == nullptr) {
        return false;
    }
    const int* const table = sws_getCoefficients(frame.bt709 ? SWS_CS_ITU709 : SWS_CS_ITU601);
    constexpr int kOne = 1 << 16;    // contrast and saturation, 16.16
    sws_setColorspaceDetails(m_pContext, table, frame.fullRange ? 1 : 0, table, toYuv ? 0 : 1, 0, kOne, kOne);
    m_Task = task;
    return true;
}

bool VideoScaler::Run(const host::VideoFrame& frame, const CascadeRect& source, uint8_t* const planes[4], const int strides[4], const OnRows& onRows)
{
    const int shiftX = frame.format == host::PixelFormat::kYuv444 ? 0 : 1;
    const int shiftY = frame.format == host::PixelFormat::kYuv420 ? 1 : 0;
    const int fromStrides[4] = {frame.stride[0], frame.stride[1], frame.stride[2], 0};
    const int sliceHeight = onRows ? SliceHeight(strides[0]) : source.height;
    int written = 0;
    for (int y = 0; y < source.height; y += sliceHeight) {
        const auto chroma = [&](int index) {
            return frame.plane[index] + std::ptrdiff_t((source.top + y) >> shiftY) * frame.stride[index] + (source.left >> shiftX);
        };
        const uint8_t* const from[4] = {frame.plane[0] + std::ptrdiff_t(source.top + y) * frame.stride[0] + source.left, chroma(1), chroma(2), nullptr};
        const int rows = sws_scale(m_pContext, from, fromStrides, y, std::min(sliceHeight, source.height - y), planes, strides);
        if (rows < 0) {
            return false;
        }
        if (onRows && rows > 0) {
            onRows(written, written + rows);
        }
        written += rows;
    }
    return written > 0;
}

// Rows of the source for so many of the target that they stay in the cache of one core.
int VideoScaler::SliceHeight(int stride) const
{
    const int rows = std::max(kSliceBytes / stride, 1) * m_Task.from.height / m_Task.to.height;
    return std::max(rows / 2 * 2, kLowestSlice);    // even, for the colour planes
}

bool VideoScaler::ReserveBounce(size_t bytes)
{
    if (bytes > m_nBounceBytes) {
        m_nBounceBytes = 0;
        m_Bounce.reset(static_cast<uint8_t*>(std::aligned_alloc(kAlignment, (bytes + kAlignment - 1) / kAlignment * kAlignment)));
        m_nBounceBytes = m_Bounce == nullptr ? 0 : bytes;
    }
    return m_nBounceBytes != 0;
}

bool VideoScaler::Scale(
    const host::VideoFrame& frame, const CascadeRect& source, uint8_t* target, int stride, CascadeDims size, const OnRows& onRows)
{
    if (!frame || source.IsEmpty() || size.width <= 0 || size.height <= 0 || !Prepare(frame, {source.width, source.height}, size, false)) {
        return false;
    }
    const bool direct
        = reinterpret_cast<uintptr_t>(target) % kDirectAlignment == 0 && stride % kDirectAlignment == 0 && size.width % kVectorPixels == 0;
    if (direct) {
        uint8_t* const planes[4] = {target, nullptr, nullptr, nullptr};
        const int strides[4] = {stride, 0, 0, 0};
        return Run(frame, source, planes, strides, onRows);
    }
    const int bounceStride = (size.width * 4 + 2 * kAlignment - 1) / kAlignment * kAlignment;
    if (!ReserveBounce(size_t(bounceStride) * size_t(size.height) + kAlignment)) {
        return false;
    }
    uint8_t* const planes[4] = {m_Bounce.get(), nullptr, nullptr, nullptr};
    const int strides[4] = {bounceStride, 0, 0, 0};
    return Run(frame, source, planes, strides, [&](int top, int bottom) {
        for (int y = top; y < bottom; ++y) {
            std::memcpy(target + std::ptrdiff_t(y) * stride, m_Bounce.get() + std::ptrdiff_t(y) * bounceStride, size_t(size.width) * 4);
        }
        if (onRows) {
            onRows(top, bottom);
        }
    });
}

bool VideoScaler::ToLimited420(const host::VideoFrame& frame, uint8_t* const planes[3], const int strides[3])
{
    const CascadeDims size {frame.width, frame.height};
    if (!frame || !Prepare(frame, size, size, true)) {
        return false;
    }
    uint8_t* const to[4] = {planes[0], planes[1], planes[2], nullptr};
    const int toStrides[4] = {strides[0], strides[1], strides[2], 0};
    return Run(frame, {0, 0, size.width, size.height}, to, toStrides);
}

}    // namespace screen
