// Finds out what choosing an item of the browser means: a DVD has a main title, perhaps several long ones, and a
// folder may want a password first.
//
// Units:     sizes are bytes.
// Errors:    what cannot be read is no DVD.
// Threads:   any; blocks on the disk.
// Ownership: values.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/CascadeString.h"
#include "sources/FileInfo.h"

struct PlayLookup {
    CascadeString item;    // what was chosen
    CascadeString password;    // of a DVD folder, which is played without being listed; empty: none
    CascadeString mainTitle;    // of a DVD folder the file to play; empty for everything else
    std::vector<FileInfo> titleSets;    // larger than the threshold, of a DVD folder or image

    // `threshold` 0: no title sets are gathered.
    static PlayLookup OfFolder(const CascadeString& folder, uint32_t threshold);
    static PlayLookup OfFile(const CascadeString& file, uint32_t threshold);
};
