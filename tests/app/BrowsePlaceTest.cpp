// Where a browse begins.
#include "app/BrowsePlace.h"

#include <set>

#include <gtest/gtest.h>

namespace {

BrowsePlace Find(const char* location, const char* path, const std::set<std::string>& folders)
{
    StartOptions options;
    options.browseFolder = "/media/films";
    options.browseRoot = "/media";
    EFileBrowser::FileInfo chosen;
    chosen.location = location;
    chosen.path = path;
    return BrowsePlace::Find(options, chosen, [&folders](const CascadeString& folder) { return folders.count(folder.Str()) != 0; });
}

TEST(BrowsePlaceTest, TheViewerComesBackToWhereTheLastItemWasChosen)
{
    const std::set<std::string> all = {"/media", "/media/films", "/media/films/new", "/media/films/new/DVD"};
    const struct {
        const char* location;
        const char* path;
        std::set<std::string> folders;
        const char* start;
        const char* cursor;
        const char* message;
    } cases[] = {
        {"", "", all, "/media/films", "", nullptr},    // nothing was chosen yet
        {"/media/films/new/a.mpg", "/media/films/new/a.mpg", all, "/media/films/new", "/media/films/new/a.mpg", nullptr},
        // A title set inside a folder: on the folder.
        {"/media/films/new/DVD", "/media/films/new/DVD/VIDEO_TS/VTS_01_1.VOB", all, "/media/films/new", "/media/films/new/DVD", nullptr},
        // The way up, chosen for the next filter.
        {"/media/films/new/..", "/media/films/new/..", all, "/media/films/new", "/media/films/new/..", nullptr},
        {"", "/media/films/a.mpg", all, "/media", "/media/films/a.mpg", nullptr},    // from outside, without a place of its own
        {"/media/gone/a.mpg", "/media/gone/a.mpg", all, "/media", "/media/gone/a.mpg", "Invalid path directory!"},
        {"upnp:12^Films~4", "http://server/a.mpg", all, "upnp:12^Films~4", "http://server/a.mpg", nullptr},
        {"/gone/a.mpg", "http://server/a.mpg", all, "/media", "http://server/a.mpg", nullptr},
    };
    for (const auto& c : cases) {
        const BrowsePlace place = Find(c.location, c.path, c.folders);
        EXPECT_STREQ(place.root, "/media") << c.location;
        EXPECT_STREQ(place.start, c.start) << c.location;
        EXPECT_STREQ(place.cursor, c.cursor) << c.location;
        EXPECT_STREQ(place.message, c.message) << c.location;
    }
}

TEST(BrowsePlaceTest, AMissingRootIsReplacedByTheWholeDisk)
{
    BrowsePlace place = Find("", "", {"/media/films"});
    EXPECT_STREQ(place.root, "/");
    EXPECT_STREQ(place.start, "/media/films");
    EXPECT_STREQ(place.message, "Invalid root directory!");
    place = Find("", "", {});
    EXPECT_STREQ(place.start, "/");
    EXPECT_STREQ(place.message, "Invalid path directory!");
}

TEST(BrowsePlaceTest, TheFilterFollowsTheNumbersOfTheOptions)
{
    const int filters[] = {2, 1, 3, 0, 2};
    for (int mode = 0; mode < 5; ++mode) {
        EXPECT_EQ(BrowsePlace::FilterOfMode(mode), filters[mode]) << mode;
    }
    EXPECT_EQ(BrowsePlace::FilterOfMode(-1), 2);
}

TEST(BrowsePlaceTest, OnlyWhatIsKnownToBeNoFolderIsNone)
{
    EXPECT_TRUE(BrowsePlace::MayBeFolder("/"));
    EXPECT_FALSE(BrowsePlace::MayBeFolder("/no such folder"));
    EXPECT_FALSE(BrowsePlace::MayBeFolder("/proc/self/exe"));
}

}    // namespace
