// The feeder: fills the hardware decoder's buffers from the current stream, walks from file to file of a
// sequence, measures the bit rate, and tells the application of the end and of decoder errors.
//
// Units:     positions and distances are bytes; the bit rate is bits per second; times are milliseconds of uptime.
// Errors:    told on standard output. A file that cannot be opened leaves the feeder without a stream,
//            which every operation takes as an empty one.
// Threads:   OnFillBuffer and OnDecoderError run on the decoder's feeding thread. "Stopped" below marks what
//            the user-interface thread may call only while the feed is paused or closed; the rest it may
//            call at any time. Members that both threads touch are atomic words.
// Ownership: owns the stream. Closes the decoder in its destructor.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/CascadeWormhole.h"
#include "platform/MPEGDecoder.h"
#include "playback/FeedSource.h"
#include "playback/PackParser.h"
#include "playback/PlaybackGlobals.h"

// Forgets all that the timestamp repair has seen. The feed is stopped.
void InitPSParser();

class MHWDecoder : public MPEGDecoder, private PackParserOwner {
public:
    enum class Kind { kNone, kFile, kHTTP, kImage, kOther };

    // Where the feed stands: taken at one moment, so name and position belong together.
    struct Place {
        Kind kind = Kind::kNone;
        SmartFileList files;
        unsigned long long position = 0;
    };

    MHWDecoder();
    ~MHWDecoder() override;

    unsigned long OnFillBuffer(unsigned char* buffer, unsigned long length) override;
    void OnDecoderError() override;

    // Moves the read position, across files of the sequence. Always true. Stopped.
    bool Jump(int distance);

    void PrepareStart();    // before the decoder is opened anew. Stopped
    void SetStream(CascadeStream* stream);    // takes it over, closes the old one; null only closes. Stopped
    void SetFiles(const char* path);    // the sequence anew, standing at that file. Stopped
    CascadeStream* GetStream() { return m_Source.Current().m_pStream.get(); }    // may be null. Stopped

    Place GetPlace();
    Kind GetKind();
    unsigned long long GetPosition();
    unsigned long long GetStreamSize();

    void parse(unsigned char* buffer, int length);    // the timestamp repair, in place

    std::atomic<int> m_nWarmup {0};    // windows of the bit-rate measurement that only started its clock, at most 6
    std::atomic<uint32_t> m_nBitrate {19000000};    // running estimate
    std::atomic<bool> m_bProgramStream {false};
    std::atomic<bool> m_bEOF {false};    // a fill came back short
    std::atomic<bool> m_bReopened {true};    // one buffer is filled, and no other until that one comes back

private:
    bool RestInWalk() override;
    void AnnounceEnd(const unsigned char* buffer);
    bool MayFillAfterReopen(const unsigned char* buffer);
    bool UserInterfaceIsStarving();
    void MeasureBitrate(unsigned long length);
    unsigned long ReadAcrossFiles(unsigned char* buffer, unsigned long length, bool& interrupted);
    void TellEnd(const unsigned char* buffer, unsigned long got, unsigned long length);

    struct JumpState;
    bool JumpRound(JumpState& jump);
    bool OpenJumpFile(FeedSource& source, const char* path);

    CascadeWormhole m_Wormhole;
    uint32_t m_nPrevSampleTime = 0;    // ends of the last bit-rate sample
    uint32_t m_nLastSampleTime = 0;
    FeedSourceSlot m_Source;
};
