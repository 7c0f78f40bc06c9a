#include "browser/TextBytes.h"

#include <algorithm>
#include <cstdint>

#include "platform/CascadeFile.h"
#include "platform/CascadeStream.h"

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, uint32_t code)
{
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// RFC 3629, section 4: no overlong forms, no surrogates, nothing above U+10FFFF. A sequence that the end of the
// bytes cuts is let pass: files are read up to a limit.
bool IsUtf8(std::string_view bytes)
{
    for (size_t at = 0; at < bytes.size();) {
        const auto lead = static_cast<unsigned char>(bytes[at]);
        if (lead < 0x80) {
            ++at;
            continue;
        }
        const size_t more = lead >= 0xC2 && lead <= 0xDF ? 1 : (lead >= 0xE0 && lead <= 0xEF ? 2 : (lead >= 0xF0 && lead <= 0xF4 ? 3 : 0));
        if (more == 0) {
            return false;
        }
        for (size_t i = 1; i <= more && at + i < bytes.size(); ++i) {
            const auto next = static_cast<unsigned char>(bytes[at + i]);
            const unsigned char first = i > 1 ? 0x80 : (lead == 0xE0 ? 0xA0 : (lead == 0xF0 ? 0x90 : 0x80));
            const unsigned char last = i > 1 ? 0xBF : (lead == 0xED ? 0x9F : (lead == 0xF4 ? 0x8F : 0xBF));
            if (next < first || next > last) {
                return false;
            }
        }
        at += more + 1;
    }
    return true;
}

std::string FromLatin1(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        AppendUtf8(out, static_cast<unsigned char>(c));
    }
    return out;
}

std::string FromUtf16(std::string_view bytes, bool bigEndian)
{
    const auto unit = [&](size_t at) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        return static_cast<uint32_t>(bigEndian ? first << 8 | second : second << 8 | first);
    };
    std::string out;
    out.reserve(bytes.size());
    for (size_t at = 0; at + 1 < bytes.size(); at += 2) {
        uint32_t code = unit(at);
        if (code >= 0xD800 && code <= 0xDFFF) {
            const uint32_t low = at + 3 < bytes.size() ? unit(at + 2) : 0;
            if (code <= 0xDBFF && low >= 0xDC00 && low <= 0xDFFF) {
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                at += 2;
            } else {
                code = kReplacement;
            }
        }
        AppendUtf8(out, code);
    }
    return out;
}

}    // namespace

CascadeString TextBytes::Decode(std::string_view bytes)
{
    std::string text;
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        text = bytes.substr(3);
    } else if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        text = FromUtf16(bytes.substr(2), bytes[0] == '\xFE');
    } else {
        text = IsUtf8(bytes) ? std::string(bytes) : FromLatin1(bytes);
    }
    text.resize(std::min(text.find('\0'), text.size()));
    std::erase(text, '\r');
    return CascadeString(std::move(text));
}

CascadeString TextBytes::ReadTextFile(const char* path)
{
    CascadeFileStream stream;
    if (!stream.Open(CascadeFile(path))) {
        return {};
    }
    const unsigned long long size = std::min<unsigned long long>(stream.GetSize(), kMostBytes);
    std::string bytes(static_cast<size_t>(size), '\0');
    size_t got = 0;
    while (got < bytes.size()) {
        const unsigned long read = stream.ReadBytes(static_cast<unsigned long>(bytes.size() - got), bytes.data() + got);
        if (read == 0) {
            break;
        }
        got += read;
    }
    bytes.resize(got);
    return Decode(bytes);
}

std::vector<std::string_view> TextBytes::Lines(std::string_view text)
{
    std::vector<std::string_view> lines;
    for (size_t from = 0; from <= text.size();) {
        const size_t end = std::min(text.find('\n', from), text.size());
        lines.push_back(text.substr(from, end - from));
        from = end + 1;
    }
    return lines;
}
