// The objects of a DIDL-Lite document (ContentDirectory:1, 2.8.9) as the browser takes them, read as it arrives.
//
// Rules:   A resource outside the server's own network keeps its place but loses its URL. Servers that know
//          no MPEG types (application/octet-stream) or name one of its many others (video/mp2t) are
//          corrected: their protocol information says video/mpeg, in the first case only when the name in
//          the URL or the title ends like an MPEG file's.
// Units:   limits are bytes.
// Errors:  `whole` is false when the document breaks off or cannot be read to its end; the objects before
//          that are good. Objects that nobody could ask for (no identifier, or one beyond all measure) are
//          left out.
// Threads: one at a time. A reader copies the rule; the objects are the caller's.
#pragma once

#include <memory>
#include <string_view>

#include "host/upnp/ControlPoint.h"
#include "host/upnp/control/AddressRule.h"

namespace host {

inline constexpr size_t kLongestTitle = 1024;
inline constexpr size_t kLongestObjectId = 4096;
inline constexpr size_t kLongestResourceUrl = 8192;
inline constexpr size_t kMostResources = 64;    // of an object

struct DidlObjects {
    BrowseObjects objects;
    size_t count = 0;    // of objects in the document, those left out included
    bool whole = false;
};

class DidlReader {
public:
    DidlReader(const AddressRule& rule, size_t most);    // no more objects than that are read
    ~DidlReader();
    DidlReader(const DidlReader&) = delete;
    DidlReader& operator=(const DidlReader&) = delete;

    void Take(std::string_view piece);
    DidlObjects Finish();

private:
    struct State;
    std::unique_ptr<State> m_pState;
};

}    // namespace host
