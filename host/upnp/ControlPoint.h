// What the control point module offers the program: nuvid-upnp.so is opened when media servers are first
// wanted, so that a plain player carries none of its libraries.
//
// Errors:    every browse is answered by pages, the last with `done`; a cancelled one by none.
// Threads:   Run blocks its thread until Quit; events are called on it. The other functions may be called
//            from any thread, before Run too.
// Ownership: the maker's caller deletes; after Run has returned nothing is called any more.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/CascadeUPnP.h"

namespace host {

using BrowseObjects = std::vector<std::unique_ptr<CascadeUPnP::AVObject>>;

struct BrowseOrder {
    unsigned long transaction = 0;
    std::string uuid;
    std::string objectId;
    std::string filter;
    std::string sortCriteria;
    unsigned long start = 0;
    unsigned long count = 0;    // 0: all
};

struct BrowsePage {
    unsigned long transaction = 0;
    CascadeUPnP::TransactionResult result = CascadeUPnP::kTransactionOK;
    unsigned long matchCount = 0;
    bool done = false;
    BrowseObjects objects;
};

struct ServerReport {
    std::string name;
    std::string uuid;    // without "uuid:"
    bool present = false;
};

struct ControlPointEvents {
    std::function<void(BrowsePage)> onPage;
    std::function<void(ServerReport)> onServer;
};

class ControlPoint {
public:
    virtual ~ControlPoint() = default;
    virtual void Run(const ControlPointEvents& events) = 0;
    virtual void Quit() = 0;
    virtual void Search() = 0;    // asks the networks anew, and looks whether the known servers still answer
    virtual void SetWatched(bool watched) = 0;    // somebody looks at the servers: notice the dead ones soon
    virtual void Browse(BrowseOrder order) = 0;
    virtual void Cancel(unsigned long transaction) = 0;
};

}    // namespace host

// The module's one symbol. Null: out of memory.
extern "C" host::ControlPoint* NuvidMakeControlPoint();
