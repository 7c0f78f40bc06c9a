// The codec that one stream's units are given to: opened for their kind, emptied where the stream becomes another
// or goes on after its end.
//
// Errors:    what cannot be decoded is passed over; want of memory is told besides.
// Threads:   the one that decodes.
// Ownership: the codec's frames are their receiver's.
#pragma once

#include <functional>

#include "host/decoder/AvPointers.h"
#include "host/decoder/CodedStore.h"

namespace host {

class UnitCodec {
public:
    UnitCodec(int64_t mostPixels, std::function<void()> onNoMemory);    // of a picture; 0: as the codec will

    enum class Sent { kNot, kAsBefore, kToChanged, kToOpened };    // to a codec that was emptied, or is a new one

    void Begin();    // what the codec holds is of another opening
    Sent Send(const CodedUnit& unit);
    bool Drain();    // no unit follows; whether frames may

    AVCodecContext* operator->() const { return m_pContext.get(); }
    AVCodecContext* Get() const { return m_pContext.get(); }    // null before the first unit

private:
    Sent MakeReady(const CodedUnit& unit);
    bool Open(AVCodecID kind);

    const int64_t m_nMostPixels;
    const std::function<void()> m_OnNoMemory;
    CodecPtr m_pContext;
    AVCodecID m_Kind = AV_CODEC_ID_NONE;
    unsigned m_nChoice = 0;    // of the last unit; 0: none since the opening began
    bool m_bDrained = false;
};

}    // namespace host
