// Bytes of files, and bytes that tell where they are.
#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

inline std::string FileBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// No two places of the same test look alike: a read from a wrong place cannot look right.
inline std::string Pattern(size_t size, unsigned seed)
{
    std::string bytes(size, '\0');
    uint32_t state = seed * 2654435761U + 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}
