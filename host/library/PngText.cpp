#include "host/library/PngText.h"

#include <unistd.h>

#include <cstdint>
#include <string_view>

extern "C" {
#include <libavutil/crc.h>
}

namespace host {
namespace {

constexpr std::string_view kSignature("\x89PNG\r\n\x1a\n", 8);
constexpr size_t kHeaderEnd = 8 + 8 + 13 + 4;    // signature and IHDR, which is always first and of this size
constexpr int kMostChunks = 10000;
constexpr uint32_t kLongestText = 16384;    // a path of 4096 bytes, each escaped in three

std::string BE32(uint32_t value)
{
    return {char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
}

uint32_t BE32(const unsigned char* bytes)
{
    return uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8 | bytes[3];
}

std::string Chunk(const char* type, const std::string& data)
{
    const std::string covered = type + data;
    const AVCRC* const table = av_crc_get_table(AV_CRC_32_IEEE_LE);
    const uint32_t crc = ~av_crc(table, ~uint32_t {0}, reinterpret_cast<const uint8_t*>(covered.data()), covered.size());
    return BE32(static_cast<uint32_t>(data.size())) + covered + BE32(crc);
}

bool ReadAt(int fd, off_t position, void* bytes, size_t count)
{
    return pread(fd, bytes, count, position) == static_cast<ssize_t>(count);
}

}    // namespace

std::string WithPngTexts(const std::string& png, const PngTexts& texts)
{
    std::string chunks;
    for (const auto& [keyword, text] : texts) {
        chunks += Chunk("tEXt", keyword + '\0' + text);
    }
    return png.substr(0, kHeaderEnd) + chunks + png.substr(kHeaderEnd);
}

std::optional<PngTexts> ReadPngTexts(int fd)
{
    char signature[8];
    if (!ReadAt(fd, 0, signature, sizeof signature) || std::string_view(signature, sizeof signature) != kSignature) {
        return std::nullopt;
    }
    PngTexts texts;
    off_t position = sizeof signature;
    for (int i = 0; i < kMostChunks; ++i) {
        unsigned char head[8];
        if (!ReadAt(fd, position, head, sizeof head)) {
            return std::nullopt;    // cut off
        }
        const uint32_t length = BE32(head);
        const std::string_view type(reinterpret_cast<const char*>(head) + 4, 4);
        if (type == "IEND") {
            return texts;
        }
        if (type == "tEXt" && length <= kLongestText) {
            std::string data(length, '\0');
            if (!ReadAt(fd, position + off_t(sizeof head), data.data(), length)) {
                return std::nullopt;
            }
            const size_t end = data.find('\0');
            if (end != std::string::npos) {
                texts[data.substr(0, end)] = data.substr(end + 1);
            }
        }
        position += off_t(sizeof head) + off_t {length} + 4;
    }
    return std::nullopt;
}

}    // namespace host
