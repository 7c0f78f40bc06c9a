#include "platform/CascadeString.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/CascadeArrays.h"

namespace {

int Sign(int value)
{
    return (value > 0) - (value < 0);
}

TEST(CascadeStringTest, ComparesBytesAndFoldsAsciiLettersOnly)
{
    struct Row {
        const char* a;
        const char* b;
        bool caseSensitive;
        size_t length;
        int expected;
    };
    constexpr size_t kWhole = CascadeString::kWhole;
    const Row rows[] = {
        {"VTS_01_1.VOB", "vts_01_1.vob", false, kWhole, 0},
        {"VTS_01_1.VOB", "vts_01_1.vob", true, kWhole, -1},
        {"VTS_01_1.VOB", "vts", false, 3, 0},
        {"VTS_01_1.VOB", "vts", false, 4, 1},
        {"ab", "abc", true, 3, -1},
        {"ab", "abc", false, kWhole, -1},
        {"abc", "ab", false, 2, 0},
        {"x", "y", false, 0, 0},
        {"", nullptr, true, kWhole, 0},
        {"a", nullptr, false, kWhole, 1},
        // Letters beyond ASCII keep their case, and bytes above 0x7F sort after all of ASCII.
        {"\xC3\x84", "\xC3\xA4", false, kWhole, -1},
        {"\xC3\xA4", "z", false, kWhole, 1},
        {"\xC3\xA4", "z", true, kWhole, 1},
        // Not letters, though 0x20 apart: "[" and "{", "@" and "`".
        {"[", "{", false, kWhole, -1},
        {"@", "`", false, kWhole, -1},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Sign(CascadeString(row.a).Compare(row.b, row.caseSensitive, false, row.length)), row.expected)
            << row.a << " / " << (row.b == nullptr ? "null" : row.b) << " / " << row.length;
    }
}

TEST(CascadeStringTest, ClampsPositionsAndKeepsItsBytes)
{
    const CascadeString text("name.vob");
    EXPECT_EQ(text.Left(4), "name");
    EXPECT_EQ(text.Right(3), "vob");
    EXPECT_EQ(text.From(5), "vob");
    EXPECT_EQ(text.Left(99), "name.vob");
    EXPECT_EQ(text.Right(99), "name.vob");
    EXPECT_EQ(text.From(99), "");
    EXPECT_EQ(CascadeString(static_cast<const char*>(nullptr)) + nullptr + "x", "x");

    CascadeString self("ab");
    self += self;    // the argument points into the text that grows
    EXPECT_EQ(self, "abab");
}

TEST(CascadeTokenArrayTest, DropsEmptyPieces)
{
    const auto split = [](const char* text, const char* separators) {
        const CascadeTokenArray tokens(text, separators);
        std::vector<std::string> pieces;
        for (size_t i = 0; i < tokens.GetSize(); ++i) {
            pieces.push_back(tokens[i].Str());
        }
        return pieces;
    };
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(split("a;;b", ";"), (Pieces {"a", "b"}));
    EXPECT_EQ(split("\n a b\n\nc ", " \n"), (Pieces {"a", "b", "c"}));
    EXPECT_EQ(split("whole", ";"), (Pieces {"whole"}));
    EXPECT_EQ(split("whole", ""), (Pieces {"whole"}));
    EXPECT_EQ(split("", ";"), Pieces());
    EXPECT_EQ(split(nullptr, nullptr), Pieces());
    EXPECT_EQ(split(";;", ";"), Pieces());
}

}    // namespace
