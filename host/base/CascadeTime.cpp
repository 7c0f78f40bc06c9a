// Alone in its file, so that a test can link a clock of its own instead.
#include "platform/CascadeTime.h"

#include <ctime>

uint32_t CascadeTime::GetUptimeMilliseconds()
{
    timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint32_t>(static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000);
}
