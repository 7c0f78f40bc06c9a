#include "host/decoder/StreamKind.h"

#include <algorithm>

namespace host {
namespace {

constexpr size_t kRasters[] = {188, 192, 204};
constexpr size_t kMarksWanted = 5;
constexpr size_t kFewMarks = 3;             // enough where the whole stream is that short and starts with a mark
constexpr uint8_t kSync = 0x47;
constexpr size_t kGarbage = 64 << 10;       // how far a first mark may be away

// ISO/IEC 13818-1 2.4.3.2: a packet begins with the sync byte; a payload or an adaptation field, or both,
// follow. Null bits in both are reserved.
bool IsPacket(const uint8_t* at)
{
    return at[0] == kSync && (at[3] & 0x30) != 0;
}

size_t MarksInARow(const uint8_t* bytes, size_t count, size_t at, size_t raster)
{
    size_t marks = 0;
    while (marks < kMarksWanted && at + 4 <= count && IsPacket(bytes + at)) {
        ++marks;
        at += raster;
    }
    return marks;
}

bool IsTransport(const uint8_t* bytes, size_t count)
{
    const size_t reach = std::min(count, kGarbage);
    for (size_t at = 0; at < reach; ++at) {
        if (bytes[at] != kSync) {
            continue;
        }
        for (const size_t raster : kRasters) {
            const size_t marks = MarksInARow(bytes, count, at, raster);
            const bool shortStream = at < raster && at + kMarksWanted * raster > count && at + (marks + 1) * raster > count;
            if (marks >= kMarksWanted || (shortStream && marks >= kFewMarks)) {
                return true;
            }
        }
    }
    return false;
}

// ISO/IEC 13818-1 2.5.3.3 and ISO/IEC 11172-1 2.4.3.2. Answers the header's length, 0 when it is none.
size_t PackHeader(const uint8_t* at, size_t left, CascadeMPEGFile::StreamType& type)
{
    if (left < 14) {
        return 0;
    }
    if ((at[4] & 0xC4) == 0x44 && (at[6] & 0x04) != 0 && (at[8] & 0x04) != 0 && (at[9] & 0x01) != 0 && (at[12] & 0x03) == 0x03) {
        type = CascadeMPEGFile::kMPEG2ProgramStream;
        return 14 + (at[13] & 7u);
    }
    if ((at[4] & 0xF1) == 0x21 && (at[6] & 0x01) != 0 && (at[8] & 0x01) != 0 && (at[9] & 0x80) != 0 && (at[11] & 0x01) != 0) {
        type = CascadeMPEGFile::kMPEG1ProgramStream;
        return 12;
    }
    return 0;
}

bool StartCodeFollows(const uint8_t* bytes, size_t count, size_t at)
{
    while (at < count && bytes[at] == 0xFF) {
        ++at;    // stuffing between packs
    }
    while (at + 4 < count && bytes[at] == 0 && bytes[at + 1] == 0 && bytes[at + 2] == 0) {
        ++at;
    }
    return at + 4 > count || (bytes[at] == 0 && bytes[at + 1] == 0 && bytes[at + 2] == 1 && bytes[at + 3] >= 0xB9);
}

CascadeMPEGFile::StreamType ProgramKind(const uint8_t* bytes, size_t count)
{
    const size_t reach = std::min(count, kGarbage + 14);
    for (size_t at = 0; at + 14 <= reach; ++at) {
        if (bytes[at] != 0 || bytes[at + 1] != 0 || bytes[at + 2] != 1 || bytes[at + 3] != 0xBA) {
            continue;
        }
        CascadeMPEGFile::StreamType type = CascadeMPEGFile::kUnsupported;
        const size_t length = PackHeader(bytes + at, count - at, type);
        if (length != 0 && StartCodeFollows(bytes, count, at + length)) {
            return type;
        }
    }
    return CascadeMPEGFile::kUnsupported;
}

}    // namespace

CascadeMPEGFile::StreamType KindOfStream(const uint8_t* bytes, size_t count)
{
    const CascadeMPEGFile::StreamType program = ProgramKind(bytes, std::min<size_t>(count, 4096));
    if (program != CascadeMPEGFile::kUnsupported) {
        return program;
    }
    if (IsTransport(bytes, count)) {
        return CascadeMPEGFile::kMPEG2TransportStream;
    }
    return ProgramKind(bytes, count);
}

}    // namespace host
