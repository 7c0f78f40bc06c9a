// Reading an HTTP stream in tests.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/CascadeHTTPStream.h"

inline std::string Read(CascadeHTTPStream& stream, size_t length)
{
    std::string buffer(length, '\0');
    buffer.resize(stream.ReadBytes(length, buffer.data()));
    return buffer;
}

inline std::string ReadAt(CascadeHTTPStream& stream, uint64_t position, size_t length)
{
    return stream.SeekToPosition(position) ? Read(stream, length) : "refused";
}

// Reads on in pieces like a decoder's buffers until a short one.
inline std::string ReadAll(CascadeHTTPStream& stream, size_t piece = 192512)
{
    std::string all;
    std::string buffer(piece, '\0');
    unsigned long count = 0;
    do {
        count = stream.ReadBytes(piece, buffer.data());
        all.append(buffer, 0, count);
    } while (count == piece);
    return all;
}

// Compared by hand: a difference of megabytes is no help in a log.
inline void ExpectSame(std::string_view got, std::string_view wanted)
{
    ASSERT_EQ(got.size(), wanted.size());
    const auto at = std::mismatch(got.begin(), got.end(), wanted.begin());
    EXPECT_EQ(at.first - got.begin(), static_cast<std::ptrdiff_t>(wanted.size())) << "first difference";
}
