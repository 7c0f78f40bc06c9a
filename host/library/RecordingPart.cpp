#include "host/library/RecordingPart.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
#include <vector>

namespace host {
namespace {

constexpr int kIoBytes = 32768;
constexpr size_t kLookBytes = 256 * 1024;    // program streams have a pack header at least every 0.7 s (ISO/IEC 13818-1 2.7.1)
constexpr size_t kPacketSizes[] = {188, 192, 204};
constexpr size_t kPacketsInARow = 10;
constexpr size_t kLookPackets = 4096;    // where the first of them may begin

bool IsTransportStream(std::span<const uint8_t> bytes)
{
    for (const size_t size : kPacketSizes) {
        for (size_t begin = 0; begin < kLookPackets && begin + kPacketsInARow * size <= bytes.size(); ++begin) {
            size_t seen = 0;
            while (seen < kPacketsInARow && bytes[begin + seen * size] == 0x47) {
                ++seen;
            }
            if (seen == kPacketsInARow) {
                return true;
            }
        }
    }
    return false;
}

constexpr uint8_t kPack = 0xBA;    // ISO/IEC 13818-1 2.5.3.3
constexpr uint8_t kSequence = 0xB3;    // ISO/IEC 13818-2 6.2.2.1

bool HasHeader(std::span<const uint8_t> bytes, uint8_t code)
{
    const std::array<uint8_t, 4> header {0, 0, 1, code};
    return std::search(bytes.begin(), bytes.end(), header.begin(), header.end()) != bytes.end();
}

}    // namespace

RecordingPart::RecordingPart(int fd, int64_t position, int64_t length, const std::function<bool()>& stop)
    : m_Fd(fd)
    , m_nBegin(position)
    , m_nPosition(position)
    , m_nEnd(position + length)
    , m_Stop(stop)
{
    uint8_t* const buffer = static_cast<uint8_t*>(av_malloc(kIoBytes));
    m_pIo = buffer == nullptr ? nullptr : avio_alloc_context(buffer, kIoBytes, 0, this, &RecordingPart::OnRead, nullptr, nullptr);
    if (m_pIo == nullptr) {
        av_free(buffer);
    }
}

RecordingPart::~RecordingPart()
{
    if (m_pIo != nullptr) {
        av_freep(&m_pIo->buffer);
        avio_context_free(&m_pIo);
    }
}

const AVInputFormat* RecordingPart::Kind() const
{
    std::vector<uint8_t> bytes(kLookBytes);
    const ssize_t count = m_Stop() ? 0 : pread(m_Fd, bytes.data(), bytes.size(), m_nBegin);
    const std::span<const uint8_t> look(bytes.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
    if (IsTransportStream(look)) {
        return av_find_input_format("mpegts");
    }
    // A part may begin inside a pack, so a sequence may come before the first pack; video alone has no packs at all.
    return HasHeader(look, kPack) ? av_find_input_format("mpeg") : HasHeader(look, kSequence) ? av_find_input_format("mpegvideo") : nullptr;
}

int RecordingPart::OnRead(void* self, uint8_t* bytes, int count)
{
    RecordingPart& part = *static_cast<RecordingPart*>(self);
    if (part.m_Stop()) {
        part.m_bBroken = true;
        return AVERROR_EXIT;
    }
    const int64_t wanted = std::min<int64_t>(count, part.m_nEnd - part.m_nPosition);
    const ssize_t got = wanted <= 0 ? 0 : pread(part.m_Fd, bytes, static_cast<size_t>(wanted), part.m_nPosition);
    if (got < 0) {
        part.m_bBroken = true;
        return AVERROR(errno);
    }
    part.m_nPosition += got;
    return got == 0 ? AVERROR_EOF : static_cast<int>(got);
}

}    // namespace host
