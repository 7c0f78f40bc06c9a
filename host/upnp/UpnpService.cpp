#include "host/upnp/UpnpService.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <dlfcn.h>

#include "host/base/Module.h"
#include "host/base/UiQueue.h"

namespace host {
namespace {

constexpr const char* kModule = "nuvid-upnp.so";

std::unique_ptr<ControlPoint> MakeControlPoint()
{
    std::string error;
    void* const module = OpenModule(kModule, error);
    const auto make = module == nullptr ? nullptr : reinterpret_cast<decltype(&NuvidMakeControlPoint)>(dlsym(module, "NuvidMakeControlPoint"));
    if (make == nullptr) {
        std::fprintf(stderr, "Media servers are not looked for: %s\n", error.c_str());
        return nullptr;
    }
    return std::unique_ptr<ControlPoint>(make());
}

}    // namespace

UpnpService& UpnpService::Get()
{
    static UpnpService service;
    return service;
}

UpnpService::~UpnpService()
{
    {
        const std::lock_guard lock(m_Mutex);
        m_bQuit = true;
        if (m_pPoint != nullptr) {
            m_pPoint->Quit();
        }
    }
    if (m_Thread.joinable()) {
        m_Thread.join();
    }
}

void UpnpService::Order(std::function<void(ControlPoint&)> order)
{
    const std::lock_guard lock(m_Mutex);
    if (m_pPoint != nullptr) {
        order(*m_pPoint);
    } else if (!m_bAbsent) {
        m_Orders.push_back(std::move(order));
        if (!m_Thread.joinable()) {
            m_Thread = std::thread([this] { Run(); });
        }
    }
}

void UpnpService::Run()
{
    if (const std::unique_ptr<ControlPoint> point = MakeControlPoint()) {
        RunModule(*point);
        return;
    }
    {
        const std::lock_guard lock(m_Mutex);
        m_bAbsent = true;
        m_Orders.clear();
    }
    PostToUi([this] {
        while (!m_Outstanding.empty()) {
            TakePage({m_Outstanding.begin()->first, CascadeUPnP::kTransactionUnavailable, 0, true, {}});
        }
    });
}

void UpnpService::RunModule(ControlPoint& point)
{
    {
        const std::lock_guard lock(m_Mutex);
        if (m_bQuit) {
            return;
        }
        for (; !m_Orders.empty(); m_Orders.pop_front()) {
            m_Orders.front()(point);
        }
        m_pPoint = &point;
    }
    point.Run({[this](BrowsePage page) {
                   // Work of the queue is copied, pages are not.
                   PostToUi([this, shared = std::make_shared<BrowsePage>(std::move(page))] { TakePage(std::move(*shared)); });
               },
        [this](ServerReport report) { PostToUi([this, report = std::move(report)] { TakeServer(report); }); }});
    const std::lock_guard lock(m_Mutex);
    m_pPoint = nullptr;
}

unsigned long UpnpService::Browse(BrowseOrder order, OnPage onPage)
{
    order.transaction = ++m_nLast;
    m_Outstanding.emplace(m_nLast, std::move(onPage));
    bool absent = false;
    {
        const std::lock_guard lock(m_Mutex);
        absent = m_bAbsent;
    }
    if (absent) {
        PostToUi([this, transaction = m_nLast] { TakePage({transaction, CascadeUPnP::kTransactionUnavailable, 0, true, {}}); });
    }
    const unsigned long transaction = m_nLast;
    Order([order = std::move(order)](ControlPoint& point) { point.Browse(order); });
    return transaction;
}

void UpnpService::Cancel(unsigned long transaction)
{
    Order([transaction](ControlPoint& point) { point.Cancel(transaction); });
    PostToUi([this, transaction] { TakePage({transaction, CascadeUPnP::kTransactionCancelled, 0, true, {}}); });
}

void UpnpService::Drop(unsigned long transaction)
{
    if (m_Outstanding.erase(transaction) != 0) {
        Order([transaction](ControlPoint& point) { point.Cancel(transaction); });
    }
}

void UpnpService::TakePage(BrowsePage page)
{
    const auto found = m_Outstanding.find(page.transaction);
    if (found == m_Outstanding.end()) {
        return;
    }
    // The receiver may ask anew, or go, within the call.
    const OnPage onPage = found->second;
    if (page.done) {
        m_Outstanding.erase(found);
    }
    onPage(std::move(page));
}

void UpnpService::Watch(void* key, OnServer onServer)
{
    const unsigned long number = ++m_nLast;
    m_Watchers[key] = {number, std::move(onServer), false};
    PostToUi([this, key, number] { TellKnown(key, number); });
    Order([](ControlPoint& point) {
        point.Search();
        point.SetWatched(true);
    });
}

void UpnpService::Unwatch(void* key)
{
    if (m_Watchers.erase(key) != 0 && m_Watchers.empty()) {
        Order([](ControlPoint& point) { point.SetWatched(false); });
    }
}

void UpnpService::TellKnown(void* key, unsigned long watch)
{
    const auto watcher = m_Watchers.find(key);
    if (watcher == m_Watchers.end() || watcher->second.number != watch) {
        return;
    }
    watcher->second.knowsAll = true;
    const auto servers = m_Servers;
    for (const ServerReport& server : servers) {
        const auto found = m_Watchers.find(key);
        if (found == m_Watchers.end() || found->second.number != watch) {
            return;
        }
        const OnServer onServer = found->second.onServer;
        onServer(server);
    }
}

void UpnpService::TakeServer(const ServerReport& report)
{
    std::erase_if(m_Servers, [&](const ServerReport& server) { return server.uuid == report.uuid; });
    if (report.present) {
        m_Servers.push_back(report);
    }
    // A receiver may unwatch itself and others within its call.
    std::vector<std::pair<void*, unsigned long>> told;
    for (const auto& [key, watcher] : m_Watchers) {
        if (watcher.knowsAll) {
            told.emplace_back(key, watcher.number);
        }
    }
    for (const auto& [key, number] : told) {
        const auto found = m_Watchers.find(key);
        if (found != m_Watchers.end() && found->second.number == number) {
            const OnServer onServer = found->second.onServer;
            onServer(report);
        }
    }
}

}    // namespace host
