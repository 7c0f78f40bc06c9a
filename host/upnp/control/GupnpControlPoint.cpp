// The control point on GUPnP's networks and discovery, run by one thread with a main context of its own.
#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include "host/upnp/ControlPoint.h"
#include "host/upnp/control/BrowseJob.h"
#include "host/upnp/control/ServerDirectory.h"

namespace host {
namespace {

constexpr unsigned kLookSeconds = 4;    // for a server that is asked before it was heard of

struct ReleaseContext {
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
};
struct ReleaseLoop {
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
};

// A browse under way: first its server is looked for, then it is asked.
struct Request {
    BrowseOrder order;
    GSource* waiting = nullptr;    // the end of the looking
    std::unique_ptr<BrowseJob> job;

    Request() = default;
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    ~Request() { StopWaiting(); }
    void StopWaiting()
    {
        if (waiting != nullptr) {
            g_source_destroy(waiting);
            g_source_unref(waiting);
            waiting = nullptr;
        }
    }
};

class GupnpControlPoint final : public ControlPoint {
public:
    void Run(const ControlPointEvents& events) override;
    void Quit() override
    {
        Post([this] { g_main_loop_quit(m_pLoop.get()); });
    }
    void Search() override
    {
        Post([this] { m_pServers->Search(); });
    }
    void SetWatched(bool watched) override
    {
        Post([this, watched] { m_pServers->SetWatched(watched); });
    }
    void Browse(BrowseOrder order) override
    {
        Post([this, order = std::move(order)] { Begin(order); });
    }
    void Cancel(unsigned long transaction) override
    {
        Post([this, transaction] { m_Requests.erase(transaction); });
    }

private:
    // Everything runs on the thread of Run, in the order of the calls.
    void Post(std::function<void()> work)
    {
        {
            const std::lock_guard lock(m_Mutex);
            m_Work.push_back(std::move(work));
        }
        GSource* const source = g_idle_source_new();
        g_source_set_priority(source, G_PRIORITY_DEFAULT);
        g_source_set_callback(
            source,
            [](gpointer self) {
                static_cast<GupnpControlPoint*>(self)->RunNext();
                return static_cast<gboolean>(G_SOURCE_REMOVE);
            },
            this, nullptr);
        g_source_attach(source, m_pContext.get());
        g_source_unref(source);
    }
    void RunNext()
    {
        std::function<void()> work;
        {
            const std::lock_guard lock(m_Mutex);
            work = std::move(m_Work.front());
            m_Work.pop_front();
        }
        work();
    }

    void Begin(const BrowseOrder& order);
    void Ask(Request& request, const BrowseTarget& target);
    void TakePage(BrowsePage page);
    void TakeServer(const ServerReport& report);
    static gboolean OnLookedEnough(gpointer request);

    const std::unique_ptr<GMainContext, ReleaseContext> m_pContext {g_main_context_new()};
    const std::unique_ptr<GMainLoop, ReleaseLoop> m_pLoop {g_main_loop_new(m_pContext.get(), FALSE)};

    std::mutex m_Mutex;
    std::deque<std::function<void()>> m_Work;    // guarded by m_Mutex; an idle source for each

    // The thread's own, while it runs.
    ControlPointEvents m_Events;
    Owned<SoupSession> m_pSession;
    std::unique_ptr<ServerDirectory> m_pServers;
    std::map<unsigned long, Request> m_Requests;
};

void GupnpControlPoint::Run(const ControlPointEvents& events)
{
    m_Events = events;
    g_main_context_push_thread_default(m_pContext.get());
    m_pSession = NewSession();
    m_pServers = std::make_unique<ServerDirectory>(m_pSession.get(), [this](const ServerReport& report) { TakeServer(report); });
    g_main_loop_run(m_pLoop.get());
    m_Requests.clear();
    m_pServers.reset();
    soup_session_abort(m_pSession.get());
    m_pSession.reset();
    // What was cancelled calls back once more, to be told so.
    while (g_main_context_iteration(m_pContext.get(), FALSE)) {
    }
    g_main_context_pop_thread_default(m_pContext.get());
}

void GupnpControlPoint::Begin(const BrowseOrder& order)
{
    Request& request = m_Requests[order.transaction];
    request.order = order;
    if (const BrowseTarget* const target = m_pServers->Find(order.uuid)) {
        Ask(request, *target);
        return;
    }
    m_pServers->Search();
    request.waiting = g_timeout_source_new_seconds(kLookSeconds);
    auto* const end = new std::pair(this, order.transaction);
    g_source_set_callback(request.waiting, OnLookedEnough, end, [](gpointer pair) { delete static_cast<std::pair<GupnpControlPoint*, unsigned long>*>(pair); });
    g_source_attach(request.waiting, m_pContext.get());
}

gboolean GupnpControlPoint::OnLookedEnough(gpointer end)
{
    const auto [self, transaction] = *static_cast<std::pair<GupnpControlPoint*, unsigned long>*>(end);
    self->TakePage({transaction, CascadeUPnP::kTransactionNoDevice, 0, true, {}});
    return G_SOURCE_REMOVE;
}

void GupnpControlPoint::Ask(Request& request, const BrowseTarget& target)
{
    request.StopWaiting();
    request.job = std::make_unique<BrowseJob>(m_pSession.get(), request.order, target, [this](BrowsePage page) { TakePage(std::move(page)); });
}

void GupnpControlPoint::TakePage(BrowsePage page)
{
    if (page.done) {
        m_Requests.erase(page.transaction);
    }
    m_Events.onPage(std::move(page));
}

void GupnpControlPoint::TakeServer(const ServerReport& report)
{
    m_Events.onServer(report);
    if (!report.present) {
        return;
    }
    for (auto& [transaction, request] : m_Requests) {
        if (request.job == nullptr && ServerDirectory::PlainUuid(request.order.uuid) == ServerDirectory::PlainUuid(report.uuid)) {
            if (const BrowseTarget* const target = m_pServers->Find(report.uuid)) {
                Ask(request, *target);
            }
        }
    }
}

}    // namespace
}    // namespace host

host::ControlPoint* NuvidMakeControlPoint()
{
    return new host::GupnpControlPoint;
}
