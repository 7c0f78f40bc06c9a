// Classification of an MPEG stream and the lists of what it carries.
//
// Units:     identifiers are the transport packet identifier, or in a program stream the stream id byte
//            (0xE0.., 0xC0.., 0xBD for private stream 1).
// Errors:    SetStream answers false when the stream cannot be read; a stream of a foreign kind is no
//            error, its type is 0.
// Threads:   the thread that calls; SetStream blocks on the stream.
// Ownership: does not own the stream and uses it only inside SetStream. SetStream reads from where the
//            stream stands, looks at 2 MiB at the most, and leaves the stream where it found it.
#pragma once

#include <cstdint>
#include <memory>

class CascadeStream;

class CascadeMPEGFile {
public:
    enum StreamType { kUnsupported = 0, kMPEG1ProgramStream = 1, kMPEG2ProgramStream = 2, kMPEG2TransportStream = 3 };
    enum AudioType { kMPEGAudio = 0, kAC3 = 1, kLPCM = 2, kDTS = 3, kOtherAudio = 4 };

    struct Program {
        uint32_t number = 0;
        uint32_t pcrPID = 0;
    };
    struct VideoStream {
        uint32_t pid = 0;
        int width = 0;     // 0: not known
        int height = 0;
    };
    // An audio stream of private stream 1 that is not AC-3 carries its sub-stream in the second byte of
    // its identifier (0x88BD: DTS, first stream), since its sub-stream identifier need not be handed on.
    struct AudioStream {
        uint32_t pid = 0;
        uint32_t subStreamId = 0;
        AudioType type = kMPEGAudio;
        char language[4] = {};    // ISO 639-2, empty when not told
    };

    CascadeMPEGFile();
    ~CascadeMPEGFile();
    CascadeMPEGFile(const CascadeMPEGFile&) = delete;
    CascadeMPEGFile& operator=(const CascadeMPEGFile&) = delete;

    [[nodiscard]] bool SetStream(CascadeStream* stream);
    StreamType GetStreamType() const;
    unsigned GetNumPrograms() const;                          // a program stream has one
    unsigned GetNumVideoStreams(unsigned program) const;      // 0 for a program that is not there
    unsigned GetNumAudioStreams(unsigned program) const;
    Program GetProgramAt(unsigned program) const;             // zeros for one that is not there
    VideoStream GetVideoStreamAt(unsigned program, unsigned index) const;
    AudioStream GetAudioStreamAt(unsigned program, unsigned index) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};
