#include "playback/SkipMath.h"

#include <algorithm>

namespace {

// Data that is read into the decoder's buffers but not shown yet. On purpose it is taken off in both
// directions: a skip forward lands that much shorter, one backward that much further back.
constexpr uint32_t kReadAheadBytes = 0x1B0000;

constexpr long long kBeforeEndBytes = 2000000;

}    // namespace

int SkipForwardDistance(uint32_t bitrate, int seconds)
{
    return static_cast<int>((bitrate >> 3) * static_cast<uint32_t>(seconds) - kReadAheadBytes);
}

int SkipBackDistance(uint32_t bitrate, int seconds)
{
    return static_cast<int>(0U - (bitrate >> 3) * static_cast<uint32_t>(seconds) - kReadAheadBytes);
}

long long TruncateToPack(long long distance)
{
    return distance / kPackSize * kPackSize;
}

long long RoundDownToPack(long long position)
{
    return position & ~(kPackSize - 1);
}

int CurrentProgress(unsigned long long position, unsigned long long size)
{
    return size == 0 ? 100 : static_cast<int>(position * 100 / size);
}

int TotalProgress(long long throughCurrent, long long currentSize, unsigned long long position, long long total)
{
    if (total <= 0) {
        return 0;
    }
    const uint64_t before = static_cast<uint64_t>(throughCurrent) - static_cast<uint64_t>(currentSize);
    return static_cast<int>(static_cast<int64_t>((before + position) * 100) / total);
}

long long JumpTargetAtEnd(long long size)
{
    return std::max(size - kBeforeEndBytes, 0LL);
}
