// What is playing, as the application tells it to whoever shows it elsewhere: a phone, the desktop.
//
// Units:     milliseconds, -1 where it is not known; bytes of the whole recording; marks are percent of it.
// Threads:   a value; the application fills it on the user-interface thread.
// Ownership: a value.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/CascadeString.h"

struct CascadeNowPlaying {
    enum class State { kStopped, kPlaying, kPaused };

    State state = State::kStopped;
    CascadeString title;    // empty: nothing is open
    CascadeString path;    // a full path, or an address with its scheme
    int64_t positionMs = -1;
    int64_t durationMs = -1;
    uint64_t positionBytes = 0;
    uint64_t sizeBytes = 0;    // 0: not known
    std::vector<double> chapters;    // 0 to 100, ascending
    std::vector<double> bookmarks;
    int queueIndex = 0;    // of the item that is playing, from 1; 0: the queue is empty
    int queueCount = 0;
};
