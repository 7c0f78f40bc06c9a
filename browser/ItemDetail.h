// What the detail pane tells about an item beyond the list itself, read from the disk.
//
// Units:     seconds; points in time since 1970, UTC.
// Errors:    what cannot be read stays empty or 0.
// Threads:   any; Read blocks on the disk.
// Ownership: values.
#pragma once

#include <cstdint>

#include "browser/EInfoFile.h"
#include "platform/CascadeString.h"

struct ItemDetail {
    CascadeString path;    // as asked for
    EInfoFile info;
    int64_t changedAt = 0;    // 0: unknown
    bool isDVD = false;    // a folder with a DVD in it, or the image of one
    int32_t duration = 0;    // of a DVD's main title, seconds
    CascadeString picture;    // JPEG; empty: none

    // `picture`: what the folder's listing says stands beside a recording.
    static ItemDetail Read(const CascadeString& path, bool isFolder, const CascadeString& picture);
};
