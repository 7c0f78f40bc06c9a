// The coded pictures and sounds that wait behind the demultiplexer. What is held paces the taking of bytes:
// about one decoder buffer of video, and more only where sound would starve.
//
// Units:     bytes; ticks of 90 kHz.
// Errors:    an opening that is over ends every wait (false, or kOver).
// Threads:   one producer (demultiplexer), one taker per kind; the getters on any thread.
// Ownership: owns what is queued.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

#include "host/decoder/AvPointers.h"
#include "host/decoder/Opening.h"

namespace host {

// One coded picture or sound frame, or (no packet) the end of what there is. `choice` counts the changes
// of what is selected: another number means that the codec starts anew.
struct CodedUnit {
    PacketPtr packet;
    AVCodecID codec = AV_CODEC_ID_NONE;
    unsigned choice = 0;
    int64_t order = AV_NOPTS_VALUE;    // decoding stamp
};

class CodedStore {
public:
    enum Kind { kVideo = 0, kAudio = 1 };
    enum class Got { kUnit, kNothing, kOver };

    explicit CodedStore(Opening& opening) : m_Opening(opening) {}

    void Reset();    // with the opening over or not yet begun
    void Kick();

    // Demultiplexer: waits until more is wanted. False: the opening is over.
    bool WaitForRoom(Opening::Number opening);
    void Push(Opening::Number opening, Kind kind, CodedUnit unit);
    void DropKind(Kind kind);              // another stream was selected
    void SetPictureHeight(int height);     // tells standard from high definition
    void SetVideoPossible(bool possible);  // whether an identifier of video is selected at all

    // Codec threads. Take waits for a unit unless `wait` is false.
    Got Take(Opening::Number opening, Kind kind, bool wait, CodedUnit& unit);

    size_t BytesHeld(Kind kind) const;
    int64_t TicksHeld(Kind kind) const;
    bool Seen(Kind kind) const;            // since Reset
    bool IsDrained() const;    // ended, and the end itself has been taken
    bool HasEnded() const;                 // an end was pushed and nothing after it

private:
    struct Line {
        std::deque<CodedUnit> units;
        size_t bytes = 0;
        bool seen = false;
        int64_t newest = AV_NOPTS_VALUE;
        bool takerWaits = false;
        std::condition_variable ready;
    };
    int64_t Span(const Line& line) const;
    bool Wanted(bool low) const;

    Opening& m_Opening;
    mutable std::mutex m_Mutex;
    std::condition_variable m_Room;
    Line m_Lines[2];
    int m_nHeight = 0;
    bool m_bVideoPossible = false;
    bool m_bProducerWaits = false;
    bool m_bEnded = false;
};

}    // namespace host
