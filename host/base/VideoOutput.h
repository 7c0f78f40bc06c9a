// Where the decoder's pictures meet the screen.
//
// Units:     times are host::Clock. Sizes are pixels of the picture; `aspect` is the display aspect ratio of
//            the whole picture.
// Threads:   the source's operations are called on the user-interface thread; SetVideoSource too.
//            NotifyVideo may be called from any thread.
// Ownership: a frame keeps its planes alive through `keepAlive`; nothing is copied.
#pragma once

#include <cstdint>
#include <memory>

#include "host/base/UiQueue.h"
#include "platform/CascadeGeometry.h"

namespace host {

enum class PixelFormat { kYuv420, kYuv422, kYuv444 };    // planar, 8 bits

struct VideoFrame {
    const uint8_t* plane[3] = {};
    int stride[3] = {};
    int width = 0;
    int height = 0;
    PixelFormat format = PixelFormat::kYuv420;
    bool fullRange = false;
    bool bt709 = false;         // else BT.601
    double aspect = 4.0 / 3.0;
    std::shared_ptr<const void> keepAlive;
    explicit operator bool() const { return plane[0] != nullptr; }
};

struct VideoPlacement {
    CascadeRect output;    // part kept of the picture laid out over the full output; empty: everything
    CascadeRect scale;     // where it goes; empty: the full output
};

class VideoSource {
public:
    virtual ~VideoSource() = default;

    // Moves on to the picture that is due now. True: `frame` is another one than at the last call (an empty
    // frame means black). `next` is when to ask again; Clock::time_point::max() when not before NotifyVideo.
    virtual bool Advance(Clock::time_point now, VideoFrame& frame, Clock::time_point& next) = 0;
    // The picture of the last Advance is on screen.
    virtual void OnPresented(Clock::time_point when) = 0;
    virtual VideoPlacement Placement() const = 0;
};

// The one source shown; null: none. Setting another keeps the last picture until that one gives its own.
void SetVideoSource(VideoSource* source);
VideoSource* CurrentVideoSource();
void NotifyVideo();    // something changed: ask Advance soon

// The full output in pixels, for the decoder's rectangles.
CascadeDims OutputDims();
void SetOutputDims(CascadeDims dims);

}    // namespace host
