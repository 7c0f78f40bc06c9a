// A browse job against servers that page, lie, stop and die.
#include <atomic>

#include <gtest/gtest.h>

#include "host/upnp/control/BrowseJob.h"
#include "tests/network/FaultyServer.h"

using namespace host;

namespace {

size_t NumberIn(const std::string& body, const std::string& name)
{
    const size_t at = body.find("<" + name + ">");
    return at == std::string::npos ? 0 : std::stoul(body.substr(at + name.size() + 2));
}

std::string Objects(size_t first, size_t count)
{
    std::string out;
    for (size_t i = first; i < first + count; ++i) {
        const std::string id = std::to_string(i);
        out += "&lt;item id=\"" + id + "\" parentID=\"0\">&lt;dc:title>Item " + id + "&lt;/dc:title>&lt;res protocolInfo=\"http-get:*:video/mpeg:*\">http://127.0.0.1/" + id
            + "&lt;/res>&lt;/item>";
    }
    return out;
}

std::string Envelope(const std::string& objects, size_t returned, size_t total)
{
    return "<s:Envelope xmlns:s=\"e\"><s:Body><u:BrowseResponse xmlns:u=\"u\"><Result>&lt;DIDL-Lite xmlns:dc=\"d\">" + objects + "&lt;/DIDL-Lite></Result><NumberReturned>"
        + std::to_string(returned) + "</NumberReturned><TotalMatches>" + std::to_string(total) + "</TotalMatches></u:BrowseResponse></s:Body></s:Envelope>";
}

// A container of `size` that gives at most `page` at once and says what `total` makes of a page's count.
struct Container {
    size_t size;
    size_t page;
    std::function<size_t(size_t count)> total;

    std::string Answer(const Asked& asked) const
    {
        const size_t start = std::min(NumberIn(asked.body, "StartingIndex"), size);
        const size_t wanted = NumberIn(asked.body, "RequestedCount");
        const size_t count = std::min({size - start, page, wanted == 0 ? size : wanted});
        return Envelope(Objects(start, count), count, total(count));
    }
};

void Send(Wire& wire, const std::string& body)
{
    wire.Send(WholeHead(body.size()) + body);
}

FaultyServer::Handler Serving(const Container& container)
{
    return [container](Wire& wire, const Asked& asked, size_t) { Send(wire, container.Answer(asked)); };
}

struct Result {
    CascadeUPnP::TransactionResult result = CascadeUPnP::kTransactionOK;
    BrowseObjects objects;
    size_t pages = 0;
    bool ended = false;
};

class BrowseJobTest : public testing::Test {
protected:
    BrowseJobTest() { g_main_context_push_thread_default(m_pContext); }
    ~BrowseJobTest() override
    {
        m_pSession.reset();
        while (g_main_context_iteration(m_pContext, FALSE)) {
        }
        g_main_context_pop_thread_default(m_pContext);
        g_main_context_unref(m_pContext);
    }

    std::unique_ptr<BrowseJob> Begin(const FaultyServer& server, Result& result, const BrowseLimits& limits = {}, unsigned long start = 0, unsigned long count = 0)
    {
        const BrowseOrder order {1, "uuid", "0", "*", "+upnp:class,+dc:title", start, count};
        return std::make_unique<BrowseJob>(m_pSession.get(), order, BrowseTarget {"urn:schemas-upnp-org:service:ContentDirectory:1", server.Url("/ctl"), AddressRule("127.0.0.1", 8)},
            [&result](BrowsePage page) {
                ASSERT_FALSE(result.ended);
                result.result = page.result;
                result.ended = page.done;
                ++result.pages;
                for (auto& object : page.objects) {
                    result.objects.push_back(std::move(object));
                }
            },
            limits);
    }
    Result Browse(const FaultyServer& server, const BrowseLimits& limits = {}, unsigned long start = 0, unsigned long count = 0)
    {
        Result result;
        const auto job = Begin(server, result, limits, start, count);
        Turn([&] { return result.ended; });
        for (size_t i = 0; i < result.objects.size(); ++i) {
            EXPECT_EQ(result.objects[i]->id, std::to_string(start + i).c_str());
        }
        return result;
    }
    void Turn(const std::function<bool()>& until)
    {
        const gint64 deadline = g_get_monotonic_time() + 20 * G_USEC_PER_SEC;
        while (!until() && g_get_monotonic_time() < deadline) {
            g_main_context_iteration(m_pContext, FALSE);
            g_usleep(200);
        }
        EXPECT_TRUE(until());
    }

    GMainContext* const m_pContext = g_main_context_new();
    Owned<SoupSession> m_pSession {NewSession()};
};

}    // namespace

TEST_F(BrowseJobTest, PagesToTheEndWhateverTheTotalSays)
{
    const std::pair<const char*, std::function<size_t(size_t)>> totals[] = {
        {"true", [](size_t) { return 95; }},
        {"nothing", [](size_t) { return 0; }},
        {"the page", [](size_t count) { return count; }},
        {"too few", [](size_t) { return 50; }},
        {"too many", [](size_t) { return 5000; }},
    };
    for (const auto& [name, total] : totals) {
        FaultyServer server(Serving({95, 10, total}));
        const Result result = Browse(server);
        EXPECT_EQ(result.objects.size(), 95u) << name;
        EXPECT_EQ(result.result, CascadeUPnP::kTransactionOK) << name;
    }
    // Everything at once: one question, and one whether that was all.
    FaultyServer whole(Serving({95, 1000, [](size_t) { return 95; }}));
    EXPECT_EQ(Browse(whole).objects.size(), 95u);
    EXPECT_EQ(whole.Asks().size(), 2u);
    // A part: no more than that is asked for.
    FaultyServer part(Serving({95, 10, [](size_t) { return 95; }}));
    EXPECT_EQ(Browse(part, {}, 20, 25).objects.size(), 25u);
    FaultyServer empty(Serving({0, 10, [](size_t) { return 0; }}));
    EXPECT_TRUE(Browse(empty).objects.empty());
}

TEST_F(BrowseJobTest, IsNotLedRoundInCircles)
{
    // The same page again, wherever it is asked to begin.
    FaultyServer same([](Wire& wire, const Asked&, size_t) { Send(wire, Envelope(Objects(0, 10), 10, 1000)); });
    const Result result = Browse(same);
    EXPECT_EQ(result.objects.size(), 10u);
    EXPECT_LE(same.Asks().size(), 3u);
    // Counts that have nothing to do with what is sent.
    FaultyServer liar([](Wire& wire, const Asked& asked, size_t) {
        const size_t start = std::min<size_t>(NumberIn(asked.body, "StartingIndex"), 40);
        Send(wire, Envelope(Objects(start, std::min<size_t>(10, 40 - start)), 4000000000, 7));
    });
    EXPECT_EQ(Browse(liar).objects.size(), 40u);
    // More than is ever listed, without an end.
    FaultyServer endless(Serving({10000000, 5000, [](size_t) { return 0; }}));
    BrowseLimits limits;
    limits.mostObjects = 12000;
    const Result cut = Browse(endless, limits);
    EXPECT_EQ(cut.objects.size(), 12000u);
    EXPECT_EQ(cut.result, CascadeUPnP::kTransactionTooMany);
}

TEST_F(BrowseJobTest, AsksInPagesWhenEverythingIsTooLarge)
{
    BrowseLimits limits;
    limits.mostBytes = 40000;
    limits.page = 100;
    FaultyServer server(Serving({1000, 1000, [](size_t) { return 1000; }}));
    const Result result = Browse(server, limits);
    EXPECT_EQ(result.objects.size(), 1000u);
    EXPECT_EQ(result.result, CascadeUPnP::kTransactionOK);
    EXPECT_GT(NumberIn(server.Asks().at(1).body, "StartingIndex"), 0u);    // not from the begin again
    // One that cannot help it, with and without saying so before.
    for (const bool says : {true, false}) {
        FaultyServer huge([says](Wire& wire, const Asked&, size_t) {
            wire.Send(says ? "HTTP/1.1 200 OK\r\nContent-Length: 4000000000\r\n\r\n" : "HTTP/1.1 200 OK\r\n\r\n");
            while (wire.Send(std::string(65536, ' '))) {
            }
        });
        EXPECT_EQ(Browse(huge, limits).result, CascadeUPnP::kTransactionBadAnswer);
    }
}

TEST_F(BrowseJobTest, KeepsWhatCameBeforeTheServerDied)
{
    const Container container {100, 10, [](size_t) { return 100; }};
    using Fault = std::function<void(Wire&)>;
    const std::pair<CascadeUPnP::TransactionResult, Fault> faults[] = {
        {CascadeUPnP::kTransactionConnectionLost, [](Wire& wire) { wire.Reset(); }},
        {CascadeUPnP::kTransactionConnectionLost, [](Wire& wire) { wire.Send("HTTP/1.1 200 OK\r\nContent-Length: 5000\r\n\r\n<s:Env"); }},
        {CascadeUPnP::kTransactionTimedOut, [](Wire& wire) { wire.HangUntilClosed(); }},
        {CascadeUPnP::kTransactionBadAnswer, [](Wire& wire) { Send(wire, "<html>Kaputt"); }},
        {CascadeUPnP::kTransactionRefused, [](Wire& wire) { wire.Send("HTTP/1.1 302 Found\r\nLocation: http://8.8.8.8/\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"); }},
        {CascadeUPnP::kTransactionRefused, [](Wire& wire) { wire.Send("HTTP/1.1 500 Oh\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"); }},
    };
    BrowseLimits limits;
    limits.answerSeconds = 1;
    for (const auto& [wanted, fault] : faults) {
        FaultyServer server([&](Wire& wire, const Asked& asked, size_t number) { number < 3 ? Send(wire, container.Answer(asked)) : fault(wire); });
        const Result result = Browse(server, limits);
        EXPECT_EQ(result.result, wanted);
        EXPECT_EQ(result.objects.size(), 30u);
    }
    // Broken inside the list, by the server or the network: what stands before the break is good.
    const std::string cut = Envelope(Objects(0, 5) + "&lt;item", 6, 6);
    const std::string begin = cut.substr(0, cut.find("&lt;/DIDL"));
    const std::pair<CascadeUPnP::TransactionResult, Fault> breaks[] = {
        {CascadeUPnP::kTransactionBadAnswer, [&](Wire& wire) { Send(wire, cut); }},
        {CascadeUPnP::kTransactionBadAnswer, [&](Wire& wire) { Send(wire, begin); }},
        {CascadeUPnP::kTransactionConnectionLost, [&](Wire& wire) { wire.Send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(cut.size()) + "\r\n\r\n" + begin); }},
    };
    for (const auto& [wanted, fault] : breaks) {
        FaultyServer server([&](Wire& wire, const Asked&, size_t) { fault(wire); });
        const Result result = Browse(server);
        EXPECT_EQ(result.result, wanted);
        EXPECT_EQ(result.objects.size(), 5u);
    }
}

TEST_F(BrowseJobTest, LeavesTheSortingToServersThatKnowNone)
{
    const std::string fault = "<s:Envelope><s:Body><s:Fault><detail><UPnPError><errorCode>709</errorCode></UPnPError></detail></s:Fault></s:Body></s:Envelope>";
    const Container container {15, 10, [](size_t) { return 15; }};
    FaultyServer server([&](Wire& wire, const Asked& asked, size_t) {
        if (asked.body.find("<SortCriteria></SortCriteria>") == std::string::npos) {
            wire.Send("HTTP/1.1 500 Internal Server Error\r\nContent-Length: " + std::to_string(fault.size()) + "\r\nConnection: close\r\n\r\n" + fault);
        } else {
            Send(wire, container.Answer(asked));
        }
    });
    const Result result = Browse(server);
    EXPECT_EQ(result.objects.size(), 15u);
    EXPECT_EQ(result.result, CascadeUPnP::kTransactionOK);
}

TEST_F(BrowseJobTest, IsOverWhenDestroyed)
{
    for (const bool answered : {false, true}) {
        FaultyServer server([answered](Wire& wire, const Asked&, size_t) {
            if (answered) {
                wire.Send("HTTP/1.1 200 OK\r\nContent-Length: 5000\r\n\r\n<s:Envelope>");
            }
            wire.HangUntilClosed();
        });
        Result result;
        auto job = Begin(server, result);
        Turn([&] { return !server.Asks().empty(); });
        job.reset();
        for (int i = 0; i < 50; ++i) {
            g_main_context_iteration(m_pContext, FALSE);
        }
        EXPECT_EQ(result.pages, 0u);
    }
}
