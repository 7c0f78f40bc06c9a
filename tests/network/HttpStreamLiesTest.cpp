// Servers whose answers to a range are something else: seeks arrive all the same.
#include <functional>

#include <gtest/gtest.h>

#include "tests/network/FaultyServer.h"
#include "tests/network/HttpReading.h"

namespace {

struct Lie {
    const char* name;
    std::function<void(Wire&, const Asked&)> onRange;
};

class HttpStreamLies : public ::testing::TestWithParam<Lie> { };

TEST_P(HttpStreamLies, SeeksArriveAtTheRightBytesAllTheSame)
{
    FaultyServer server([](Wire& wire, const Asked& asked, size_t) {
        if (asked.from) {
            GetParam().onRange(wire, asked);
        } else {
            wire.Send(WholeHead(Noise().size()));
            wire.Send(Noise());
        }
    });
    const std::string_view noise = Noise();
    CascadeHTTPStream stream;
    ASSERT_TRUE(stream.Open(server.Url().c_str()));
    ExpectSame(ReadAt(stream, 0, 1000), noise.substr(0, 1000));
    ExpectSame(ReadAt(stream, 9000000, 300000), noise.substr(9000000, 300000));
    ExpectSame(ReadAt(stream, 12000000, 300000), noise.substr(12000000, 300000));
    ExpectSame(ReadAt(stream, 20000, 2000000), noise.substr(20000, 2000000));
    ExpectSame(ReadAt(stream, noise.size() - 10, 100), noise.substr(noise.size() - 10));
    EXPECT_TRUE(stream.SeekToPosition(noise.size()));
    EXPECT_FALSE(stream.SeekToPosition(noise.size() + 1));
    EXPECT_EQ(stream.GetPosition(), noise.size());
}

void SendPart(Wire& wire, uint64_t first, const std::string& contentRange)
{
    wire.Send("HTTP/1.1 206 Partial Content\r\nContent-Length: " + std::to_string(Noise().size() - first) + "\r\nConnection: close\r\n" + contentRange
        + "\r\n");
    wire.Send(std::string_view(Noise()).substr(first));
}

std::string RangeHeader(uint64_t first)
{
    const std::string size = std::to_string(Noise().size());
    return "Content-Range: bytes " + std::to_string(first) + "-" + std::to_string(Noise().size() - 1) + "/" + size + "\r\n";
}

INSTANTIATE_TEST_SUITE_P(Lies, HttpStreamLies,
    ::testing::Values(Lie {"TruthForComparison",
                          [](Wire& wire, const Asked& asked) {
                              wire.Send(GoodHead(Noise(), asked));
                              wire.Send(GoodBody(Noise(), asked));
                          }},
        Lie {"EverythingInstead",
            [](Wire& wire, const Asked&) {
                wire.Send(WholeHead(Noise().size()));
                wire.Send(Noise());
            }},
        Lie {"BeginsEarlier", [](Wire& wire, const Asked& asked) { SendPart(wire, *asked.from / 2, RangeHeader(*asked.from / 2)); }},
        Lie {"BeginsLater",
            [](Wire& wire, const Asked& asked) { SendPart(wire, std::min(*asked.from + 5, Noise().size()), RangeHeader(*asked.from + 5)); }},
        Lie {"DoesNotSayWhereItBegins", [](Wire& wire, const Asked& asked) { SendPart(wire, *asked.from, ""); }},
        Lie {"RefusesWhatItHas",
            [](Wire& wire, const Asked&) { wire.Send("HTTP/1.1 416 Range Not Satisfiable\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"); }},
        Lie {"PieceByPiece",
            [](Wire& wire, const Asked& asked) {
                const uint64_t last = std::min(*asked.from + 99999, Noise().size() - 1);
                if (*asked.from >= Noise().size()) {
                    wire.Send(GoodHead(Noise(), asked));
                    return;
                }
                wire.Send("HTTP/1.1 206 Partial Content\r\nContent-Length: " + std::to_string(last + 1 - *asked.from) + "\r\nContent-Range: bytes "
                    + std::to_string(*asked.from) + "-" + std::to_string(last) + "/" + std::to_string(Noise().size())
                    + "\r\nConnection: close\r\n\r\n");
                wire.Send(std::string_view(Noise()).substr(*asked.from, last + 1 - *asked.from));
            }}),
    [](const ::testing::TestParamInfo<Lie>& lie) { return lie.param.name; });

}    // namespace
