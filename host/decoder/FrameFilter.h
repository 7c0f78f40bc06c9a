// What happens to a decoded picture before it is shown: deinterlacing at field rate where it is wanted, and
// conversion of pixel formats that the screen does not take. Pictures that need neither pass untouched.
//
// Units:     stamps are ticks of the time line, 90 kHz. How long a picture stays is in pkt_duration.
// Errors:    a picture that the filter refuses is passed as it is, or not at all where the screen could not
//            take it.
// Threads:   the video decoding thread.
// Ownership: takes and gives pictures.
#pragma once

#include <vector>

#include "host/base/HostOptions.h"
#include "host/decoder/AvPointers.h"

namespace host {

class FrameFilter {
public:
    void Reset();    // pictures from elsewhere follow: fields of before must not mix in
    void Filter(FramePtr frame, int64_t duration, std::vector<FramePtr>& out);
    void Drain(std::vector<FramePtr>& out);

private:
    bool Build(const AVFrame& frame, bool deinterlace);
    bool Fits(const AVFrame& frame) const;
    void Collect(std::vector<FramePtr>& out);

    GraphPtr m_pGraph;
    AVFilterContext* m_pSource = nullptr;    // owned by the graph
    AVFilterContext* m_pSink = nullptr;
    bool m_bDeinterlaces = false;
    bool m_bWantsFields = false;             // an interlaced picture has been seen
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nFormat = -1;
};

bool ScreenTakes(int pixelFormat);

}    // namespace host
