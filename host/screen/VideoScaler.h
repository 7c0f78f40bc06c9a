// Converts and scales one picture into pixels of the screen.
//
// Units:     pixels; the target is 32 bits a pixel in the byte order blue, green, red, unused.
// Errors:    false: no converter for these sizes or no memory; the target is then undefined.
// Threads:   one thread at a time.
// Ownership: keeps its converter, and a buffer when the target is not aligned, for the next picture.
#pragma once

#include <cstdlib>
#include <functional>
#include <memory>

#include "host/base/VideoOutput.h"

struct SwsContext;

namespace screen {

class VideoScaler {
public:
    VideoScaler() = default;
    ~VideoScaler();
    VideoScaler(const VideoScaler&) = delete;
    VideoScaler& operator=(const VideoScaler&) = delete;

    // Rows of the target that have just been written, from `top` to before `bottom`: what is to be laid over them is
    // done while the processor still holds them.
    using OnRows = std::function<void(int top, int bottom)>;
    bool Scale(const host::VideoFrame& frame, const CascadeRect& source, uint8_t* target, int stride, CascadeDims size, const OnRows& onRows = {});

    // The same picture as 4:2:0 of limited range, for a renderer that takes nothing else. `planes` and `strides` are
    // the target's.
    bool ToLimited420(const host::VideoFrame& frame, uint8_t* const planes[3], const int strides[3]);

private:
    // All that a converter depends on. The library's own cache compares what it was asked for with what it made of
    // that, and for some formats makes a new one for every picture.
    struct Task {
        CascadeDims from;
        CascadeDims to;
        host::PixelFormat format = host::PixelFormat::kYuv420;
        bool bt709 = false;
        bool fullRange = false;
        bool toYuv = false;
        friend bool operator==(const Task&, const Task&) = default;
    };
    bool Prepare(const host::VideoFrame& frame, CascadeDims from, CascadeDims to, bool toYuv);
    bool Run(const host::VideoFrame& frame, const CascadeRect& source, uint8_t* const planes[4], const int strides[4], const OnRows& onRows = {});
    int SliceHeight(int stride) const;
    bool ReserveBounce(size_t bytes);

    struct FreeDeleter {
        void operator()(uint8_t* memory) const { std::free(memory); }
    };
    SwsContext* m_pContext = nullptr;
    Task m_Task;    // of m_pContext
    std::unique_ptr<uint8_t, FreeDeleter> m_Bounce;
    size_t m_nBounceBytes = 0;
};

}    // namespace screen
