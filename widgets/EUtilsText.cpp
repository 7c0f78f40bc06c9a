#include "widgets/EUtils.h"

#include <regex.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "platform/CascadeStream.h"

namespace {

constexpr char kEllipsis[] = "...";
constexpr size_t kKeptAtEnd = 12;    // characters of TrimStringInMiddle behind the ellipsis
constexpr size_t kShortestTrimmed = 16;    // shorter texts are left alone, however wide
constexpr size_t kWrappedTrimStep = 5;    // characters per step, coarse on purpose: a measurement per character is dear

const char* OrEmpty(const char* text)
{
    return text == nullptr ? "" : text;
}

// Bytes of the sequence that a lead byte announces (RFC 3629, section 3); 1 for a byte that leads nothing.
size_t AnnouncedLength(unsigned char lead)
{
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    return (lead >= 0xF0 && lead <= 0xF4) ? 4 : 1;
}

}    // namespace

unsigned long long EUtils::GetFileSize(const char* path)
{
    struct stat status = {};
    if (CascadeFSObject::IsAwake(path) && stat(OrEmpty(path), &status) == 0) {
        return static_cast<unsigned long long>(status.st_size);
    }
    CascadeFileStream stream;
    return stream.Open(CascadeFile(path)) ? stream.GetSize() : 0;
}

CascadeString EUtils::GetFileSizeString(unsigned long long size)
{
    if (size < 1024) {
        return CascadeString::Format("%lld bytes", static_cast<long long>(size));
    }
    if (size < 1024 * 1024) {
        // On purpose: below one megabyte the number of kilobytes carries the unit "MB".
        return CascadeString::Format("%lld MB", static_cast<long long>(size >> 10));
    }
    if (size < 1024ULL * 1024 * 1024) {
        return CascadeString::Format("%lld MB", static_cast<long long>(size >> 20));
    }
    const auto kilobytes = static_cast<uint32_t>(size >> 10);
    return CascadeString::Format("%4.2f GB", kilobytes / 1048576.0);
}

CascadeString EUtils::GetPlainSizeString(unsigned long long size)
{
    constexpr unsigned long long kMegabyte = 1024 * 1024;
    return size < kMegabyte ? GetFileSizeKBString(size) : GetFileSizeString(size);
}

CascadeString EUtils::GetFileSizeKBString(unsigned long long size)
{
    std::string digits = std::to_string(std::max(size >> 10, 1ULL));
    for (size_t fromRight = 3; fromRight < digits.size(); fromRight += 4) {
        digits.insert(digits.size() - fromRight, 1, ',');
    }
    return CascadeString(digits + " KB");
}

std::vector<size_t> EUtils::CharacterOffsets(std::string_view text)
{
    std::vector<size_t> offsets;
    offsets.reserve(text.size() + 1);
    for (size_t at = 0; at < text.size();) {
        offsets.push_back(at);
        const size_t announced = AnnouncedLength(static_cast<unsigned char>(text[at]));
        size_t length = 1;
        while (length < announced && at + length < text.size() && (static_cast<unsigned char>(text[at + length]) & 0xC0) == 0x80) {
            ++length;
        }
        at += length == announced ? length : 1;
    }
    offsets.push_back(text.size());
    return offsets;
}

size_t EUtils::LargestFitting(size_t max, const std::function<bool(size_t)>& fits)
{
    // Doubling steps up to the first count that does not fit, then halving between the two.
    size_t good = 0;
    size_t bad = max + 1;
    for (size_t step = 16; good < max; step *= 2) {
        const size_t tried = std::min(max, good + step);
        if (!fits(tried)) {
            bad = tried;
            break;
        }
        good = tried;
    }
    while (good + 1 < bad) {
        const size_t middle = good + (bad - good) / 2;
        (fits(middle) ? good : bad) = middle;
    }
    return good;
}

CascadeString EUtils::TrimStringToWidth(const char* text, int maxWidth, const CascadeFont& font, bool fromFront)
{
    const std::string_view whole = OrEmpty(text);
    const std::vector<size_t> offsets = CharacterOffsets(whole);
    const size_t count = offsets.size() - 1;
    const auto kept = [&](size_t characters) {
        return std::string(fromFront ? whole.substr(offsets[count - characters]) : whole.substr(0, offsets[characters]));
    };
    const auto trimmed = [&](size_t characters) { return fromFront ? kEllipsis + kept(characters) : kept(characters) + kEllipsis; };

    const size_t fitting = LargestFitting(count, [&](size_t n) { return font.GetTextExtent(kept(n).c_str()).width <= maxWidth; });
    if (fitting == count) {
        return CascadeString(whole);
    }
    return CascadeString(trimmed(LargestFitting(fitting, [&](size_t n) { return font.GetTextExtent(trimmed(n).c_str()).width <= maxWidth; })));
}

CascadeString EUtils::TrimStringInMiddle(const char* text, int maxWidth, const CascadeFont& font)
{
    const std::string_view whole = OrEmpty(text);
    const std::vector<size_t> offsets = CharacterOffsets(whole);
    const size_t count = offsets.size() - 1;
    const auto fits = [&](const std::string& shown) { return font.GetTextExtent(shown.c_str()).width < maxWidth; };
    if (count < kShortestTrimmed || LargestFitting(count, [&](size_t n) { return fits(std::string(whole.substr(0, offsets[n]))); }) == count) {
        return CascadeString(whole);
    }
    // The first step takes four characters away for the ellipsis, each further one a single character.
    const std::string tail(whole.substr(offsets[count - kKeptAtEnd]));
    const auto trimmed = [&](size_t head) { return std::string(whole.substr(0, offsets[head])) + kEllipsis + tail; };
    return CascadeString(trimmed(LargestFitting(count - kShortestTrimmed, [&](size_t n) { return fits(trimmed(n)); })));
}

int EUtils::GetLineHeight(const CascadeFont& font)
{
    return font.GetTextExtent("Tpgj").height;
}

int EUtils::GetWrappedTextHeight(const CascadeFont& font, const CascadeString& text, int maxWidth)
{
    int lines = 1;
    int lineWidth = 0;
    std::string word;
    const char* const bytes = text.Text();
    for (size_t i = 0; i <= text.GetLength(); ++i) {
        const char c = bytes[i];
        if (c != ' ' && c != '\n' && c != '\0') {
            word += c;
            continue;
        }
        const int width = font.GetTextExtent(word.c_str()).width;    // of the separator before the word too
        word.clear();
        if (lineWidth + width > maxWidth) {
            ++lines;
            lineWidth = width;
        } else {
            lineWidth += width;
            word = c;
        }
        if (c == '\n') {
            word.clear();
            ++lines;
            lineWidth = 0;
        }
    }
    return lines * (GetLineHeight(font) + 1);
}

void EUtils::TrimWrappedText(CascadeString& text, const CascadeFont& font, const CascadeRect& box)
{
    const std::vector<size_t> offsets = CharacterOffsets(text.Str());
    const size_t count = offsets.size() - 1;
    const size_t steps = (count + kWrappedTrimStep - 1) / kWrappedTrimStep;    // that leave nothing
    const auto kept = [&](size_t stepsLeft) {
        const size_t cut = (steps - stepsLeft) * kWrappedTrimStep;
        return text.Left(offsets[count - std::min(cut, count)]);
    };
    const size_t left = LargestFitting(steps, [&](size_t n) { return GetWrappedTextHeight(font, kept(n) + kEllipsis, box.width) <= box.height; });
    if (left < steps) {
        text = kept(left) + kEllipsis;
    }
}

std::vector<CascadeString> EUtils::WrapText(const CascadeFont& font, const CascadeString& text, int maxWidth)
{
    std::vector<CascadeString> lines;
    std::string line;
    std::string word;
    // The end closes the last word as a line feed does.
    for (const char c : text.Str() + "\n") {
        if (c != ' ' && c != '\n') {
            word += c;
            continue;
        }
        const std::string longer = line.empty() || word.empty() ? line + word : line + " " + word;
        if (!line.empty() && font.GetTextExtent(longer.c_str()).width > maxWidth) {
            lines.emplace_back(line);
            line = word;
        } else {
            line = longer;
        }
        word.clear();
        if (c == '\n') {
            lines.emplace_back(line);
            line.clear();
        }
    }
    return lines;
}

void EUtils::ReplaceString(const char* text, const char* from, const char* to, CascadeString& out)
{
    const std::string whole = OrEmpty(text);
    const std::string_view wanted = OrEmpty(from);
    const std::string_view replacement = OrEmpty(to);
    // The empty text occurs everywhere; replacing it would never end.
    if (wanted.empty() || wanted == replacement) {
        out = whole;
        return;
    }
    std::string result;
    result.reserve(whole.size());
    size_t copied = 0;
    for (size_t hit = whole.find(wanted); hit != std::string::npos; hit = whole.find(wanted, copied)) {
        result.append(whole, copied, hit - copied).append(replacement);
        copied = hit + wanted.size();
    }
    out = result.append(whole, copied);
}

bool EUtils::RegexMatch(const char* text, const char* pattern, bool caseSensitive)
{
    regex_t compiled;
    if (regcomp(&compiled, OrEmpty(pattern), REG_EXTENDED | REG_NOSUB | (caseSensitive ? 0 : REG_ICASE)) != 0) {
        return false;
    }
    const bool matches = regexec(&compiled, OrEmpty(text), 0, nullptr, 0) == 0;
    regfree(&compiled);
    return matches;
}

int EUtils::IndexOf(const char* haystack, const char* needle)
{
    haystack = OrEmpty(haystack);
    const char* const hit = std::strstr(haystack, OrEmpty(needle));
    return hit == nullptr ? -1 : static_cast<int>(hit - haystack);
}
