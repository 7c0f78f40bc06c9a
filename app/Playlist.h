// Playlist files: what their lines mean, how they are named, and their way to and from the disk.
//
// Units:     lines of at most 511 bytes; a longer one counts as several.
// Errors:    false, and nothing is changed or written.
// Threads:   the user-interface thread; Read and Write block on the disk.
// Ownership: values.
#pragma once

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CascadeString.h"

class Playlist {
public:
    static constexpr const char* kExtension = "Nuvidlist";

    static bool IsPlaylist(const CascadeString& path);    // by its extension, in either case

    // The paths and markers of a playlist's text; relative ones are put behind `folder` and "/".
    static std::vector<CascadeString> Parse(std::string_view text, const CascadeString& folder);
    // Paths are written as they are, but never relative to the folder that the program was started in.
    static std::string Format(const std::vector<CascadeString>& paths);

    // Where the playlist of a queue is saved: beside its first item, named by the time. Empty when that
    // item has no folder.
    static CascadeString NameFor(const CascadeString& firstPath, const std::tm& localTime);

    // A path that means the same from any folder; addresses and markers are that already.
    static CascadeString Absolute(const CascadeString& path);

    static bool Read(const char* path, std::vector<CascadeString>& paths);
    static bool Write(const char* path, const std::vector<CascadeString>& paths);
};
