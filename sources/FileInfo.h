// One playable item: what the browser hands out, the play queue holds and playback opens.
//
// Units:     duration is seconds, size is bytes.
// Ownership: a value.
#pragma once

#include <cstdint>

#include "platform/CascadeString.h"

struct FileInfo {
    CascadeString path;        // file, folder, DVD image location or "http://" resource
    CascadeString title;       // shown instead of the path when not empty
    CascadeString location;    // where a later browse starts to come back here
    uint32_t reserved = 0;
    uint32_t duration = 0;
    uint64_t size = 0;

    bool IsEmpty() const { return path.IsEmpty() && title.IsEmpty() && location.IsEmpty() && reserved == 0 && duration == 0 && size == 0; }
};
