// The SOAP messages of ContentDirectory's Browse action (ContentDirectory:1, 2.7.4; UPnP Device
// Architecture 1.1, 3.2).
//
// Errors:  `read` is false when the answer is not one.
// Threads: pure.
#pragma once

#include <string>
#include <string_view>

namespace host {

struct BrowseQuestion {
    std::string serviceType;
    std::string objectId;
    std::string filter;
    std::string sortCriteria;
    unsigned long start = 0;
    unsigned long count = 0;    // 0: all
};

std::string BrowseAction(const BrowseQuestion& question);    // the SOAPACTION header
std::string BrowseBody(const BrowseQuestion& question);

struct BrowseAnswer {
    bool read = false;
    std::string didl;
    unsigned long numberReturned = 0;
    unsigned long totalMatches = 0;
    int errorCode = 0;    // of a fault; 0: none
};

// The DIDL-Lite document is all but the whole of it, a megabyte for 2,000 items: it is unwrapped where it stands.
BrowseAnswer ReadBrowseAnswer(std::string document);

inline constexpr int kUnsupportedSort = 709;    // errorCode: sort criteria that the server does not know

}    // namespace host
