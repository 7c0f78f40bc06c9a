// The composed screen in small, for whoever shows it elsewhere: the picture and the windows above it.
//
// Units:     pixels; four bytes each, in the order blue, green, red, unused, rows without padding.
// Threads:   composed on the user-interface thread (HostHooks::screenFeed); a picture never changes afterwards and
//            may go to any thread.
#pragma once

#include <cstdint>
#include <vector>

namespace host {

inline constexpr int kFeedWidth = 640;    // at most; a screen of another shape is fitted in
inline constexpr int kFeedHeight = 360;

struct FeedPicture {
    int width = 0;
    int height = 0;
    uint64_t number = 0;    // of the screen's last change that is in it; ascending
    std::vector<uint8_t> pixels;
};

}    // namespace host
