#include "host/decoder/StreamSniff.h"

#include <algorithm>
#include <cstring>

namespace host {
namespace {

constexpr uint8_t kMpegSequenceHeader = 0xB3;    // ISO/IEC 13818-2 6.2.1
constexpr uint8_t kProfiles[] = {66, 77, 88, 100, 110, 122, 244};
constexpr size_t kParameterSetReach = 256;       // a picture parameter set follows its sequence's closely

const uint8_t* NextStartCode(const uint8_t* at, const uint8_t* end)
{
    while (end - at >= 6) {
        at = static_cast<const uint8_t*>(std::memchr(at, 1, static_cast<size_t>(end - at - 3)));
        if (at == nullptr) {
            return nullptr;
        }
        ++at;
        if (at[-2] == 0 && at[-3] == 0) {
            return at;
        }
    }
    return nullptr;
}

// A slice of a tall MPEG picture can look like the first byte of a sequence parameter set; profile, level
// and the picture parameter set behind it tell them apart (ISO/IEC 14496-10 7.3.2.1).
bool IsSequenceParameterSet(const uint8_t* unit, const uint8_t* end)
{
    if ((unit[0] & 0x9F) != 7 || (unit[0] & 0x60) == 0 || std::find(std::begin(kProfiles), std::end(kProfiles), unit[1]) == std::end(kProfiles) || (unit[2] & 3) != 0 ||
        unit[3] < 9 || unit[3] > 62) {
        return false;
    }
    const uint8_t* next = NextStartCode(unit + 2, std::min(end, unit + kParameterSetReach));
    return next != nullptr && (next[0] & 0x9F) == 8;
}

}    // namespace

AVCodecID SniffVideo(const uint8_t* bytes, size_t count)
{
    const uint8_t* const end = bytes + count;
    const uint8_t* at = bytes + std::min<size_t>(count, 2);
    while ((at = NextStartCode(at, end)) != nullptr) {
        if (at[0] == kMpegSequenceHeader) {
            return AV_CODEC_ID_MPEG2VIDEO;
        }
        if (IsSequenceParameterSet(at, end)) {
            return AV_CODEC_ID_H264;
        }
        if (at[0] == 0x40 && at[1] == 0x01 && at[2] == 0x0C) {    // video parameter set of HEVC
            return AV_CODEC_ID_HEVC;
        }
    }
    return AV_CODEC_ID_NONE;
}

AVCodecID SniffMpegAudio(const uint8_t* bytes, size_t count)
{
    if (count >= 7 && bytes[0] == 0xFF && (bytes[1] & 0xF6) == 0xF0 && (bytes[2] & 0x3C) >> 2 < 13) {
        return AV_CODEC_ID_AAC;
    }
    if (count >= 4 && bytes[0] == 0x56 && (bytes[1] & 0xE0) == 0xE0) {
        return AV_CODEC_ID_AAC_LATM;
    }
    return AV_CODEC_ID_MP2;
}

}    // namespace host
