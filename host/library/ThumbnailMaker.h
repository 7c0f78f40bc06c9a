// From a path to the picture file that shows it: looks into the cache, makes the picture when there is none, and
// remembers what has none.
//
// Errors:  an empty answer: there is no picture.
// Threads: one at a time; blocks on the disk and on decoding.
#pragma once

#include <functional>
#include <string>

#include "host/library/ThumbnailCache.h"

namespace host {

struct Thumbnail {
    std::string picture;    // path; empty: none
    int seconds = 0;    // that the recording lasts; 0: not known
};

class ThumbnailMaker {
public:
    // `cacheFolder` as for ThumbnailCache.
    explicit ThumbnailMaker(std::string cacheFolder);

    // A recording, a DVD folder or a DVD image, also one with its title set behind a "~". `stop` is asked often;
    // a work that it ends answers nothing and leaves nothing behind.
    Thumbnail Make(const std::string& path, const std::function<bool()>& stop) const;

private:
    ThumbnailCache m_Cache;
};

// The film's first file in a folder that is a DVD: of the title set with the most bytes. Empty: no DVD.
std::string MainVideoOfDvd(const std::string& folder);

}    // namespace host
