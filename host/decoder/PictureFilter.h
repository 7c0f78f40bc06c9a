// What the filter module (host/decoder/filter) offers: deinterlacing and conversion of pixel formats.
//
// Errors:    Filter answers false, and takes nothing, when no graph can be built for the picture.
// Threads:   the video decoding thread.
// Ownership: takes and gives pictures. The object is deleted by whoever had it made.
#pragma once

#include <vector>

#include "host/decoder/AvPointers.h"

namespace host {

class PictureFilter {
public:
    virtual ~PictureFilter() = default;
    virtual void Reset() = 0;
    // `every`: pictures that are not flagged as interlaced are split too.
    virtual bool Filter(FramePtr& frame, bool deinterlace, bool every, std::vector<FramePtr>& out) = 0;
    virtual void Drain(std::vector<FramePtr>& out) = 0;
};

// Screen formats: planar 8-bit 4:2:0, 4:2:2 and 4:4:4. Here, so that module and decoder have one list.
inline bool ScreenTakes(int pixelFormat)
{
    switch (pixelFormat) {
    case AV_PIX_FMT_YUV420P:
    case AV_PIX_FMT_YUV422P:
    case AV_PIX_FMT_YUV444P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ444P:
        return true;
    default:
        return false;
    }
}

}    // namespace host

// The module's one entry, found by its name.
extern "C" host::PictureFilter* NuvidMakePictureFilter();
