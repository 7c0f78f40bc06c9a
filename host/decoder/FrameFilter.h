// What happens to a decoded picture before it is shown: deinterlacing at field rate where it is wanted, and
// conversion of pixel formats that the screen does not take. Pictures that need neither pass untouched.
//
// Units:     stamps are ticks of the time line, 90 kHz. How long a picture stays is in pkt_duration.
// Errors:    the filters are a module that is loaded when the first picture needs them. Without it, and where
//            it refuses a picture, that is passed as it is, or not at all where the screen could not take it.
// Threads:   the video decoding thread.
// Ownership: takes and gives pictures.
#pragma once

#include <vector>

#include "host/base/HostOptions.h"
#include "host/decoder/PictureFilter.h"

namespace host {

class FrameFilter {
public:
    void Reset();    // pictures from elsewhere follow: fields of before must not mix in
    int PicturesOf(const AVFrame& frame);    // that Filter would make of it
    void Filter(FramePtr frame, int64_t duration, std::vector<FramePtr>& out);
    void Drain(std::vector<FramePtr>& out);

private:
    PictureFilter* Module();    // null: it is not there

    std::unique_ptr<PictureFilter> m_pFilter;
    bool m_bModuleAsked = false;
    bool m_bWantsFields = false;    // an interlaced picture has been seen
};

}    // namespace host
