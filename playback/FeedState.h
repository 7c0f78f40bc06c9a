// The state of the feed that outlives a feeder: one copy for the whole program, so that a feeder rebuilt for
// another output resolution goes on counting where the last one stopped.
//
// Units:   bytes.
// Threads: the feeding thread while streaming, the user-interface thread else.
#pragma once

#include <cstdint>

struct FeedState {
    uint32_t bytesInSample = 0;    // asked for since the last bit-rate sample
    uint32_t samples = 0;    // in the running average
    bool firstFillTold = false;
    int shortReadsTold = 0;
    const unsigned char* endBuffer = nullptr;    // took the last bytes of the stream
    const unsigned char* reopenBuffer = nullptr;    // the first that was filled after a reopen
};

extern FeedState g_FeedState;
