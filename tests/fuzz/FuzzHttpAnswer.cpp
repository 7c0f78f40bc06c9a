// The header lines of a web server's answer, and what they mean for a stream. The first byte says what was asked.
#include <cstdint>
#include <string_view>

#include "host/network/HttpStreamAnswer.h"
#include "tests/fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    host::HttpAnswer answer;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        answer.TakeHeaderLine(text.substr(0, end));
        text.remove_prefix(end);
    }
    host::HttpRequest request;
    request.ranged = (data[0] & 1) != 0;
    request.from = request.ranged ? uint64_t {data[0]} << 8 : 0;
    request.ifRange = (data[0] & 2) != 0 ? "\"tag\"" : "";
    const std::optional<uint64_t> known = (data[0] & 4) != 0 ? std::optional<uint64_t>(100000) : std::nullopt;
    const host::HttpJudgement judged = host::JudgeHttpAnswer(request, answer, known);
    for (const unsigned char c : answer.reason) {
        Require(c >= ' ' && c <= '~');
    }
    // A body that is taken begins at or before the byte that was asked for.
    Require(judged.verdict != host::HttpVerdict::kTake || judged.start <= request.from);
    return 0;
}
