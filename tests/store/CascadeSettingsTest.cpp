#include "platform/CascadeSettings.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "host/base/HostOptions.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/TemporaryFolder.h"

namespace {

constexpr char kFile[] = "settings.ini";
constexpr char kSection[] = "orvandi.nuvid.settings";

class CascadeSettingsTest : public ::testing::Test {
protected:
    CascadeSettingsTest() { KeepIn(folder.Path()); }
    ~CascadeSettingsTest() override { host::SetCurrentHostOptions({}); }

    static void KeepIn(const std::string& path)
    {
        host::HostOptions options;
        options.stateFolder = path;
        host::SetCurrentHostOptions(options);
    }
    static std::string ReadBack(const char* key) { return CascadeSettings(kSection).ReadStringValue(key, "default").Str(); }
    static bool WriteOnce(const char* key, const char* value)
    {
        CascadeSettings settings(kSection);
        return settings.CreateSection() && settings.WriteStringValue(key, value) && settings.Flush();
    }

    const TemporaryFolder folder;
};

TEST_F(CascadeSettingsTest, KeepsValuesOverRunsWhateverBytesTheyHold)
{
    const char* const texts[] = {"", " leading and trailing \t", "back\\slash\\n", "two\nlines\r\n", "=[x];#", "\xE2\x96\xB6 film",
        "bytes \xFF\xFE\xC3 of no script", "\\s", "\\"};
    {
        CascadeSettings settings(kSection);
        EXPECT_FALSE(settings.SectionExists());
        EXPECT_FALSE(settings.WriteIntegerValue("IconSize", 1));    // no section yet
        ASSERT_TRUE(settings.CreateSection());
        EXPECT_TRUE(settings.SectionExists());
        EXPECT_TRUE(settings.WriteIntegerValue("IconSize", -2147483647));
        for (size_t i = 0; i < std::size(texts); ++i) {
            EXPECT_TRUE(settings.WriteStringValue(("Text" + std::to_string(i)).c_str(), texts[i]));
        }
        EXPECT_EQ(CascadeSettings(kSection).ReadIntegerValue("IconSize", 0), -2147483647);    // another object sees it before it is on disk
    }
    CascadeSettings settings(kSection);
    EXPECT_TRUE(settings.SectionExists());
    EXPECT_EQ(settings.ReadIntegerValue("IconSize", 0), -2147483647);
    for (size_t i = 0; i < std::size(texts); ++i) {
        EXPECT_EQ(settings.ReadStringValue(("Text" + std::to_string(i)).c_str(), "default"), texts[i]);
    }
    EXPECT_EQ(settings.ReadIntegerValue("Text0", 7), 7);
    EXPECT_EQ(settings.ReadIntegerValue("Absent", 7), 7);
    EXPECT_EQ(CascadeSettings("other").ReadStringValue("IconSize", "default"), "default");
}

TEST_F(CascadeSettingsTest, LeavesWhatAnotherHandWroteInTheFile)
{
    folder.Write(kFile, "# by hand\n\n[someone else]\nkey=value\n\n[orvandi.nuvid.settings]\nFontSize=12abc\nBig=99999999999\n");
    {
        CascadeSettings settings(kSection);
        EXPECT_EQ(settings.ReadIntegerValue("FontSize", 5), 5);
        EXPECT_EQ(settings.ReadIntegerValue("Big", 5), 5);
        EXPECT_TRUE(settings.WriteIntegerValue("FontSize", 2));
    }
    EXPECT_EQ(folder.Read(kFile), "# by hand\n\n[someone else]\nkey=value\n\n[orvandi.nuvid.settings]\nFontSize=2\nBig=99999999999\n");
    EXPECT_EQ(folder.Names(), std::set<std::string> {kFile});
}

TEST_F(CascadeSettingsTest, ReadingAloneWritesNothing)
{
    EXPECT_EQ(ReadBack("FontSize"), "default");
    EXPECT_TRUE(folder.Names().empty());
}

TEST_F(CascadeSettingsTest, NamesThatTheFormatCannotHoldAreRefused)
{
    CascadeSettings settings(kSection);
    ASSERT_TRUE(settings.CreateSection());
    for (const char* const key : {"", "a=b", "[x]", "two\nlines", " blank", "blank ", "#comment", "\xFF"}) {
        EXPECT_FALSE(settings.WriteStringValue(key, "x")) << key;
        EXPECT_EQ(settings.ReadIntegerValue(key, 3), 3) << key;
    }
    for (const char* const section : {"", "a]b", "two\nlines"}) {
        EXPECT_FALSE(CascadeSettings(section).CreateSection()) << section;
    }
}

TEST_F(CascadeSettingsTest, MovesADamagedFileAside)
{
    const std::string damaged[] = {"no section at all", std::string("[s]\nkey=\0value", 14), std::string(300, '\0'),
        "[orvandi.nuvid.settings]\nhalf a li", std::string(1100000, '#')};
    std::set<std::string> names {kFile};
    int count = 0;
    for (const std::string& bytes : damaged) {
        folder.Write(kFile, bytes);
        EXPECT_EQ(ReadBack("FontSize"), "default");
        const std::string aside = std::string(kFile) + ".damaged" + (++count == 1 ? "" : "-" + std::to_string(count));
        names.insert(aside);
        EXPECT_EQ(folder.Read(aside), bytes);
        ASSERT_TRUE(WriteOnce("FontSize", "3"));
        EXPECT_EQ(folder.Names(), names);    // none of the earlier ones was overwritten
        EXPECT_EQ(ReadBack("FontSize"), "3");
    }
}

TEST_F(CascadeSettingsTest, RefusesToWriteOverWhatItCannotRead)
{
    ASSERT_EQ(mkfifo((folder / kFile).c_str(), 0600), 0);
    EXPECT_EQ(ReadBack("FontSize"), "default");
    EXPECT_FALSE(CascadeSettings(kSection).CreateSection());
    ASSERT_EQ(remove((folder / kFile).c_str()), 0);

    folder.Write(kFile, "[orvandi.nuvid.settings]\nFontSize=1\n");
    ASSERT_EQ(chmod((folder / kFile).c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0777), 0);
    {
        const OrdinaryUser user;
        EXPECT_FALSE(WriteOnce("FontSize", "3"));
    }
    ASSERT_EQ(chmod((folder / kFile).c_str(), 0600), 0);
    EXPECT_EQ(folder.Read(kFile), "[orvandi.nuvid.settings]\nFontSize=1\n");
}

TEST_F(CascadeSettingsTest, AFolderThatCannotBeWrittenKeepsTheOldValues)
{
    ASSERT_TRUE(WriteOnce("FontSize", "1"));
    ASSERT_EQ(chmod((folder / kFile).c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
    {
        const OrdinaryUser user;
        CascadeSettings settings(kSection);
        EXPECT_FALSE(settings.WriteIntegerValue("FontSize", 3));
        EXPECT_EQ(settings.ReadIntegerValue("FontSize", 0), 1);
        EXPECT_TRUE(settings.Flush());    // nothing was changed
    }
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    {
        CascadeSettings settings(kSection);
        ASSERT_TRUE(settings.WriteIntegerValue("FontSize", 3));
        std::filesystem::remove_all(folder.Path());    // the medium is pulled out
        EXPECT_FALSE(settings.Flush());
    }
    KeepIn("/proc/nowhere");
    EXPECT_FALSE(CascadeSettings(kSection).CreateSection());
    EXPECT_EQ(ReadBack("FontSize"), "default");
}

}    // namespace
