// The DVD folder and images that the fixture scripts make, and bytes of streams.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/CascadeStream.h"
#include "tests/support/TestBytes.h"

// The next `count` bytes of a stream, fewer at its end.
inline std::string Read(CascadeStream& stream, size_t count)
{
    std::string bytes(count, '\xAA');
    bytes.resize(stream.ReadBytes(count, bytes.data()));
    return bytes;
}

// Everything from the stream's position to its end, read in pieces of an odd size.
inline std::string ReadRest(CascadeStream& stream, size_t piece = 100003)
{
    std::string all;
    for (std::string bytes = Read(stream, piece); !bytes.empty(); bytes = Read(stream, piece)) {
        all += bytes;
    }
    return all;
}

// A file of the copied folder.
inline std::string InFolder(const std::string& name)
{
    return NUVID_FIXTURES "/dvd/VIDEO_TS/" + name;
}

// The title files of one set, one behind the other.
inline std::string TitleBytes(const std::string& set)
{
    std::string all;
    for (int part = 1; std::filesystem::exists(InFolder(set + "_" + std::to_string(part) + ".VOB")); ++part) {
        all += FileBytes(InFolder(set + "_" + std::to_string(part) + ".VOB"));
    }
    return all;
}

class DVDFixtures : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(std::system("'" NUVID_SOURCE "/tests/fixtures/make-images.sh' '" NUVID_FIXTURES "'"), 0); }

    static std::vector<std::string> Images()
    {
        const std::string folder = NUVID_FIXTURES "/images/";
        return {
            NUVID_FIXTURES "/dvd.iso", folder + "plain.iso", folder + "rock.iso", folder + "lower.iso", folder + "flat.iso", folder + "apart.iso"};
    }
};
