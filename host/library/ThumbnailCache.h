// The user's thumbnail cache, shared with other programs (freedesktop.org Thumbnail Managing Standard 0.9.0).
//
// Units:     times are seconds since 1970, as the file system states them for the recording.
// Errors:    a cache that cannot be read has nothing, one that cannot be written keeps nothing; neither is told.
// Threads:   one at a time; blocks on the disk.
// Ownership: the files are the user's: readable by nobody else, replaced whole or not at all.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace host {

class ThumbnailCache {
public:
    // A recording (or folder) and the state of it that a picture shows.
    struct Subject {
        std::string uri;
        int64_t changed = 0;
    };

    // `folder` is "$XDG_CACHE_HOME/thumbnails", made with the first picture.
    explicit ThumbnailCache(std::string folder);

    // The URI by which every program of this user knows the file. Empty: `path` is not absolute.
    static std::string UriOf(const std::string& path);

    // The path of a valid picture, by whichever program, of 256 pixels or more. Empty: none.
    std::string Find(const Subject& subject) const;
    // Stores it and answers its path. Empty: could not be written. `seconds`: how long the recording lasts, 0: not known.
    std::string Keep(const Subject& subject, const std::string& png, int seconds = 0) const;
    // What a picture that Find answered says of that; none: nothing.
    static std::optional<int> LengthIn(const std::string& picture);

    // Whether nothing could be made of the file as it is now, and the note that it is so. `png`: any small picture.
    bool HasFailed(const Subject& subject) const;
    void KeepFailure(const Subject& subject, const std::string& png) const;

private:
    std::string m_Folder;
};

}    // namespace host
