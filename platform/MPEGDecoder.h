// The decoder: takes the bytes of one MPEG stream, shows its picture and plays its sound.
//
// Units:     bytes; the audio threshold is in ticks of 90 kHz.
// Errors:    false, and nothing is left running. OnDecoderError tells of a state from which decoding cannot
//            go on; damaged, scrambled or cut streams are no such state.
// Threads:   every operation but the callbacks: the user-interface thread. OnFillBuffer and OnDecoderError
//            run on the feeding thread. PauseStreaming and Close return only when no callback is running
//            and none will start; a callback that waits for a server is ended by them.
// Ownership: owns its buffers and threads. A derived class calls Close in its destructor.
//
// Feeding: a ring of `numBuffers` buffers is offered to OnFillBuffer in turn while streaming; a buffer is
// offered again when its last byte has been taken by the demultiplexer. A fill of 0 bytes is asked
// again after a short wait, the next buffer first, so an idle feed goes round the ring. Bytes are taken
// at the pace of playback: behind the ring about 229,376 bytes of video wait for their turn.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/CascadeGeometry.h"

class MPEGDecoder {
public:
    MPEGDecoder();
    virtual ~MPEGDecoder();
    MPEGDecoder(const MPEGDecoder&) = delete;
    MPEGDecoder& operator=(const MPEGDecoder&) = delete;

    // 0 buffers of size 0 mean the platform's maximum: 32 of 192512 bytes. The clock arguments (source and
    // recovery mode of the system clock and of the audio clock) and flags are the hardware's and are only
    // kept: here sound is the clock.
    // The last picture of an earlier opening stays on screen until a new one comes.
    [[nodiscard]] bool NewOpen(uint32_t numBuffers, uint32_t bufferSize, uint32_t clockSource1, uint32_t recoveryMode1, uint32_t clockSource2,
                               uint32_t recoveryMode2, bool flag1, bool flag2, bool flag3, bool flag4, uint32_t audioSyncThreshold);

    // May be called again while streaming. A video identifier that carries no video shows none. In a
    // program stream with private stream 1 the second byte of nAudioPID, when set, names the sub-stream,
    // else nSSID, else the first sub-stream of the kind that bAC3Audio says.
    [[nodiscard]] bool SelectPIDs(bool bProgramStream, uint32_t nPCRPID, uint32_t nVideoPID, uint32_t nAudioPID, uint32_t nSSID, bool bAC3Audio);

    bool ResumeStreaming(bool normalSpeed);
    bool PauseStreaming();    // picture stays, sound stops at once, feed stops
    // Forgets everything that was fed. The last picture stays for a new opening to replace; when none has
    // come half a second later the screen goes black.
    bool Close();

    // `output` is the part that is kept of the decoder's picture as it is laid out over the full output;
    // `scale` is where on the output that part goes. Pixels of the output resolution.
    [[nodiscard]] bool SetOutputAndScaleRects(const CascadeRect& output, const CascadeRect& scale);

    // Picture and sound have stopped for lack of data: OnFillBuffer has not returned for a while, and all that
    // was fed before has been played. They go on by themselves once some seconds of the stream are in hand.
    bool IsStarving() const;

    virtual unsigned long OnFillBuffer(unsigned char* buffer, unsigned long length) = 0;
    virtual void OnDecoderError() = 0;

protected:
    // For callbacks that may take long: true once PauseStreaming or Close waits for them.
    bool IsBeingStopped() const;
    // Rests the calling callback for a while; returns early, and true, once it is being stopped.
    bool RestUnlessStopped(uint32_t milliseconds) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_pImpl;
};
