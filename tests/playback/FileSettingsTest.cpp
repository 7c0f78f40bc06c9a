#include "playback/FileSettings.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>

#include "tests/support/TemporaryFolder.h"

namespace {

std::string Marks(const BookmarkList& list)
{
    std::string text;
    list.Save('b', text);
    return text;
}

TEST(BookmarkListTest, KeepsOrderAndWraps)
{
    BookmarkList list;
    tagBookmark key {"b.mpg", 100};
    testing::internal::CaptureStdout();
    EXPECT_EQ(list.GetNext(&key), -1);
    EXPECT_EQ(list.GetPrev(&key, true), -1);
    EXPECT_FALSE(list.ClearBookmark(0));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "No bookmarks\nNo bookmarks\nClearBookmark: Internal error!\n");

    list.AddBookmark("b.mpg", 100);
    list.AddBookmark("b.mpg", -5);
    list.AddBookmark("a.mpg", 900);
    list.AddBookmark(nullptr, 1);
    list.AddBookmark("b.mpg", 100);
    EXPECT_EQ(Marks(list), "b @1\nb a.mpg@900\nb b.mpg@-5\nb b.mpg@100\nb b.mpg@100\n");
    EXPECT_EQ(list.LocateBookmark(&key), 5);
    EXPECT_EQ(list.GetNext(&key), 0);
    EXPECT_EQ(list.GetPrev(&key, false), 4);
    key = {"a.mpg", 900};
    EXPECT_EQ(list.GetNext(&key), 2);
    EXPECT_EQ(list.GetPrev(&key, false), 1);
    EXPECT_EQ(list.GetPrev(&key, true), 0);
    key = {"", 0};
    EXPECT_EQ(list.GetPrev(&key, false), 4);
    EXPECT_EQ(list.GetPrev(&key, true), 3);
    EXPECT_FALSE(list.ClearBookmark(5));
    EXPECT_TRUE(list.ClearBookmark(0));
    EXPECT_EQ(list.Get(0)->position, 900);
    EXPECT_EQ(list.Get(-1), nullptr);
}

constexpr const char* kText = "#Nuvid File. Do not modify\n"
                              "c clip1.mpg@0\nc clip1.mpg@4096\n"
                              "b cl@p.mpg@2048\nb clip1.mpg@-9\n"
                              "z 3\nr clip2.mpg@123456789012\nv 2\na 1\n";

TEST(FileSettingsTest, ReadsWhatItWrote)
{
    const FileSettings settings = ParseFileSettings(kText);
    EXPECT_EQ(settings.chapters.Size(), 2);
    EXPECT_STREQ(settings.bookmarks.Get(0)->name, "cl@p.mpg");
    EXPECT_EQ(settings.state.zoomMode, 3);
    EXPECT_EQ(settings.state.resume->position, 123456789012);
    EXPECT_EQ(FormatFileSettings(settings.chapters, settings.bookmarks, settings.state), kText);
    EXPECT_EQ(FormatFileSettings({}, {}, {}), "#Nuvid File. Do not modify\nz 0\n");

    FileState state;
    state.resume = tagBookmark {"two\nlines.mpg", 5};
    BookmarkList marks;
    marks.AddBookmark("r\nr x@5", 5);    // no line can hold these
    EXPECT_EQ(FormatFileSettings(marks, marks, state), "#Nuvid File. Do not modify\nz 0\n");
}

TEST(FileSettingsTest, IgnoresWhatItDoesNotUnderstand)
{
    EXPECT_EQ(ParseFileSettings("#Nuvid File, mine\nz 3\n").state.zoomMode, 0);
    EXPECT_FALSE(IsFileSettings("#Nuvid File"));
    EXPECT_TRUE(IsFileSettings("#Nuvid File."));
    const std::string hostile = "#Nuvid File. whatever\r\n\r\n\n@\nb\nb@\nb @\nc noposition\nq 5\nz\nz \na -1\r\nv 99999999999999999999\n"
        + ("b " + std::string(400, 'n') + "@7\n") + "r a@b@\r\nc x@-99999999999999999999\nc y@ +12 3\n" + std::string("b nul\0@5\n", 9)
        + "z -99999999999999999999";
    const FileSettings settings = ParseFileSettings(hostile);
    EXPECT_EQ(settings.state.zoomMode, INT_MIN);
    EXPECT_EQ(settings.state.videoRes, INT_MAX);
    EXPECT_EQ(settings.state.audioStream, -1);
    EXPECT_STREQ(settings.state.resume->name, "a@b");
    EXPECT_EQ(settings.state.resume->position, 0);
    EXPECT_EQ(Marks(settings.bookmarks), "b @0\nb @0\n");    // "b@" and "b @"
    EXPECT_EQ(settings.chapters.Get(0)->position, LLONG_MIN);
    EXPECT_EQ(settings.chapters.Get(1)->position, 12);
}

TEST(FileSettingsTest, OrderAndNumberOfMarksCostNoTime)
{
    std::string text = "#Nuvid File.\n";
    for (int i = 300000; i > 0; --i) {
        text += "b a@" + std::to_string(i / 2) + "\nc b@1\n";
    }
    const FileSettings settings = ParseFileSettings(text);
    ASSERT_EQ(settings.bookmarks.Size(), 300000);
    EXPECT_EQ(settings.bookmarks.Get(0)->position, 0);
    const tagBookmark key {"a", 7};
    EXPECT_EQ(settings.bookmarks.LocateBookmark(&key), 15);    // 1 of zero, two of each up to 7

    // A text of that size is ours; one that no recording can have is somebody else's, and keeps its bytes.
    const TemporaryFolder folder;
    EXPECT_EQ(ReadSettingsText(folder.Write("a.nuvid", text).c_str()), text);
    std::filesystem::resize_file(folder / "a.nuvid", 33 << 20);
    EXPECT_EQ(ReadSettingsText((folder / "a.nuvid").c_str()), "");
}

}    // namespace
