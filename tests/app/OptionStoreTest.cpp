#include "app/OptionStore.h"

#include <utility>

#include "app/OptionChoices.h"
#include "tests/app/AppTest.h"

namespace {

class OptionStoreTest : public AppTest {
protected:
    OptionStoreTest()
    {
        std::filesystem::create_directories(m_Folder / "Themes/Ice");
        std::filesystem::create_directories(m_Folder / "Themes/Dark");
        g_ThemeSelect.SetAppFolder((m_Folder / "").c_str());
    }
    void Load() { OptionStore::Load((m_Folder / "").c_str(), m_Options, m_Recent); }
    std::map<std::string, std::string>& Section() { return TestPlatform::Settings()["orvandi.nuvid.settings"]; }
    std::string RecentSlots() const
    {
        std::string text;
        for (size_t i = 0; i < RecentFiles::kSlots; ++i) {
            text += m_Recent[i].Str() + " ";
        }
        return text;
    }

    StartOptions m_Options;
    RecentFiles m_Recent;
};

TEST_F(OptionStoreTest, WhatIsSavedComesBack)
{
    m_Options.browserMode = 3;    // changed in the browser: not kept
    m_Options.browserModeDefault = 2;
    m_Options.iconSize = 3;
    m_Options.fontSize = 24;
    m_Options.resumeTimeout = 60;
    m_Options.minFileSize = 3000000000U;
    g_ThemeSelect.SetTheme("Dark");
    m_Recent.Add("/b");
    m_Recent.Add("/a");
    OptionStore::Save(m_Options, m_Recent);
    EXPECT_EQ(Section(),
        (std::map<std::string, std::string> {{"BrowserMode", "2"}, {"IconSize", "2"}, {"FontSize", "24"}, {"ResumeTimeout", "60"},
            {"MinFileSize", "-1294967296"}, {"Theme", "Dark"}, {"Recent0", "/a"}, {"Recent1", "/b"}, {"Recent2", "Empty"}, {"Recent3", "Empty"},
            {"Recent4", "Empty"}}));
    m_Options = {};
    m_Recent = {};
    g_ThemeSelect.SetTheme("Cascade");
    Load();
    EXPECT_EQ(m_Options.browserMode, 2);
    EXPECT_EQ(m_Options.minFileSize, 3000000000U);
    const auto saved = std::exchange(Section(), {});
    OptionStore::Save(m_Options, m_Recent);
    EXPECT_EQ(Section(), saved);
}

TEST_F(OptionStoreTest, AbsentKeysKeepTheirValuesAndGapsInTheListClose)
{
    Section() = {{"IconSize", "7"}, {"FontSize", "-1"}, {"Recent1", "/b"}, {"Recent3", "/d"}, {"Theme", "No such theme"}};
    m_Options.iconSize = 2;
    m_Options.resumeTimeout = 5;
    Load();
    EXPECT_EQ(m_Options.iconSize, 0);    // an unknown number is the small size
    EXPECT_EQ(m_Options.fontSize, 40);
    EXPECT_EQ(m_Options.resumeTimeout, 5);
    EXPECT_STREQ(g_ThemeSelect.GetThemeName(), "Cascade");
    EXPECT_EQ(RecentSlots(), "/b /d Empty Empty Empty ");
}

TEST_F(OptionStoreTest, TheOlderFileIsReadWhileTheStoreHasNoSection)
{
    const std::string longLine = "Recent=/" + std::string(341, 'x');    // 349 bytes: the rest is a line of its own
    m_Folder.Write("Nuvid.settings",
        "#Nuvid File. Do not modify\r\nBrowserMode=1\r\nFontSize=24\nfontsize=12\nResumeTimeout=x\nMinFileSize=60000000\nIconSize=2\n"
        "Theme=dark\nRecent=/a\r\n"
            + longLine + "FontSize=18\nRecent=/c\nRecent=/d\nRecent=/e\nRecent=/f\n");
    m_Options.resumeTimeout = 5;
    Load();
    EXPECT_EQ(m_Options.browserMode, 1);
    EXPECT_EQ(m_Options.fontSize, 18);
    EXPECT_EQ(m_Options.resumeTimeout, 0);
    EXPECT_EQ(m_Options.minFileSize, 60000000U);
    EXPECT_EQ(m_Options.iconSize, 0);
    EXPECT_STREQ(g_ThemeSelect.GetThemeName(), "Dark");
    EXPECT_EQ(RecentSlots(), "/a /" + std::string(341, 'x') + " /c /d /e ");

    Section()["FontSize"] = "30";
    m_Options = {};
    Load();
    EXPECT_EQ(m_Options.fontSize, 30);
    EXPECT_EQ(m_Options.minFileSize, 0U);

    m_Options = {};
    OptionStore::ParseLegacy("#nuvid File.\nFontSize=24\n", m_Options, m_Recent);    // another signature
    EXPECT_EQ(m_Options.fontSize, 40);
}

TEST_F(OptionStoreTest, AStoreThatCannotBeWrittenIsTold)
{
    TestPlatform::RefuseSettings(true);
    EXPECT_EQ(Said([&] { OptionStore::Save(m_Options, m_Recent); }), "Unable to open CascadeSettings section for writing\n");
}

TEST_F(OptionStoreTest, AChoiceShowsAsItself)
{
    for (int choice = 0; choice < 5; ++choice) {
        EXPECT_EQ(OptionChoices::OfMinFileSize(OptionChoices::MinFileSize(choice)), choice);
        EXPECT_EQ(OptionChoices::OfResumeTimeout(OptionChoices::ResumeTimeout(choice)), choice);
    }
}

}    // namespace
