// The words of the feed that the application sets and reads.
//
// Units:   milliseconds of uptime; ticks of 90 kHz.
// Threads: any. Each is one word, written on one thread and read on another; no order between them is needed.
#pragma once

#include <atomic>
#include <cstdint>

extern std::atomic<uint32_t> g_LastUITick_ms;    // stamped by the application on every tick; one that is 3001 ms old stops the reading of data
extern std::atomic<bool> g_bVideoRunning;    // streaming is engaged and the end is not reached
extern std::atomic<bool> g_bTSFix;    // timestamps of MPEG-2 program streams are repaired

inline constexpr uint32_t g_nAudioSyncThreshold = 45000;    // half a second
