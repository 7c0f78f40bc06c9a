// The page's own files, built into the module: nothing else is ever served.
//
// Threads:   constants.
// Ownership: static.
#pragma once

#include <cstddef>
#include <string_view>

namespace host {

struct PageFile {
    std::string_view path;    // "/remote.css"
    const char* type;
    const unsigned char* bytes;
    size_t size;
};

// Defined in a source that the build writes from the files of host/remote/page.
extern const PageFile kPageFiles[];
extern const size_t kPageFileCount;

// Null: there is no such file. "/" is the page itself.
inline const PageFile* FindPageFile(std::string_view path)
{
    const std::string_view wanted = path == "/" ? std::string_view("/index.html") : path;
    for (size_t i = 0; i < kPageFileCount; ++i) {
        if (kPageFiles[i].path == wanted) {
            return &kPageFiles[i];
        }
    }
    return nullptr;
}

}    // namespace host
