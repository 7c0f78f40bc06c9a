#include "widgets/EUtils.h"

#include <chrono>
#include <cstdio>
#include <filesystem>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

namespace {

// The test font at size 10 is six pixels a character and twelve high.
const CascadeFont kFont("system", 10);

class EUtilsTest : public PlatformTest { };

TEST_F(EUtilsTest, SizesAreWrittenInTheLargestUnitThatFitsOrInKilobytes)
{
    const struct {
        unsigned long long size;
        const char* text;
        const char* kilobytes;
    } cases[] = {{0, "0 bytes", "1 KB"}, {1023, "1023 bytes", "1 KB"}, {1024, "1 MB", "1 KB"}, {1023999, "999 MB", "999 KB"},
        {1024000, "1000 MB", "1,000 KB"}, {1048575, "1023 MB", "1,023 KB"}, {1048576, "1 MB", "1,024 KB"}, {1073741823, "1023 MB", "1,048,575 KB"},
        {1073741824, "1.00 GB", "1,048,576 KB"}, {5000000000, "4.66 GB", "4,882,812 KB"}, {1ULL << 42, "0.00 GB", "4,294,967,296 KB"}};
    for (const auto& c : cases) {
        EXPECT_EQ(EUtils::GetFileSizeString(c.size).Str(), c.text) << c.size;
        EXPECT_EQ(EUtils::GetFileSizeKBString(c.size).Str(), c.kilobytes) << c.size;
    }
    EXPECT_EQ(EUtils::GetFileSizeKBString(~0ULL).Str(), "18,014,398,509,481,983 KB");
}

TEST_F(EUtilsTest, AFilesSizeIsReadAndAMissingOneHasNone)
{
    const TemporaryFolder folder;
    const std::string path = folder.Write("large", "");
    std::filesystem::resize_file(path, 5ULL << 30);    // sparse
    EXPECT_EQ(EUtils::GetFileSize(path.c_str()), 5ULL << 30);
    EXPECT_EQ(EUtils::GetFileSize((folder / "missing").c_str()), 0U);
    EXPECT_EQ(EUtils::GetFileSize(nullptr), 0U);
}

TEST_F(EUtilsTest, ATextIsTrimmedOnlyAsFarAsNeeded)
{
    EXPECT_EQ(EUtils::TrimStringToWidth("0123456789", 60, kFont, false).Str(), "0123456789");
    EXPECT_EQ(EUtils::TrimStringToWidth("0123456789", 59, kFont, false).Str(), "012345...");
    EXPECT_EQ(EUtils::TrimStringToWidth("0123456789", 59, kFont, true).Str(), "...456789");
    EXPECT_EQ(EUtils::TrimStringToWidth("0123456789", 5, kFont, true).Str(), "...");
    EXPECT_EQ(EUtils::TrimStringToWidth("", 0, kFont, false).Str(), "");
    EXPECT_EQ(EUtils::TrimStringToWidth(nullptr, 0, kFont, false).Str(), "");
}

TEST_F(EUtilsTest, TheMiddleGivesWayToTheEnd)
{
    const std::string name = "abcdefghijklmnopqrstuvwxyz";    // 156 pixels
    EXPECT_EQ(EUtils::TrimStringInMiddle(name.c_str(), 157, kFont).Str(), name);
    EXPECT_EQ(EUtils::TrimStringInMiddle(name.c_str(), 156, kFont).Str(), "abcdefghij...opqrstuvwxyz");
    EXPECT_EQ(EUtils::TrimStringInMiddle(name.c_str(), 1, kFont).Str(), "...opqrstuvwxyz");
    EXPECT_EQ(EUtils::TrimStringInMiddle("fifteen letters", 1, kFont).Str(), "fifteen letters");
    EXPECT_EQ(EUtils::TrimStringInMiddle("sixteen letters!", 1, kFont).Str(), "...een letters!");
}

TEST_F(EUtilsTest, NothingIsCutInsideACharacter)
{
    EXPECT_EQ(EUtils::TrimStringToWidth("äöüÄÖÜ€€€€", 59, kFont, false).Str(), "äöüÄÖÜ...");
    EXPECT_EQ(EUtils::TrimStringToWidth("äöüÄÖÜ€€€😀", 59, kFont, true).Str(), "...ÖÜ€€€😀");
    EXPECT_EQ(EUtils::TrimStringInMiddle("日本語日本語日本語日本語日本語日本語", 96, kFont).Str(), "...日本語日本語日本語日本語");
    CascadeString text("ÄÄÄÄÄÄÄÄÄÄÄÄ");
    EUtils::TrimWrappedText(text, kFont, {0, 0, 60, 13});
    EXPECT_EQ(text.Str(), "ÄÄÄÄÄÄÄ...");

    // Bytes that are no character at all are taken one by one.
    EXPECT_EQ(EUtils::CharacterOffsets("a\xE4\xC3\xA4\xE2\x82"), (std::vector<size_t> {0, 1, 2, 4, 5, 6}));
}

TEST_F(EUtilsTest, HugeNamesAreTrimmedInNoTime)
{
    const std::string name(65536, 'x');
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(EUtils::TrimStringToWidth(name.c_str(), 600, kFont, false).GetLength(), 100U);
    EXPECT_EQ(EUtils::TrimStringInMiddle(name.c_str(), 600, kFont).GetLength(), 99U);
    CascadeString text;
    for (int i = 0; i < 10000; ++i) {
        text += "words ";
    }
    EUtils::TrimWrappedText(text, kFont, {0, 0, 600, 39});
    EXPECT_LT(text.GetLength(), 310U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST_F(EUtilsTest, WrappedTextIsAsHighAsItsLines)
{
    const struct {
        const char* text;
        int width;
        int lines;
    } cases[] = {{"", 60, 1}, {"0123456789", 60, 1}, {"01234 56789", 66, 1}, {"01234 56789", 65, 2}, {"one\ntwo", 60, 2}, {"one\n\ntwo\n", 60, 4},
        {"toolongforaline", 60, 2}, {"a toolongforaline b", 60, 3}, {"a b", -5, 3}};
    for (const auto& c : cases) {
        EXPECT_EQ(EUtils::GetWrappedTextHeight(kFont, c.text, c.width), c.lines * 13) << c.text;
    }
}

TEST_F(EUtilsTest, WrappedTextLosesFiveCharactersAtATimeUntilItFits)
{
    CascadeString text("01234 56789 01234 56789");
    EUtils::TrimWrappedText(text, kFont, {0, 0, 66, 26});
    EXPECT_EQ(text.Str(), "01234 56789 01234 ...");    // the ellipsis needs room of its own
    EUtils::TrimWrappedText(text, kFont, {0, 0, 66, 13});
    EXPECT_EQ(text.Str(), "01234 ...");

    CascadeString fits("short");
    EUtils::TrimWrappedText(fits, kFont, {0, 0, 60, 13});
    EXPECT_EQ(fits.Str(), "short");
    EUtils::TrimWrappedText(fits, kFont, {0, 0, 60, 0});    // a box that nothing fits into
    EXPECT_EQ(fits.Str(), "...");
}

TEST_F(EUtilsTest, OccurrencesAreReplacedFromTheLeftWithoutOverlap)
{
    const struct {
        const char* text;
        const char* from;
        const char* to;
        const char* result;
    } cases[] = {{"aaa", "aa", "b", "ba"}, {"a\r\nb\r\n", "\r", "", "a\nb\n"}, {"abc", "b", "bb", "abbc"}, {"abc", "x", "y", "abc"},
        {"", "a", "b", ""}, {"abc", "b", "b", "abc"}, {"abc", "", "x", "abc"}, {nullptr, nullptr, nullptr, ""}};
    for (const auto& c : cases) {
        CascadeString out("old");
        EUtils::ReplaceString(c.text, c.from, c.to, out);
        EXPECT_EQ(out.Str(), c.result);
    }
    CascadeString large;
    EUtils::ReplaceString(std::string(70000, 'a').c_str(), "a", "bcd", large);
    EXPECT_EQ(large.GetLength(), 210000U);    // beyond sixteen bits

    CascadeString same("a-b");
    EUtils::ReplaceString(same, "-", "+", same);
    EXPECT_EQ(same.Str(), "a+b");
}

TEST_F(EUtilsTest, PatternsMatchAnywhere)
{
    EXPECT_TRUE(EUtils::RegexMatch("The Film.mpg", "film", false));
    EXPECT_FALSE(EUtils::RegexMatch("The Film.mpg", "film", true));
    EXPECT_TRUE(EUtils::RegexMatch("a1", "^a[0-9]+$", true));
    EXPECT_FALSE(EUtils::RegexMatch("a(", "(", true));    // does not compile
    EXPECT_EQ(EUtils::IndexOf("abcabc", "ca"), 2);
    EXPECT_EQ(EUtils::IndexOf("abc", "x"), -1);
    EXPECT_EQ(EUtils::IndexOf("abc", ""), 0);
    EXPECT_EQ(EUtils::IndexOf(nullptr, "x"), -1);
}

TEST_F(EUtilsTest, ABitmapComesFromTheFallbackOrStaysEmpty)
{
    const TemporaryFolder folder;
    const CascadeString good(folder.Write("good.png", "x"));
    const CascadeString broken(folder.Write("broken.png", "x"));
    TestPlatform::AddPicture(good.Str(), {7, 5});

    CascadeBitmap bitmap;
    EXPECT_TRUE(EUtils::LoadBitmapFromFile(bitmap, broken, good));
    EXPECT_EQ(bitmap.GetDims(), (CascadeDims {7, 5}));
    EXPECT_FALSE(EUtils::LoadBitmapFromFile(bitmap, broken, ""));
    EXPECT_TRUE(bitmap.IsEmpty());
    EXPECT_TRUE(EUtils::LoadBitmapFromFile(bitmap, good, broken));
    std::remove(good);
    EXPECT_FALSE(EUtils::LoadBitmapFromFile(bitmap, good, broken));    // known to the platform, but not there
}

TEST_F(EUtilsTest, PixelsReachTheBitmapThroughSharedMemory)
{
    CascadeBitmap target;
    ASSERT_TRUE(target.Create(100, 100));
    const unsigned char pixels[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};    // two by two, 24 bits
    EXPECT_TRUE(EUtils::BufferBlit(target, {10, 20}, pixels, {2, 2}, 24, {}));
    EXPECT_TRUE(EUtils::BufferBlit(target, {0, 0}, pixels, {2, 2}, 24, {1, 1, 1, 1}));
    const auto& drawings = TestPlatform::DrawingsOn(target);
    ASSERT_EQ(drawings.size(), 2U);
    EXPECT_EQ(drawings[0].rect, (CascadeRect {10, 20, 2, 2}));
    EXPECT_EQ(drawings[0].pixels, (std::vector<CascadeColor> {0x030201FF, 0x060504FF, 0x090807FF, 0x0C0B0AFF}));
    EXPECT_EQ(drawings[1].pixels, (std::vector<CascadeColor> {0x0C0B0AFF}));

    testing::internal::CaptureStdout();
    EXPECT_FALSE(EUtils::BufferBlit(target, {0, 0}, pixels, {0, 2}, 24, {}));
    EXPECT_FALSE(EUtils::BufferBlit(target, {0, 0}, pixels, {-2, -2}, 24, {}));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unable to open shared zone.\nUnable to open shared zone.\n");
}

}    // namespace
