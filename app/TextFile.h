// Reads a small text file whole.
//
// Units:   bytes.
// Errors:  false when it cannot be opened, is no ordinary file, or is larger than allowed.
// Threads: any; blocks on the disk.
#pragma once

#include <cstddef>
#include <string>

class TextFile {
public:
    static bool Read(const char* path, size_t largest, std::string& text);
};
