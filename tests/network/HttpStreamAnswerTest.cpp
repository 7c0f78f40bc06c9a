// Header lines from hostile servers: what makes no sense counts as not sent.
#include <gtest/gtest.h>

#include "host/network/HttpStreamAnswer.h"

namespace {

host::HttpAnswer Answer(std::initializer_list<std::string_view> lines)
{
    host::HttpAnswer answer;
    for (const std::string_view line : lines) {
        answer.TakeHeaderLine(line);
    }
    return answer;
}

TEST(HttpStreamAnswer, ContentRangeIsTakenWholeOrNotAtAll)
{
    using Parsed = std::pair<std::optional<uint64_t>, std::optional<uint64_t>>;    // first byte, size
    const auto parse = [](const std::string& value) {
        const host::HttpAnswer answer = Answer({"HTTP/1.1 206 Partial Content\r\n", "content-RANGE: " + value + "\r\n"});
        return Parsed(answer.rangeFirst, answer.resourceSize);
    };
    EXPECT_EQ(parse("bytes 5-9/10"), Parsed(5, 10));
    EXPECT_EQ(parse("  Bytes  0-0/* "), Parsed(0, std::nullopt));
    EXPECT_EQ(parse("bytes */77"), Parsed(std::nullopt, 77));
    EXPECT_EQ(parse("bytes 9223372036854775806-9223372036854775806/9223372036854775807"), Parsed(INT64_MAX - 1, INT64_MAX));
    for (const char* const bad :
        {"", "bytes", "bytes ", "bytes 5", "bytes 5-/10", "bytes -5/10", "bytes 9-5/10", "bytes 5-10/10", "bytes 5-9/-1", "bytes 5-9/10x",
            "bytes 5 - 9/10", "items 5-9/10", "bytes 99999999999999999999-99999999999999999999/*", "bytes +5-9/10", "bytes /", "bytes -/"}) {
        EXPECT_EQ(parse(bad), Parsed()) << bad;
    }
}

TEST(HttpStreamAnswer, LastAnswerOfSeveralCounts)
{
    const host::HttpAnswer answer = Answer(
        {"HTTP/1.1 302 Found\r\n", "Location: /there\r\n", "ETag: \"first\"\r\n", "Content-Length: 3\r\n", "\r\n", "HTTP/1.1 200 Fine\x01\x7F\r\n",
            "Content-Length: 18446744073709551616\r\n", "ETag: W/\"weak\"\r\n", "Last-Modified: yesterday\r\n", "no colon\r\n", ":\r\n"});
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.reason, "200 Fine??");
    EXPECT_FALSE(answer.hasLocation);
    EXPECT_FALSE(answer.contentLength);
    EXPECT_EQ(answer.Validator(), "yesterday");
    // A coding overrides a length, whichever comes first.
    EXPECT_FALSE(Answer({"HTTP/1.1 200 OK\r\n", "Content-Length: 5\r\n", "Transfer-Encoding: chunked\r\n"}).contentLength);
    EXPECT_FALSE(Answer({"HTTP/1.1 200 OK\r\n", "Transfer-Encoding: chunked\r\n", "Content-Length: 5\r\n"}).contentLength);
    for (const char* const line : {"HTTP/\r\n", "HTTP/1.1\r\n", "HTTP/1.1 \r\n", "HTTP/1.1 -1 x\r\n", "HTTP/1.1 two hundred\r\n"}) {
        EXPECT_EQ(Answer({line}).status, 0) << line;
    }
}

}    // namespace
