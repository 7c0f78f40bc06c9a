// What the links of a folder lead to, for a folder that must be listed also when the server behind one of them has
// gone: such a link is given up after a while, the others are asked all the same.
//
// Units:     bytes; milliseconds.
// Threads:   any but the user-interface thread: it waits for the disk, kPatienceMs at most for each dead link.
// Ownership: a question that hangs keeps its own copy of everything and is left behind.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "browser/BackgroundJob.h"

struct LinkTarget {
    enum State : uint8_t { kMissing, kFile, kFolder, kSilent };
    State state = kMissing;
    int64_t size = 0;
};

namespace LinkTargets {

inline constexpr int kPatienceMs = 700;
inline constexpr int kMostSilent = 4;    // after so many dead ones the rest is not asked, and counts as silent

// The targets of `names` in `folder`, which ends in "/"; in their order.
std::vector<LinkTarget> Ask(const std::string& folder, const std::vector<std::string>& names, const JobStop& stop);

}    // namespace LinkTargets
