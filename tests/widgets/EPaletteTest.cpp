#include "widgets/EPalette.h"

#include <filesystem>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"
#include "widgets/EWaitWindow.h"

namespace {

TEST(EPaletteTest, AThemeSaysWhatItWantsAndTheRestStays)
{
    TestPlatform::Reset();
    const TemporaryFolder folder;
    const EPalette usual;
    TestPlatform::SetGraphicsFolder(folder / "");
    const std::string theme = folder / "theme/";
    std::filesystem::create_directories(theme);
    EXPECT_EQ(EPalette::Load(theme.c_str()).accent, usual.accent);

    folder.Write("theme.cfg", "accent=#112233\n");
    EXPECT_EQ(EPalette::Load(theme.c_str()).accent, 0x112233FFU);    // the platform's, as the theme has none
    folder.Write("theme/theme.cfg",
        "# a theme\r\naccent=#0a0B0c\r\nrim=#01020304\nquiet=red\nkey=#12345\ntext=#1234567g\npanelradius=12\nrowradius=4000\nother=1\naccent\n");
    const EPalette palette = EPalette::Load(theme.c_str());
    EXPECT_EQ(palette.accent, 0x0A0B0CFFU);
    EXPECT_EQ(palette.rim, 0x01020304U);
    EXPECT_EQ(palette.quiet, usual.quiet);
    EXPECT_EQ(palette.key, usual.key);
    EXPECT_EQ(palette.text, usual.text);
    EXPECT_EQ(palette.panelRadius, 12);
    EXPECT_EQ(palette.rowRadius, 40);
}

// A theme that lacks a picture or a colour would show another theme's.
TEST(EPaletteTest, EveryThemeIsComplete)
{
    const std::filesystem::path assets = std::filesystem::path(NUVID_SOURCE) / "assets";
    const auto files = [](const std::filesystem::path& folder) {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file()) {
                names.insert(std::filesystem::relative(entry.path(), folder).string());
            }
        }
        return names;
    };
    const std::set<std::string> wanted = files(assets / "Themes/Ice");
    EXPECT_TRUE(wanted.contains("theme.cfg") && wanted.contains("common/dialog.svg"));
    EXPECT_EQ(files(assets / "Themes/Amber"), wanted);
    for (const std::string& name : wanted) {
        EXPECT_TRUE(std::filesystem::exists(assets / "graphics" / name)) << name;
    }
}

TEST(EWaitWindowTest, ItMovesWhileItIsShownAndLeavesTheKeysAlone)
{
    TestPlatform::Reset();
    CascadeWindow below;
    below.Materialize();
    EWaitWindow wait;
    wait.SetText("Reading the folder");
    wait.Show({100, 100, 1000, 500});
    EXPECT_EQ(TestPlatform::FocusWindow(), &below);
    EXPECT_EQ(wait.GetRect().left + wait.GetRect().width / 2, 600);
    EXPECT_NE(TestPlatform::FindText(TestPlatform::Paint(wait), "Reading the folder"), nullptr);
    const auto look = [&] {
        std::string all;
        for (const auto& drawing : TestPlatform::Paint(wait)) {
            all += std::to_string(drawing.rect.width) + "/" + std::to_string(drawing.color) + " ";
        }
        return all;
    };
    const std::string first = look();
    for (int i = 0; i < 12; ++i) {
        TestPlatform::RunFor(100);
        EXPECT_TRUE(TestPlatform::NeedsPaint(wait));
        EXPECT_EQ(look() == first, i == 11);    // round in 1.2 s
    }
    wait.Vanish();
    EXPECT_EQ(TestPlatform::RunningTimers(), 0);
}

}    // namespace
