#include "host/network/HttpStreamAnswer.h"

#include <algorithm>
#include <charconv>

namespace host {
namespace {

constexpr size_t kLongestText = 200;

char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameWord(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlank = " \t\r\n";
    const size_t first = text.find_first_not_of(kBlank);
    return first == std::string_view::npos ? std::string_view() : text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::optional<uint64_t> Number(std::string_view text)
{
    uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    // Positions are handed to libraries as signed 64-bit numbers.
    if (text.empty() || error != std::errc() || stop != end || value > INT64_MAX) {
        return std::nullopt;
    }
    return value;
}

std::string Printable(std::string_view text)
{
    std::string result(text.substr(0, kLongestText));
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return result;
}

// RFC 9110 14.4: "bytes first-last/size", "bytes first-last/*" or "bytes */size".
void TakeContentRange(std::string_view value, HttpAnswer& answer)
{
    constexpr std::string_view kUnit = "bytes";
    if (value.size() <= kUnit.size() || !SameWord(value.substr(0, kUnit.size()), kUnit)) {
        return;
    }
    value = Trimmed(value.substr(kUnit.size()));
    const size_t slash = value.find('/');
    if (slash == std::string_view::npos) {
        return;
    }
    const std::string_view range = Trimmed(value.substr(0, slash));
    const std::string_view sizeText = Trimmed(value.substr(slash + 1));
    const std::optional<uint64_t> size = Number(sizeText);
    if (!size && sizeText != "*") {
        return;
    }
    if (range == "*") {
        answer.resourceSize = size;
        return;
    }
    const size_t dash = range.find('-');
    if (dash == std::string_view::npos) {
        return;
    }
    const std::optional<uint64_t> first = Number(range.substr(0, dash));
    const std::optional<uint64_t> last = Number(range.substr(dash + 1));
    if (first && last && *last >= *first && (!size || *size > *last)) {
        answer.rangeFirst = first;
        answer.resourceSize = size;
    }
}

HttpJudgement JudgeWhole(const HttpRequest& request, const HttpAnswer& answer, std::optional<uint64_t> knownSize)
{
    HttpJudgement judgement;
    judgement.size = answer.contentLength;
    const bool changed = !request.ifRange.empty() && answer.Validator() != request.ifRange;
    if (changed && answer.contentLength && knownSize) {
        if (*answer.contentLength < *knownSize) {
            judgement.verdict = HttpVerdict::kRefuse;
            judgement.text = "the resource was replaced";
        } else {
            judgement.verdict = HttpVerdict::kAskUnconditionally;
        }
    }
    return judgement;
}

HttpJudgement JudgePart(const HttpRequest& request, const HttpAnswer& answer)
{
    HttpJudgement judgement;
    judgement.size = answer.resourceSize;
    if (answer.rangeFirst && *answer.rangeFirst <= request.from) {
        judgement.start = *answer.rangeFirst;
    } else if (request.ranged) {
        judgement.verdict = HttpVerdict::kRestartWhole;
    } else {
        judgement.verdict = HttpVerdict::kRefuse;
        judgement.text = "an answer in parts that was not asked for";
    }
    return judgement;
}

HttpJudgement JudgeUnsatisfiable(const HttpRequest& request, const HttpAnswer& answer, std::optional<uint64_t> knownSize)
{
    HttpJudgement judgement;
    judgement.size = answer.resourceSize;
    const std::optional<uint64_t> size = answer.resourceSize ? answer.resourceSize : knownSize;
    // A server that has the position and still refuses the range does not understand ranges.
    judgement.verdict = size && request.from < *size ? HttpVerdict::kRestartWhole : HttpVerdict::kEnd;
    return judgement;
}

}    // namespace

void HttpAnswer::TakeHeaderLine(std::string_view line)
{
    if (line.starts_with("HTTP/")) {
        *this = HttpAnswer();
        const size_t blank = line.find(' ');
        if (blank != std::string_view::npos) {
            const std::string_view rest = Trimmed(line.substr(blank));
            status = static_cast<int>(std::min<uint64_t>(Number(rest.substr(0, rest.find(' '))).value_or(0), 999));
            reason = Printable(rest);
        }
        return;
    }
    const size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return;
    }
    const std::string_view name = line.substr(0, colon);
    const std::string_view value = Trimmed(line.substr(colon + 1));
    if (SameWord(name, "Content-Length")) {
        contentLength = chunked ? std::nullopt : Number(value);
    } else if (SameWord(name, "Transfer-Encoding")) {
        chunked = true;
        contentLength.reset();    // RFC 9112 6.3: the coding overrides the length
    } else if (SameWord(name, "Content-Range")) {
        TakeContentRange(value, *this);
    } else if (SameWord(name, "Accept-Ranges")) {
        acceptsRanges = SameWord(value, "bytes");
    } else if (SameWord(name, "Location")) {
        hasLocation = !value.empty();
    } else if (SameWord(name, "ETag")) {
        etag = value.size() <= kLongestText ? Printable(value) : std::string();
    } else if (SameWord(name, "Last-Modified")) {
        lastModified = Printable(value);
    }
}

std::string HttpAnswer::Validator() const
{
    return !etag.empty() && !etag.starts_with("W/") ? etag : lastModified;
}

HttpJudgement JudgeHttpAnswer(const HttpRequest& request, const HttpAnswer& answer, std::optional<uint64_t> knownSize)
{
    if (answer.status == 206) {
        return JudgePart(request, answer);
    }
    if (answer.status >= 200 && answer.status < 300) {
        return JudgeWhole(request, answer, knownSize);
    }
    if (answer.status == 416 && request.ranged) {
        return JudgeUnsatisfiable(request, answer, knownSize);
    }
    HttpJudgement judgement;
    const bool passing = answer.status >= 500 || answer.status == 408 || answer.status == 429;
    judgement.verdict = passing ? HttpVerdict::kTryAgain : HttpVerdict::kRefuse;
    judgement.text = answer.reason.empty() ? "no HTTP status" : answer.reason;
    return judgement;
}

}    // namespace host
