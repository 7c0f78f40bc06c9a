#include "widgets/Marquee.h"

#include <algorithm>

namespace {

constexpr uint32_t kRestMs = 1600;    // at either end
constexpr uint32_t kPixelsPerSecond = 60;
constexpr uint32_t kRounds = 3;

}    // namespace

void Marquee::Start(int overflow, uint32_t nowMs)
{
    m_nOverflow = std::max(0, overflow);
    m_nStartedAt = nowMs;
}

uint32_t Marquee::SlideMs() const
{
    return static_cast<uint32_t>(m_nOverflow) * 1000 / kPixelsPerSecond;
}

uint32_t Marquee::RoundMs() const
{
    return kRestMs + SlideMs() + kRestMs;
}

bool Marquee::IsRunning(uint32_t nowMs) const
{
    return m_nOverflow > 0 && nowMs - m_nStartedAt < kRounds * RoundMs();
}

int Marquee::Offset(uint32_t nowMs) const
{
    if (!IsRunning(nowMs)) {
        return 0;
    }
    const uint32_t inRound = (nowMs - m_nStartedAt) % RoundMs();
    const uint32_t sliding = inRound < kRestMs ? 0 : std::min(inRound - kRestMs, SlideMs());
    return std::min(static_cast<int>(sliding * kPixelsPerSecond / 1000), m_nOverflow);
}
