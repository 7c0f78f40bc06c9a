// Servers whose answers to a range are something else: seeks arrive all the same.
#include <functional>

#include <gtest/gtest.h>

#include "tests/network/FaultyServer.h"
#include "tests/network/HttpReading.h"

namespace {

constexpr const char* kRefusal = "HTTP/1.1 416 Range Not Satisfiable\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";

std::string RangeOf(uint64_t first, uint64_t end)
{
    return "Content-Range: bytes " + std::to_string(first) + "-" + std::to_string(end - 1) + "/" + std::to_string(Noise().size()) + "\r\n\r\n";
}

void SendPart(Wire& wire, uint64_t first, uint64_t end, const std::string& said)
{
    wire.Send("HTTP/1.1 206 Partial Content\r\nContent-Length: " + std::to_string(end - first) + "\r\nConnection: close\r\n" + said);
    wire.Send(std::string_view(Noise()).substr(first, end - first));
}

TEST(HttpStreamLies, SeeksArriveAtTheRightBytesAllTheSame)
{
    const std::string_view noise = Noise();
    const size_t size = noise.size();
    const std::pair<const char*, std::function<void(Wire&, uint64_t from)>> kLies[] = {
        {"everything instead",
            [&](Wire& wire, uint64_t) {
                wire.Send(WholeHead(size));
                wire.Send(noise);
            }},
        {"begins earlier", [&](Wire& wire, uint64_t from) { SendPart(wire, from / 2, size, RangeOf(from / 2, size)); }},
        {"begins later", [&](Wire& wire, uint64_t from) { SendPart(wire, std::min(from + 5, size), size, RangeOf(from + 5, size)); }},
        {"does not say where it begins", [&](Wire& wire, uint64_t from) { SendPart(wire, from, size, "\r\n"); }},
        {"refuses what it has", [](Wire& wire, uint64_t) { wire.Send(kRefusal); }},
        {"piece by piece",
            [&](Wire& wire, uint64_t from) {
                const uint64_t end = std::min(from + 100000, size);
                from < size ? SendPart(wire, from, end, RangeOf(from, end)) : static_cast<void>(wire.Send(kRefusal));
            }},
    };
    for (const auto& [name, onRange] : kLies) {
        SCOPED_TRACE(name);
        FaultyServer server([&](Wire& wire, const Asked& asked, size_t) {
            if (asked.from) {
                onRange(wire, *asked.from);
            } else {
                wire.Send(WholeHead(size));
                wire.Send(noise);
            }
        });
        CascadeHTTPStream stream;
        ASSERT_TRUE(stream.Open(server.Url().c_str()));
        ExpectSame(ReadAt(stream, 0, 1000), noise.substr(0, 1000));
        ExpectSame(ReadAt(stream, 9000000, 300000), noise.substr(9000000, 300000));
        ExpectSame(ReadAt(stream, 12000000, 300000), noise.substr(12000000, 300000));
        ExpectSame(ReadAt(stream, 20000, 2000000), noise.substr(20000, 2000000));
        ExpectSame(ReadAt(stream, size - 10, 100), noise.substr(size - 10));
        EXPECT_TRUE(stream.SeekToPosition(size));
        EXPECT_FALSE(stream.SeekToPosition(size + 1));
        EXPECT_EQ(stream.GetPosition(), size);
    }
}

}    // namespace
