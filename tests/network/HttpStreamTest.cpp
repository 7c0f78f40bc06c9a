// The HTTP stream with servers that work: waiting and being interrupted, what is asked of the server and
// what is not, and a long random walk.
#include <atomic>
#include <condition_variable>
#include <random>

#include <gtest/gtest.h>

#include <netdb.h>

#include "host/base/UiQueue.h"
#include "host/network/HttpStreamWindow.h"
#include "platform/CascadeHTTPStream.h"
#include "tests/network/FaultyServer.h"
#include "tests/network/HttpReading.h"
#include "tests/network/UiThread.h"

namespace {

constexpr size_t kMiB = 1024 * 1024;

// A gate in front of the system's name lookup: while it is shut, lookups of "hanging.test" hang.
struct LookupGate {
    std::mutex mutex;
    std::condition_variable changed;
    bool shut = false;
    int inside = 0;
} g_Lookup;

}    // namespace

extern "C" int getaddrinfo(const char* node, const char*, const addrinfo*, addrinfo**)
{
    // Only names reach this: addresses are understood without it.
    std::unique_lock lock(g_Lookup.mutex);
    ++g_Lookup.inside;
    g_Lookup.changed.notify_all();
    g_Lookup.changed.wait(lock, [node] { return std::string_view(node) != "hanging.test" || !g_Lookup.shut; });
    --g_Lookup.inside;
    g_Lookup.changed.notify_all();
    return EAI_NONAME;
}

namespace {

// Sends the first `sent` bytes and then nothing until the test opens the gate.
class HeldServer {
public:
    explicit HeldServer(size_t sent)
        : m_Server([this, sent](Wire& wire, const Asked& asked, size_t) {
            wire.Send(GoodHead(Noise(), asked));
            wire.Send(GoodBody(Noise(), asked).substr(0, sent));
            m_Opened.wait();
            wire.Send(GoodBody(Noise(), asked).substr(sent));
        })
    {
    }
    ~HeldServer() { Open(); }
    void Open()
    {
        if (!std::exchange(m_bOpened, true)) {
            m_Gate.set_value();
        }
    }
    FaultyServer& Server() { return m_Server; }

private:
    bool m_bOpened = false;
    std::promise<void> m_Gate;
    const std::shared_future<void> m_Opened {m_Gate.get_future()};
    FaultyServer m_Server;
};

TEST(HttpStream, SeekInsideTheWindowAsksNothing)
{
    FaultyServer server([](Wire& wire, const Asked& asked, size_t) { SendGood(wire, Noise(), asked); });
    CascadeHTTPStream stream;
    ASSERT_TRUE(stream.Open(server.Url().c_str()));
    EXPECT_EQ(stream.GetSize(), Noise().size());
    EXPECT_EQ(Read(stream, 6 * kMiB), Noise().substr(0, 6 * kMiB));
    EXPECT_EQ(stream.GetSize(), Noise().size() - 6 * kMiB);
    for (const size_t position : {5 * kMiB, 5 * kMiB + 1, 6 * kMiB - 100000, 6 * kMiB, 5 * kMiB}) {
        ASSERT_TRUE(stream.SeekToPosition(position));
        EXPECT_EQ(stream.GetPosition(), position);
        EXPECT_EQ(Read(stream, 1000), Noise().substr(position, 1000));
    }
    EXPECT_EQ(server.Asks().size(), 1u);
    // Far away it is a new request, from exactly there.
    ASSERT_TRUE(stream.SeekToPosition(kMiB));
    EXPECT_EQ(Read(stream, 1000), Noise().substr(kMiB, 1000));
    ASSERT_EQ(server.Asks().size(), 2u);
    EXPECT_EQ(server.Asks()[1].from, kMiB);
    EXPECT_FALSE(stream.SeekToPosition(Noise().size() + 1));
    EXPECT_EQ(stream.GetPosition(), kMiB + 1000);
    ASSERT_TRUE(stream.SeekToPosition(Noise().size()));
    EXPECT_EQ(stream.GetSize(), 0u);
    EXPECT_EQ(Read(stream, 10), "");
}

TEST(HttpStream, NoMoreIsTransferredThanTheWindowHolds)
{
    std::promise<void> blocked;
    std::promise<void> closed;
    FaultyServer server([&](Wire& wire, const Asked& asked, size_t number) {
        wire.Send(GoodHead(Noise(), asked));
        std::string_view body = GoodBody(Noise(), asked);
        while (number == 0 && !body.empty() && wire.IsTakingMore(500)) {
            wire.Send(body.substr(0, 16384));
            body.remove_prefix(std::min<size_t>(16384, body.size()));
        }
        if (number == 0) {
            blocked.set_value();
            wire.HangUntilClosed();
            closed.set_value();
        } else {
            wire.Send(body);
        }
    });
    CascadeHTTPStream stream;
    ASSERT_TRUE(stream.Open(server.Url().c_str()));
    EXPECT_EQ(Read(stream, 100000), Noise().substr(0, 100000));
    ASSERT_EQ(blocked.get_future().wait_for(kPatience), std::future_status::ready);
    // The window, and what the system's buffers on both sides take.
    EXPECT_LT(server.Sent(), 100000 + host::HttpStreamWindow::kAhead + 2 * kMiB);
    // A skip ends the transfer under way.
    ASSERT_TRUE(stream.SeekToPosition(Noise().size() - 1000));
    EXPECT_EQ(closed.get_future().wait_for(kPatience), std::future_status::ready);
    EXPECT_EQ(Read(stream, 5000), Noise().substr(Noise().size() - 1000));
}

TEST(HttpStream, InterruptedReadTakesNothingAndCanBeAskedAgain)
{
    // Once within the first piece, once after more than the window keeps has been taken.
    for (const size_t sent : {size_t {5000}, 7 * kMiB}) {
        HeldServer held(sent);
        CascadeHTTPStream stream;
        ASSERT_TRUE(stream.Open(held.Server().Url().c_str()));
        ASSERT_EQ(Read(stream, 1000), Noise().substr(0, 1000));
        host::InterruptToken token;
        std::string first;
        bool interrupted = false;
        unsigned long long position = 0;
        std::thread feeder([&] {
            const host::InterruptToken::Scope scope(&token);
            first = Read(stream, sent + 500);
            interrupted = stream.WasInterrupted();
            position = stream.GetPosition();
        });
        // The last whole piece that was sent has been taken; now the read can only wait.
        const uint64_t blockedAt = 1000 + (sent - 1000) / kMiB * kMiB;
        EXPECT_TRUE(WaitUntil([&] { return stream.GetPosition() == blockedAt; }));
        token.Interrupt();
        feeder.join();    // the test's own time-out is the deadline
        EXPECT_EQ(first, "");
        EXPECT_TRUE(interrupted);
        EXPECT_EQ(position, 1000u);
        token.Reset();
        held.Open();
        const host::InterruptToken::Scope scope(&token);
        EXPECT_TRUE(Read(stream, sent + 500) == Noise().substr(1000, sent + 500));
        EXPECT_FALSE(stream.WasInterrupted());
    }
}

TEST(HttpStream, EndOfTheUserInterfacesWaitEndsReadAndOpen)
{
    FakeUiLoop loop;
    HeldServer held(1000);
    CascadeHTTPStream stream;
    ASSERT_TRUE(stream.Open(held.Server().Url().c_str()));
    host::PostToUi([] { host::EndUiWait(); });
    EXPECT_EQ(Read(stream, 100000), "");
    EXPECT_TRUE(stream.WasInterrupted());
    EXPECT_EQ(stream.GetPosition(), 0u);
    host::ClearUiWaitEnd();
    EXPECT_EQ(Read(stream, 1000), Noise().substr(0, 1000));

    FaultyServer mute([](Wire& wire, const Asked&, size_t) {
        host::PostToUi([] { host::EndUiWait(); });
        wire.HangUntilClosed();
    });
    CascadeHTTPStream other;
    EXPECT_FALSE(other.Open(mute.Url().c_str()));
    EXPECT_TRUE(host::UiWaitWasEnded());
}

TEST(HttpStream, DestructionDoesNotWaitForANameLookup)
{
    {
        const std::lock_guard lock(g_Lookup.mutex);
        g_Lookup.shut = true;
    }
    {
        FakeUiLoop loop;
        std::thread ender([] {
            std::unique_lock lock(g_Lookup.mutex);
            g_Lookup.changed.wait(lock, [] { return g_Lookup.inside > 0; });
            host::EndUiWait();
        });
        CascadeHTTPStream stream;
        EXPECT_FALSE(stream.Open("http://hanging.test/recording.mpg"));
        ender.join();
    }
    // The lookup is still under way: nothing has waited for it.
    std::unique_lock lock(g_Lookup.mutex);
    EXPECT_EQ(g_Lookup.inside, 1);
    g_Lookup.shut = false;
    g_Lookup.changed.notify_all();
    EXPECT_TRUE(g_Lookup.changed.wait_for(lock, kPatience, [] { return g_Lookup.inside == 0; }));
}

TEST(HttpStream, RandomWalkOverABreakingServerStaysOnTheRightBytes)
{
    std::mt19937 chance(1);
    std::mutex mutex;
    FaultyServer server([&](Wire& wire, const Asked& asked, size_t) {
        const std::string_view body = GoodBody(Noise(), asked);
        size_t most = 0;
        {
            const std::lock_guard lock(mutex);
            most = chance() % 4 == 0 ? body.size() : 1 + chance() % 3000000;
        }
        wire.Send(GoodHead(Noise(), asked));
        wire.Send(body.substr(0, most));
    });
    CascadeHTTPStream stream;
    ASSERT_TRUE(stream.Open(server.Url().c_str()));
    std::mt19937 random(2);
    uint64_t position = 0;
    for (int step = 0; step < 300; ++step) {
        if (random() % 3 == 0) {
            const bool near = random() % 2 == 0;
            const uint64_t target = near ? position + random() % 400000 : random();
            position = std::max<uint64_t>(target, 200000) - (near ? 200000 : 0);
            position %= Noise().size();
            ASSERT_TRUE(stream.SeekToPosition(position));
        }
        const size_t length = random() % 5 == 0 ? random() % 3000000 : random() % 200000;
        const std::string got = Read(stream, length);
        const std::string_view wanted = std::string_view(Noise()).substr(position, length);
        ASSERT_EQ(got.size(), wanted.size()) << "step " << step;
        ASSERT_TRUE(got == wanted) << "step " << step;
        position += got.size();
    }
}

TEST(HttpStream, StandsReadyAgainAfterAnotherOpen)
{
    FaultyServer server([](Wire& wire, const Asked& asked, size_t) {
        const std::string_view resource = std::string_view(Noise()).substr(asked.target == "/one" ? 0 : 5000, 4000);
        SendGood(wire, resource, asked);
    });
    CascadeHTTPStream stream;
    EXPECT_EQ(stream.GetSize() + stream.GetPosition(), 0u);
    EXPECT_FALSE(stream.SeekToPosition(0));
    ASSERT_TRUE(stream.Open(server.Url("/one").c_str()));
    EXPECT_EQ(Read(stream, 3000), Noise().substr(0, 3000));
    ASSERT_TRUE(stream.Open(server.Url("/two words").c_str()));
    EXPECT_EQ(stream.GetPosition(), 0u);
    EXPECT_EQ(Read(stream, 5000), Noise().substr(5000, 4000));
    EXPECT_EQ(server.Asks()[1].target, "/two%20words");
    // An upper-case scheme means the same, and what is already encoded is left alone.
    ASSERT_TRUE(stream.Open(("HTTP" + server.Url("/f\xC3\xBCnf%20es").substr(4)).c_str()));
    EXPECT_EQ(Read(stream, 5000), Noise().substr(5000, 4000));
    EXPECT_STRCASEEQ(server.Asks().back().target.c_str(), "/f%C3%BCnf%20es");
}

}    // namespace
