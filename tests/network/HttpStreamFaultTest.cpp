// The HTTP stream against servers that lie, hang, break off and change.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <thread>

#include <gtest/gtest.h>

#include "platform/CascadeHTTPStream.h"
#include "tests/network/FaultyServer.h"
#include "tests/network/HttpReading.h"

namespace {

using namespace std::chrono_literals;

constexpr size_t kMiB = 1024 * 1024;

std::string_view Resource(size_t size = 3 * kMiB + 5)
{
    return std::string_view(Noise()).substr(0, size);
}

std::string ErrorOf(const CascadeHTTPStream& stream)
{
    CascadeString text;
    (void)stream.LookupMetadata("error", text);
    return text.Str();
}

class HttpStreamFault : public ::testing::Test {
protected:
    HttpStreamFault()
    {
        m_Stream.SetConnectTimeout(5000000);
        m_Stream.SetReceiveTimeout(5000000);
    }
    void ExpectRefusal(const std::string& answer, const std::string& reason)
    {
        FaultyServer server([&answer](Wire& wire, const Asked&, size_t) { wire.Send(answer); });
        EXPECT_FALSE(m_Stream.Open(server.Url().c_str())) << answer;
        EXPECT_NE(ErrorOf(m_Stream).find(reason), std::string::npos) << ErrorOf(m_Stream);
        EXPECT_EQ(m_Stream.ReadBytes(1, &m_Byte), 0u);
    }

    CascadeHTTPStream m_Stream;
    char m_Byte = 0;
};

TEST_F(HttpStreamFault, ErrorsOfTheServerFailTheOpenWithTheirText)
{
    ExpectRefusal("HTTP/1.1 404 Not Found\r\nContent-Length: 3\r\n\r\nno\n", "404 Not Found");
    ExpectRefusal("HTTP/1.1 500 Oh\r\nContent-Length: 0\r\n\r\n", "500 Oh");
    ExpectRefusal("HTTP/1.1 304 Not Modified\r\n\r\n", "304");
    ExpectRefusal("HTTP/1.1 206 Partial Content\r\nContent-Range: bytes 5-9/10\r\nContent-Length: 5\r\n\r\n12345", "not asked for");
    ExpectRefusal("220 this is another service\r\n", "");
    ExpectRefusal("", "");
    ExpectRefusal("HTTP/1.1 200 OK\r\nX: " + std::string(400 * 1024, 'x') + "\r\n\r\n", "");
}

TEST_F(HttpStreamFault, OnlyHttpIsSpoken)
{
    for (const char* const url :
        {"", "nonsense", "file:///etc/hostname", "https://127.0.0.1/x", "ftp://127.0.0.1/x", "http://", "http://bad host/"}) {
        EXPECT_FALSE(m_Stream.Open(url)) << url;
    }
    EXPECT_FALSE(m_Stream.Open(nullptr));
    const std::string refused = "http://127.0.0.1:" + std::to_string(FreePort()) + "/";
    EXPECT_FALSE(m_Stream.Open(refused.c_str()));
}

TEST_F(HttpStreamFault, RedirectionsLeadToHttpOnlyAndNotInCircles)
{
    const std::map<std::string, std::string> moves
        = {{"/good", "/there"}, {"/circle", "/circle"}, {"/file", "file:///etc/hostname"}, {"/https", "https://127.0.0.1/"}};
    FaultyServer server([&moves](Wire& wire, const Asked& asked, size_t) {
        const auto move = moves.find(asked.target);
        if (move == moves.end()) {
            SendGood(wire, Resource(), asked);
        } else {
            wire.Send("HTTP/1.1 302 Found\r\nLocation: " + move->second + "\r\nContent-Length: 4\r\nConnection: close\r\n\r\nmove");
        }
    });
    for (const char* const bad : {"/circle", "/file", "/https"}) {
        EXPECT_FALSE(m_Stream.Open(server.Url(bad).c_str())) << bad;
        EXPECT_FALSE(ErrorOf(m_Stream).empty());
    }
    ASSERT_TRUE(m_Stream.Open(server.Url("/good").c_str()));
    EXPECT_EQ(ErrorOf(m_Stream), "");
    ExpectSame(ReadAll(m_Stream), Resource());
    ExpectSame(ReadAt(m_Stream, 100, 50), Resource().substr(100, 50));
}

TEST_F(HttpStreamFault, SilenceBeforeTheHeadersEndsTheOpen)
{
    m_Stream.SetReceiveTimeout(200000);
    m_Stream.SetConnectTimeout(200000);
    FaultyServer mute([](Wire& wire, const Asked&, size_t) { wire.HangUntilClosed(); });
    EXPECT_FALSE(m_Stream.Open(mute.Url().c_str()));
    EXPECT_NE(ErrorOf(m_Stream).find("silent"), std::string::npos);
    // A header now and then is a sign of life, but no way to hold a player for ever.
    FaultyServer dripping([](Wire& wire, const Asked&, size_t) {
        wire.Send("HTTP/1.1 200 OK\r\n");
        do {
            std::this_thread::sleep_for(50ms);    // the server's slowness, not the test's
        } while (wire.Send("X: y\r\n"));
    });
    EXPECT_FALSE(m_Stream.Open(dripping.Url().c_str()));
}

TEST_F(HttpStreamFault, SilenceInMidStreamCountsAsTheEndUntilTheNextSeek)
{
    m_Stream.SetReceiveTimeout(400000);
    for (const bool ranges : {true, false}) {
        std::atomic<bool> well {false};
        FaultyServer server([&well, ranges](Wire& wire, const Asked& asked, size_t number) {
            const Asked answered = ranges ? asked : Asked();
            const std::string_view body = GoodBody(Resource(), answered);
            if (number == 0 || well) {
                wire.Send(ranges ? GoodHead(Resource(), answered) : WholeHead(body.size()));
                wire.Send(well ? body : body.substr(0, 1000));
            }
            wire.HangUntilClosed();
        });
        ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
        ExpectSame(ReadAll(m_Stream), Resource().substr(0, 1000));
        EXPECT_FALSE(m_Stream.WasInterrupted());
        EXPECT_EQ(m_Stream.GetPosition(), 1000u);
        EXPECT_EQ(m_Stream.GetSize(), Resource().size() - 1000);
        EXPECT_EQ(server.Asks().size(), ranges ? 2u : 1u);
        well = true;
        ExpectSame(ReadAt(m_Stream, 900, 5000), Resource().substr(900, 5000));
        EXPECT_EQ(server.Asks().back().from, 1000u);
    }
}

TEST_F(HttpStreamFault, ConnectionThatDiedUnnoticedIsReplaced)
{
    m_Stream.SetReceiveTimeout(600000);
    FaultyServer server([](Wire& wire, const Asked& asked, size_t number) {
        wire.Send(GoodHead(Resource(), asked));
        wire.Send(GoodBody(Resource(), asked).substr(0, number < 2 ? 700000 : Resource().size()));
        wire.HangUntilClosed();
    });
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    ExpectSame(ReadAll(m_Stream), Resource());
    const std::vector<Asked> asks = server.Asks();
    ASSERT_GE(asks.size(), 3u);
    EXPECT_EQ(asks[1].from, 700000u);
    EXPECT_EQ(asks[2].from, 1400000u);
}

TEST_F(HttpStreamFault, SlowTrickleIsNoSilence)
{
    m_Stream.SetReceiveTimeout(400000);
    FaultyServer server([](Wire& wire, const Asked& asked, size_t) {
        wire.Send(WholeHead(1000));
        for (size_t at = 0; at < 1000; at += 100) {
            wire.Send(GoodBody(Resource(), asked).substr(at, 100));
            std::this_thread::sleep_for(60ms);    // the server's slowness, not the test's
        }
    });
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    ExpectSame(ReadAll(m_Stream), Resource(1000));
}

TEST_F(HttpStreamFault, BrokenConnectionGoesOnAtTheSameByte)
{
    constexpr size_t kBreaks[] = {1, 70001, 1500000};
    FaultyServer server([&](Wire& wire, const Asked& asked, size_t number) {
        wire.Send(GoodHead(Resource(), asked, "ETag: \"seven\"\r\n"));
        const std::string_view body = GoodBody(Resource(), asked);
        const size_t from = Resource().size() - body.size();
        if (number == 3) {
            wire.Reset();    // nothing but the headers, and those may be lost as well
            return;
        }
        wire.Send(number < 3 ? body.substr(0, kBreaks[number] - from) : body);
    });
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    ExpectSame(ReadAll(m_Stream), Resource());
    const std::vector<Asked> asks = server.Asks();
    ASSERT_GE(asks.size(), 5u);
    for (size_t number = 1; number <= 3; ++number) {
        EXPECT_EQ(asks[number].from, kBreaks[number - 1]);
        EXPECT_EQ(asks[number].headers.at("if-range"), "\"seven\"");
    }
    EXPECT_EQ(asks[4].from, kBreaks[2]);
    EXPECT_EQ(asks[0].headers.at("accept-encoding"), "identity");
}

TEST_F(HttpStreamFault, BrokenConnectionWithoutRangesReadsEverythingAgain)
{
    FaultyServer server([&](Wire& wire, const Asked&, size_t number) {
        wire.Send(WholeHead(Resource().size()));
        wire.Send(Resource().substr(0, number == 0 ? 500000 : Resource().size()));
    });
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    ExpectSame(ReadAll(m_Stream), Resource());
    EXPECT_EQ(server.Asks().size(), 2u);
}

TEST_F(HttpStreamFault, ServerThatKeepsFailingIsGivenUp)
{
    FaultyServer server([](Wire& wire, const Asked& asked, size_t number) {
        if (number == 0) {
            wire.Send(GoodHead(Resource(), asked));
            wire.Send(Resource().substr(0, 1000));
        } else if (number == 1) {
            wire.Send("HTTP/1.1 503 Busy\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        } else {
            wire.Send("HTTP/1.1 410 Gone\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        }
    });
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    ExpectSame(ReadAll(m_Stream), Resource(1000));
    EXPECT_EQ(server.Asks().size(), 3u);
}

TEST_F(HttpStreamFault, LengthThatIsALieEndsWhereTheBytesEnd)
{
    constexpr size_t kWhole = 3 * kMiB;
    // One that is too short is not the end where ranges tell more.
    const struct {
        bool ranges;
        size_t said, sent, got;
    } kLies[] = {{true, 200000, 100000, 100000}, {false, 200000, 100000, 100000}, {true, 100000, kWhole, kWhole}, {false, 100000, kWhole, 100000}};
    for (const auto& lie : kLies) {
        FaultyServer server([&lie](Wire& wire, const Asked& asked, size_t) {
            if (lie.ranges && asked.from) {
                SendGood(wire, Resource(lie.sent), asked);
            } else {
                wire.Send(WholeHead(lie.said, lie.ranges ? "Accept-Ranges: bytes\r\n" : ""));
                wire.Send(Resource(lie.sent));
            }
        });
        ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
        // What is read ahead may have shown by now that the length was too short.
        EXPECT_TRUE(m_Stream.GetSize() == lie.said || lie.said < lie.sent);
        ExpectSame(ReadAll(m_Stream), Resource(lie.got));
        EXPECT_TRUE(m_Stream.GetSize() == 0 || lie.said > lie.sent);
    }
}

TEST_F(HttpStreamFault, ChunkedHasNoSizeAndGoesOnInsideTheChunkThatBroke)
{
    constexpr size_t kChunk = 0x8000;
    constexpr size_t kChunks = 23;
    FaultyServer server([](Wire& wire, const Asked& asked, size_t) {
        if (asked.from) {
            SendGood(wire, Resource(), asked);
            return;
        }
        wire.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n");
        for (size_t number = 0; number < kChunks; ++number) {
            wire.Send("8000\r\n" + std::string(Resource().substr(number * kChunk, kChunk)) + "\r\n");
        }
        wire.Send("8000\r\n" + std::string(Resource().substr(kChunks * kChunk, 9)));
    });
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    EXPECT_EQ(m_Stream.GetSize(), 0u);
    ExpectSame(ReadAll(m_Stream), Resource());
    EXPECT_EQ(server.Asks().at(1).from, kChunks * kChunk + 9);
}

TEST_F(HttpStreamFault, BodyUntilTheConnectionClosesHasNoSizeAndNoRanges)
{
    FaultyServer server([](Wire& wire, const Asked&, size_t) {
        wire.Send("HTTP/1.0 200 OK\r\n\r\n");
        wire.Send(Resource());
    });
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    EXPECT_EQ(m_Stream.GetSize(), 0u);
    ExpectSame(ReadAt(m_Stream, 2 * kMiB, 1000), Resource().substr(2 * kMiB, 1000));
    ExpectSame(ReadAt(m_Stream, 7, 1000), Resource().substr(7, 1000));
    // Without a size any position may be tried, until the end has come; there is nothing there.
    if (m_Stream.SeekToPosition(100 * kMiB)) {
        EXPECT_EQ(ReadAll(m_Stream), "");
        EXPECT_FALSE(m_Stream.WasInterrupted());
    }
    ExpectSame(ReadAt(m_Stream, 0, 4 * kMiB), Resource());
}

TEST_F(HttpStreamFault, RecordingUnderWayGoesOnBeyondTheSizeOfItsOpening)
{
    std::atomic<size_t> size {1000000};
    FaultyServer server([&size](Wire& wire, const Asked& asked, size_t) { SendGood(wire, Resource(size), asked); });
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    EXPECT_EQ(Read(m_Stream, 1000).size(), 1000u);
    size = 2500000;
    ExpectSame(Read(m_Stream, size - 1000), Resource(size).substr(1000));
    EXPECT_EQ(m_Stream.GetPosition(), size);
    EXPECT_EQ(Read(m_Stream, 10), "");
    // One that has not begun ends at once.
    size = 0;
    ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
    EXPECT_EQ(Read(m_Stream, 10), "");
    EXPECT_FALSE(m_Stream.WasInterrupted());
}

TEST_F(HttpStreamFault, ResourceThatChangesWhileTheConnectionIsBroken)
{
    for (const bool grows : {true, false}) {
        FaultyServer server([grows](Wire& wire, const Asked& asked, size_t number) {
            if (number == 0) {
                wire.Send(GoodHead(Resource(2 * kMiB), asked, "ETag: \"old\"\r\n"));
                wire.Send(Resource(600000));
                return;
            }
            const std::string_view now = Resource(grows ? 3 * kMiB : kMiB);
            Asked answered = asked;
            if (asked.headers.contains("if-range")) {
                answered.from.reset();
            }
            wire.Send(GoodHead(now, answered, "ETag: \"new\"\r\n"));
            wire.Send(GoodBody(now, answered));
        });
        ASSERT_TRUE(m_Stream.Open(server.Url().c_str()));
        ExpectSame(ReadAt(m_Stream, 0, 3 * kMiB), grows ? Resource(3 * kMiB) : Resource(600000));
    }
}

}    // namespace
