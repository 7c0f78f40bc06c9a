// What a server's answer says, and what it means for a stream that asked for the bytes from a position on.
// Servers state wrong lengths, ignore ranges or answer others than asked for; all such judging is here.
//
// Units:   positions and sizes are bytes of the resource.
// Errors:  a header that makes no sense is taken as not sent.
// Threads: plain values and pure functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

struct HttpAnswer {
    int status = 0;
    std::string reason;    // printable, shortened
    std::optional<uint64_t> contentLength;    // of this answer's body; none when chunked
    std::optional<uint64_t> rangeFirst;    // RFC 9110 14.4 Content-Range
    std::optional<uint64_t> resourceSize;    // its complete length, also of "bytes */N"
    bool chunked = false;
    bool acceptsRanges = false;
    bool hasLocation = false;
    std::string etag;
    std::string lastModified;

    // A status line begins the answer anew: after a redirection or a 1xx another one follows.
    void TakeHeaderLine(std::string_view line);
    bool IsInterim() const { return status < 200 || (status >= 300 && status < 400 && hasLocation); }
    // What If-Range may carry (RFC 9110 13.1.5: no weak tag); empty: nothing.
    std::string Validator() const;
};

struct HttpRequest {
    uint64_t from = 0;
    bool ranged = false;
    std::string ifRange;    // empty: none
};

enum class HttpVerdict {
    kTake,    // the body is good and begins at `start`
    kRestartWhole,    // this server's ranges are of no use: ask for everything and discard
    kAskUnconditionally,    // the resource was changed and is not smaller: ask for the range all the same
    kEnd,    // there is nothing at that position
    kTryAgain,    // the server cannot now
    kRefuse    // no
};

struct HttpJudgement {
    HttpVerdict verdict = HttpVerdict::kTake;
    uint64_t start = 0;
    std::optional<uint64_t> size;    // of the resource, as stated
    std::string text;    // for kTryAgain and kRefuse
};

HttpJudgement JudgeHttpAnswer(const HttpRequest& request, const HttpAnswer& answer, std::optional<uint64_t> knownSize);

}    // namespace host
