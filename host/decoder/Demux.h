// Takes the ring's bytes apart: finds the selected streams, cuts them into coded pictures and sound frames,
// puts their stamps on one line and queues them.
//
// The container is read by the library, which is told neither to probe nor to parse: streams appear
// as their first packets come, and the cutting is done here, so that stamps can carry their segment
// through the codec.
//
// Units:     stamps are segment stamps (StampLine).
// Threads:   Run on a thread of its own; Select on the user-interface thread.
// Ownership: owns the library's objects; uses ring and store.
#pragma once

#include <atomic>
#include <mutex>
#include <vector>

#include "host/decoder/AvPointers.h"
#include "host/decoder/CodedStore.h"
#include "host/decoder/FeedRing.h"
#include "host/decoder/SegmentOffsets.h"
#include "host/decoder/StampLine.h"

namespace host {

// What SelectPIDs said.
struct Selection {
    bool valid = false;
    bool programStream = false;
    uint32_t video = 0;
    uint32_t audio = 0;
    uint32_t subStream = 0;
    bool ac3 = false;
    friend bool operator==(const Selection&, const Selection&) = default;
};

// How a stream of the container relates to the selection.
enum class StreamRole { kOther, kVideo, kAudio, kVideoCandidate };
StreamRole RoleInProgramStream(const Selection& selection, int id);

class Demux {
public:
    Demux(Opening& opening, FeedRing& ring, CodedStore& store, SegmentOffsets& offsets);
    ~Demux();

    void Run();    // until the decoder goes away
    void Forget();    // user-interface thread, with the opening over: no selection
    void Select(const Selection& selection);
    bool HasSelection() const;
    void Kick();

private:
    struct Track {
        int index = -1;                 // of the container's stream
        AVCodecID codec = AV_CODEC_ID_NONE;
        ParserPtr parser;
        CodecPtr parserContext;
        size_t silentBytes = 0;         // parsed since something came out
        std::vector<PacketPtr> held;    // while codec or stream are not decided
        size_t heldBytes = 0;
        bool sawOrder = false;          // decoding stamps differ from presentation stamps
        unsigned choice = 0;
        void Drop();
    };

    bool WaitForSelection(Opening::Number opening);
    void Play(Opening::Number opening);
    bool OpenContainer(Opening::Number opening);
    bool ReadOne(Opening::Number opening, AVPacket* packet);
    bool PassEnd(Opening::Number opening);
    void ApplySelection();
    StreamRole RoleOf(const AVStream& stream) const;
    void SetDiscards();
    void Handle(PacketPtr packet);
    void HandleCandidate(PacketPtr packet);
    void AdoptCandidate();
    void Deliver(CodedStore::Kind kind, PacketPtr packet);
    bool DecideCodec(CodedStore::Kind kind, const AVPacket& packet);
    bool StartParser(Track& track);
    void Cut(CodedStore::Kind kind, const AVPacket& packet, int64_t pts, int64_t order);
    void Emit(CodedStore::Kind kind, PacketPtr packet, int64_t pts, int64_t order);
    void FlushTracks();
    Track& Of(CodedStore::Kind kind) { return m_Tracks[kind]; }

    Opening& m_Opening;
    FeedRing& m_Ring;
    CodedStore& m_Store;
    SegmentOffsets& m_Offsets;

    mutable std::mutex m_Mutex;
    std::condition_variable m_Selected;
    Selection m_Wanted;
    std::atomic<unsigned> m_nWantedSerial{0};

    // The demultiplexing thread's own.
    Opening::Number m_nPlaying = 0;
    Selection m_Selection;
    unsigned m_nSerial = 0;
    unsigned m_nChoice = 0;
    IoPtr m_pIo;
    FormatPtr m_pFormat;
    StampLine m_Line;
    Track m_Tracks[2];
    unsigned m_nStreamsSeen = 0;
    int m_nCandidateId = -1;
    bool m_bCandidatesDiffer = false;
    int m_nAdoptedId = -1;
    int m_nFirstOfKind = -1;      // the private sub-stream taken because none was named
};

}    // namespace host
