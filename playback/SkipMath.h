// The arithmetic of skips and of progress.
//
// Units:   bytes, bits per second, seconds; progress is percent.
// Threads: pure functions.
#pragma once

#include <cstdint>

inline constexpr long long kPackSize = 2048;    // a program stream's seek targets are multiples of it

// Bytes that a skip moves the read position by, in 32-bit signed arithmetic that wraps.
int SkipForwardDistance(uint32_t bitrate, int seconds);
int SkipBackDistance(uint32_t bitrate, int seconds);

long long TruncateToPack(long long distance);    // towards zero
long long RoundDownToPack(long long position);

int CurrentProgress(unsigned long long position, unsigned long long size);    // 100 for a size of 0

// `throughCurrent`: size of the files up to and with the current one; `currentSize`: of that one; 0 for a total of 0 or less.
int TotalProgress(long long throughCurrent, long long currentSize, unsigned long long position, long long total);

// Where a jump lands that runs off the last file: a little before its end, so that something is shown.
long long JumpTargetAtEnd(long long size);
