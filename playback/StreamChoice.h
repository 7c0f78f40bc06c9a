// Which streams of a recording are handed to the decoder: decisions without a stream or a device.
//
// Units:   identifiers as CascadeMPEGFile gives them.
// Threads: pure functions.
#pragma once

#include <cstdint>

#include "platform/CascadeMPEGFile.h"

struct StreamTypeRow {
    CascadeMPEGFile::StreamType type;
    bool programStream;
    const char* text;    // of the current file's path
};

inline constexpr StreamTypeRow kStreamTypes[] = {
    {CascadeMPEGFile::kMPEG1ProgramStream, true, "Nuvid: %s is an MPEG1 program stream\n"},
    {CascadeMPEGFile::kMPEG2ProgramStream, true, "Nuvid: %s is an MPEG2 program stream\n"},
    {CascadeMPEGFile::kMPEG2TransportStream, false, "Nuvid: %s is an MPEG2 transport stream\n"},
};

// Bits per second: the estimate until the feed has measured.
constexpr uint32_t StartBitrate(bool programStream)
{
    return programStream ? 5120000 : 19660800;
}

const StreamTypeRow* FindStreamType(CascadeMPEGFile::StreamType type);    // null: not supported

uint32_t IndexWithin(uint32_t index, uint32_t count);    // 0 when it is not below the count

struct AudioChoice {
    uint32_t nAudioPID = 0;
    bool bAC3Audio = false;
    uint32_t nSSID = 0;
};

AudioChoice ChooseAudio(const CascadeMPEGFile::AudioStream& stream, const AudioChoice& before);
AudioChoice ChooseDVDAudio(uint8_t streamId);

struct VideoChoice {
    uint32_t nVideoPID = 0;
    uint32_t nNumVideoStreams = 0;
};

VideoChoice ChooseVideo(uint32_t pcrPID, uint32_t videoPID, uint32_t count);
