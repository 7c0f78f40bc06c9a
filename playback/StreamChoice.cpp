#include "playback/StreamChoice.h"

namespace {

constexpr uint32_t kPrivateStream1 = 0xBD;    // ISO/IEC 13818-1 table 2-22
constexpr uint8_t kFirstMPEGAudio = 0xC0;
constexpr uint8_t kFirstAC3SubStream = 0x80;

}    // namespace

const StreamTypeRow* FindStreamType(CascadeMPEGFile::StreamType type)
{
    for (const StreamTypeRow& row : kStreamTypes) {
        if (row.type == type) {
            return &row;
        }
    }
    return nullptr;
}

uint32_t IndexWithin(uint32_t index, uint32_t count)
{
    return index < count ? index : 0;
}

// On purpose only AC-3 sets the flag and the sub-stream: a later switch from an AC-3 track to another track
// of the same recording keeps both.
AudioChoice ChooseAudio(const CascadeMPEGFile::AudioStream& stream, const AudioChoice& before)
{
    if (stream.type == CascadeMPEGFile::kAC3) {
        return {stream.pid, true, stream.subStreamId};
    }
    return {stream.pid, before.bAC3Audio, before.nSSID};
}

AudioChoice ChooseDVDAudio(uint8_t streamId)
{
    if (streamId == kFirstMPEGAudio) {
        return {kFirstMPEGAudio, false, 0};
    }
    return {kPrivateStream1, (streamId & 0xF0) == kFirstAC3SubStream, streamId};
}

// On purpose the count includes the substitute: a program without video plays with its clock's identifier.
VideoChoice ChooseVideo(uint32_t pcrPID, uint32_t videoPID, uint32_t count)
{
    return videoPID == 0 ? VideoChoice {pcrPID, count + 1} : VideoChoice {videoPID, count};
}
