// What the browser knows of an item beside what the list shows, and how a folder is shown.
//
// Units:     sizes are bytes.
// Threads:   values.
#pragma once

#include <cstdint>

#include "platform/CascadeString.h"

enum class BrowserItemKind : uint8_t { kLeave, kParent, kFolder, kFile, kDevice, kContainer, kMedia, kText };

struct BrowserItemFacts {
    uint64_t totalSize = 0;    // of a recording's files together
    uint32_t parts = 1;
    BrowserItemKind kind = BrowserItemKind::kText;
};

// Kept for the folder that is listed, so that one which does not answer can be left for it.
struct BrowserPlace {
    CascadeString previous;    // the folder shown before it
    CascadeString pattern;
    int filter = 0;    // EFileBrowser::FilterType
    int iconMode = 0;    // EFileBrowser::IconMode
};
