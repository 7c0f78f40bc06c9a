// Reads the answer to a Browse question (ContentDirectory:1, 2.7.4) while it arrives. The DIDL-Lite document in
// it, escaped, is all but the whole, a megabyte for 2,000 items: it is unwrapped and read piece by piece, so that
// hardly anything is left to do when the last one comes.
//
// Errors:    `read` is false when the answer is none; the objects before a break are good.
// Threads:   one at a time.
// Ownership: copies the rule; the objects are the caller's.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/upnp/control/DidlObjects.h"

namespace host {

struct BrowseEnvelope {
    bool read = false;
    unsigned long numberReturned = 0;
    unsigned long totalMatches = 0;
    int errorCode = 0;    // of a fault; 0: none
};

class BrowseReader {
public:
    BrowseReader(const AddressRule& rule, size_t most);    // no more objects than that are read
    ~BrowseReader();
    BrowseReader(const BrowseReader&) = delete;
    BrowseReader& operator=(const BrowseReader&) = delete;

    void Take(std::string_view piece);
    BrowseEnvelope FinishEnvelope();    // after the last piece
    DidlObjects FinishObjects();

private:
    struct State;
    std::unique_ptr<State> m_pState;
};

}    // namespace host
