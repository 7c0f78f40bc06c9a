#include "sources/FileSearch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

namespace {

struct Split {
    const char* name;
    const char* path;
    const char* base;
    const char* ext;
};

TEST(FileSearch, SplitsNames)
{
    const Split kSplits[] = {
        {"/v/VTS_01_1.VOB", "/v", "VTS_01", "VOB"},
        {"/v/clip12.mpg", "/v", "clip", "mpg"},
        {"/v/show.3.mpg", "/v", "show", "mpg"},
        {"/v/movie.mpg", "/v", "movie", "mpg"},
        {"/v/movie.001", "/v", "movie", "001"},
        {"/v/movie", "/v", "movie", ""},
        {"/v/1.mpg", "/v", "1", "mpg"},
        {"/v/12.mpg", "/v", "12", "mpg"},
        {"/v/a1.mpg", "/v", "a1", "mpg"},
        {"/v/ab_.mpg", "/v", "ab", "mpg"},
        {"/v/_7.mpg", "/v", "_7", "mpg"},
        {"/movie2.mpg", "", "movie", "mpg"},
        {"/v/.mpg", "/v", "", "mpg"},
        {"http://server/media/a1.mpg", "http://server/media", "a1.mpg", ""},
        {"HTTP://server/a1.mpg", "HTTP://server", "a1.mpg", ""},
        {"/v/disc.iso~VTS_01", "/v", "disc.iso~VTS_01", ""},
        {"disc~1", "", "disc~1", ""},
    };
    for (const Split& split : kSplits) {
        FileSearch search;
        search.Create(split.name);
        EXPECT_STREQ(search.GetName(), split.name);
        EXPECT_STREQ(search.GetPath(), split.path) << split.name;
        EXPECT_STREQ(search.GetBase(), split.base) << split.name;
        EXPECT_STREQ(search.GetExt(), split.ext) << split.name;
    }
    FileSearch relative;
    relative.Create("clip1.mpg");
    EXPECT_EQ(relative.GetPath().Str(), std::filesystem::current_path().string());
}

int Select(const char* base, const char* ext, bool menu, const std::string& name)
{
    FileSearch::g_BaseFileSearch = base;
    FileSearch::g_BaseFileSearchLen = base == nullptr ? 0 : std::strlen(base);
    FileSearch::g_BaseExtSearch = ext;
    FileSearch::g_BaseExtSearchLen = std::strlen(ext);
    FileSearch::g_IncludeMenuVOB = menu;
    dirent entry {};
    name.copy(entry.d_name, sizeof entry.d_name - 1);
    return FileSearch::FileSearchSelect(&entry);
}

TEST(FileSearch, DecidesMembership)
{
    struct Case {
        const char* base;
        const char* ext;
        const char* name;
        int accepted;
    };
    const Case kCases[] = {
        {"VTS_01", "VOB", "VTS_01_1.VOB", 1},
        {"VTS_01", "VOB", "VTS_02_1.VOB", 0},
        {"VTS_01", "VOB", "VTS_01_1.vob", 0},
        {"VTS_01", "VOB", "vts_01_1.VOB", 0},
        {"VTS_01", "VOB", "VTS_01_0.VOB", 0},
        {"VTS_01", "vob", "VTS_01_0.vob", 0},
        {"clip", "mpg", "clip.mpg", 1},
        {"clip", "mpg", "clip7.mpg", 1},
        {"clip", "mpg", "clip.7.mpg", 1},
        {"clip", "mpg", "clip_.mpg", 1},
        {"clip", "mpg", "clipA.mpg", 0},
        {"clip", "mpg", "clip_7b.mpg", 0},
        {"clip", "mpg", "clip__7.mpg", 0},
        {"clip", "mpg", "clipmpg", 0},
        {"clip", "mpg", "cl", 0},
        {"1", "mpg", "1_5.mpg", 1},
        {"1", "mpg", "1xmpg", 1},
        {"movie", "", "movie", 0},
        {"movie", "", "movie1", 1},
        {"aa", "aa", "aaa", 0},
        {"", "mpg", "1.mpg", 0},
        {nullptr, "mpg", "1.mpg", 0},
        {"x", "", "", 0},
    };
    for (const Case& c : kCases) {
        EXPECT_EQ(Select(c.base, c.ext, false, c.name), c.accepted) << (c.base == nullptr ? "(none)" : c.base) << " " << c.ext << " " << c.name;
    }
    EXPECT_EQ(Select("VTS_01", "VOB", true, "VTS_01_0.VOB"), 1);
    EXPECT_EQ(Select("clip", "mpg", false, std::string(255, '7')), 0);
    EXPECT_EQ(Select("clip", "mpg", false, "clip" + std::string(247, '7') + ".mpg"), 1);
}

}    // namespace
