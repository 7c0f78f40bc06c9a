// What a folder says about its own listing, in its file "folder.cfg". It holds for that folder alone.
//
// Errors:    lines that are not known are passed over; a later line overrides an earlier one of its kind.
// Threads:   a value; Read blocks on the disk.
// Ownership: a value.
#pragma once

#include <string_view>

#include "platform/CascadeString.h"

struct FolderConfig {
    static constexpr const char* kFileName = "folder.cfg";
    static constexpr int kNotSaid = -1;

    CascadeString password;    // empty: none
    CascadeString pattern;    // shell patterns split at ";", lower case; empty: any name
    int iconMode = kNotSaid;    // EFileBrowser::IconMode
    int filter = kNotSaid;    // EFileBrowser::FilterType

    static FolderConfig Parse(std::string_view text);    // as TextBytes::Decode answers it
    static FolderConfig Read(const CascadeString& folder);    // with a trailing "/"; without a file nothing is said
};
