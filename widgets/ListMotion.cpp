#include "widgets/ListMotion.h"

#include <algorithm>

namespace {

constexpr uint32_t kSingleRowsMs = 800;    // of holding: far enough to aim within a screen
constexpr uint32_t kGearMs = 250;    // then a gear higher in each of these
constexpr uint32_t kLostReleaseMs = 1000;    // keyboards wait less than that before the first repeat
constexpr uint32_t kHighestGear = 60;
constexpr int kFewestStepsAcross = 40;    // however fast: a list is not crossed in fewer steps than these

}    // namespace

int ListMotion::Step(int direction, int count, uint32_t nowMs)
{
    if (direction != m_nDirection || nowMs - m_nLastAt > kLostReleaseMs) {
        m_nDirection = direction;
        m_nPressedAt = nowMs;
    }
    m_nLastAt = nowMs;
    const uint32_t held = nowMs - m_nPressedAt;
    if (held < kSingleRowsMs) {
        return direction;
    }
    const auto gear = static_cast<int>(std::min((held - kSingleRowsMs) / kGearMs, kHighestGear));
    return direction * std::clamp(1 + gear * gear / 2, 1, std::max(1, count / kFewestStepsAcross));
}
