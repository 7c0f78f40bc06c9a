// The one control point of the program: its thread, what waits for its answers, who watches its servers.
//
// Errors:    without the module (it is opened on the thread, at the first order) every browse is answered
//            kTransactionUnavailable, and standard error says why once.
// Threads:   the user-interface thread. The thread of its own only opens the module and runs it; answers
//            come back through PostToUi.
// Ownership: made at the first use, ends with the program; the end waits for the thread, which a network
//            cannot hold up.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "host/upnp/ControlPoint.h"

namespace host {

class UpnpService {
public:
    static UpnpService& Get();

    using OnPage = std::function<void(BrowsePage)>;
    unsigned long Browse(BrowseOrder order, OnPage onPage);    // answers the transaction; its pages come later
    void Cancel(unsigned long transaction);    // answered at once, as an event of its own
    void Drop(unsigned long transaction);    // no page comes any more

    using OnServer = std::function<void(const ServerReport&)>;
    void Watch(void* key, OnServer onServer);    // told of the known servers, as events of their own, then of changes
    void Unwatch(void* key);

    ~UpnpService();
    UpnpService(const UpnpService&) = delete;
    UpnpService& operator=(const UpnpService&) = delete;

private:
    UpnpService() = default;
    void Order(std::function<void(ControlPoint&)> order);
    void Run();
    void RunModule(ControlPoint& point);
    void TakePage(BrowsePage page);
    void TakeServer(const ServerReport& report);
    void TellKnown(void* key, unsigned long watch);

    struct Watcher {
        unsigned long number;
        OnServer onServer;
        bool knowsAll = false;    // was told of the servers that were known
    };
    unsigned long m_nLast = 0;    // transaction or watch
    std::map<unsigned long, OnPage> m_Outstanding;
    std::map<void*, Watcher> m_Watchers;
    std::vector<ServerReport> m_Servers;    // present now, in the order of their appearance

    std::mutex m_Mutex;
    ControlPoint* m_pPoint = nullptr;    // guarded by m_Mutex; set while the module runs
    std::deque<std::function<void(ControlPoint&)>> m_Orders;    // guarded by m_Mutex; until it runs
    bool m_bQuit = false;    // guarded by m_Mutex
    bool m_bAbsent = false;    // guarded by m_Mutex; there is no module
    std::thread m_Thread;
};

}    // namespace host
