// The question of ContentDirectory's Browse action (ContentDirectory:1, 2.7.4; UPnP Device Architecture 1.1,
// 3.2). Its answer: BrowseReader.h.
//
// Threads: pure.
#pragma once

#include <string>

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

inline constexpr int kUnsupportedSort = 709;    // errorCode: sort criteria that the server does not know

}    // namespace host
