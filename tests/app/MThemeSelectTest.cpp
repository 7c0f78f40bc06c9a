#include "app/MThemeSelect.h"

#include <filesystem>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

namespace {

class MThemeSelectTest : public PlatformTest {
protected:
    MThemeSelectTest()
    {
        for (const char* folder : {"app/Themes/Common", "app/Themes/ice", "app/Themes/Dark/common", "box/common"}) {
            std::filesystem::create_directories(m_Folder / folder);
        }
        m_Folder.Write("app/Themes/readme", "not a theme");
        TestPlatform::SetGraphicsFolder(m_Folder / "box/");
        m_Themes.SetAppFolder((m_Folder / "app/").c_str());
    }
    void AddPicture(const std::string& path, CascadeDims dims)
    {
        m_Folder.Write(path, "x");
        TestPlatform::AddPicture(m_Folder / path, dims);
    }

    TemporaryFolder m_Folder;
    MThemeSelect m_Themes;
};

TEST_F(MThemeSelectTest, TheFoldersBesideTheProgramAreThemes)
{
    ASSERT_EQ(m_Themes.GetNumThemes(), 3U);
    EXPECT_STREQ(m_Themes.GetThemeNameAt(0), "Cascade");
    EXPECT_STREQ(m_Themes.GetThemeNameAt(1), "Dark");    // in byte-wise order
    EXPECT_STREQ(m_Themes.GetThemeNameAt(2), "ice");
    EXPECT_EQ(m_Themes.GetThemeNameAt(3), nullptr);
    EXPECT_EQ(m_Themes.GetCommonImagePath("play.png").Str(), m_Folder / "app/Themes/Common/play.png");

    EXPECT_TRUE(m_Themes.SetTheme("Ice"));
    EXPECT_EQ(m_Themes.GetThemeImagesFolder().Str(), m_Folder / "app/Themes/ice/");
    EXPECT_FALSE(m_Themes.SetTheme("Fire"));
    EXPECT_STREQ(m_Themes.GetThemeName(), "ice");

    // Another folder without themes: the platform's own alone.
    m_Themes.SetAppFolder((m_Folder / "box/").c_str());
    EXPECT_EQ(m_Themes.GetNumThemes(), 1U);
    EXPECT_EQ(m_Themes.GetThemeIndex(), 0U);
}

TEST_F(MThemeSelectTest, APictureTheThemeLacksComesFromThePlatform)
{
    AddPicture("box/common/dialog.png", {10, 20});
    AddPicture("app/Themes/Dark/common/dialog.png", {30, 40});
    EXPECT_EQ(m_Themes.GetThemeBitmap(MThemeSelect::kDialog)->GetDims(), (CascadeDims {10, 20}));
    m_Themes.SetTheme("dark");
    EXPECT_EQ(m_Themes.GetThemeBitmap(MThemeSelect::kDialog)->GetDims(), (CascadeDims {30, 40}));    // not the cached one
    EXPECT_EQ(m_Themes.GetThemeImagePath("common/dialog.png").Str(), m_Folder / "app/Themes/Dark/common/dialog.png");
    m_Themes.SetTheme("ice");
    EXPECT_EQ(m_Themes.GetThemeImagePath("common/dialog.png").Str(), m_Folder / "box/common/dialog.png");
    EXPECT_TRUE(m_Themes.GetThemeBitmap(MThemeSelect::kSpinnerNormal)->IsEmpty());
}

}    // namespace
