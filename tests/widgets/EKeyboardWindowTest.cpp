#include "widgets/EKeyboardWindow.h"

#include <set>

#include "platform/RemoteKeys.h"
#include "tests/support/TestPlatform.h"

using TestPlatform::Drawing;

namespace {

class EKeyboardWindowTest : public PlatformTest, public EKeyboardWindow::Client {
protected:
    void OnKeyboardText(const CascadeString& text) override { Note("text:" + text.Str()); }
    void OnKeyboardCancelled() override { Note("cancelled"); }
    void Note(const std::string& result)
    {
        EXPECT_FALSE(m_Keyboard.IsMaterialized());
        m_Results.push_back(result);
    }
    std::string Result()
    {
        const std::string result = m_Results.size() == 1 ? m_Results[0] : "results: " + std::to_string(m_Results.size());
        m_Results.clear();
        return result;
    }
    bool Shows(const std::string& text) { return TestPlatform::FindText(TestPlatform::Paint(m_Keyboard), text) != nullptr; }

    EKeyboardWindow m_Keyboard;
    std::vector<std::string> m_Results;
};

TEST_F(EKeyboardWindowTest, TheRemoteTypesAndTheClientIsToldOnce)
{
    constexpr unsigned long kUp = Remote::kUp, kDown = Remote::kDown, kLeft = Remote::kLeft, kRight = Remote::kRight, kOk = Remote::kSelect;
    const struct {
        std::vector<unsigned long> keys;
        const char* result;
    } cases[] = {
        {{kOk, kRight, kOk, Remote::kPlay}, "text:qw"},
        {{kLeft, kOk, kUp, kOk, Remote::kPlayPause}, "text:p0"},
        {{kDown, kDown, kOk, kUp, kOk, kUp, kOk, Remote::kPlay}, "text:AQ"},    // shift, from the key above back to the same column
        {{kOk, kOk, Remote::kRewind, Remote::kPlay}, "text:q"},
        {{kOk, kDown, kDown, kLeft, kOk, kOk, kOk, Remote::kPlay}, "text:"},    // one Delete more than there are characters
        {{kOk, kUp, kUp, kOk, kUp, kUp, kUp, kOk, Remote::kPlay}, "text:q!"},    // the page of signs
        {{kOk, kUp, kUp, kRight, kRight, kOk, kUp, kUp, kUp, kOk, Remote::kPlay}, "text:q t"},
        {{kOk, kUp, kUp, kLeft, kOk}, "text:q"},    // OK
        {{kOk, kUp, kUp, kLeft, kLeft, kOk}, "cancelled"},
        {{kOk, Remote::kExit}, "cancelled"},
        {{Remote::kMenu}, "cancelled"},
        {{Remote::kStop, Remote::kInfo, Remote::kPower, Remote::kPlay}, "text:"},
    };
    CascadeWindow below;
    below.Materialize();
    for (const auto& c : cases) {
        m_Keyboard.ShowDialog("Enter Password", true, this);
        EXPECT_EQ(TestPlatform::FocusWindow(), &m_Keyboard);
        TestPlatform::PressKeys(c.keys);
        EXPECT_EQ(Result(), c.result) << &c - cases;
        EXPECT_EQ(TestPlatform::FocusWindow(), &below);
    }
    m_Keyboard.ShowDialog("Enter Password", true, this);
    m_Keyboard.Vanish();
    EXPECT_EQ(Result(), "results: 0");
}

TEST_F(EKeyboardWindowTest, ARealKeyboardTypesAndItsEnterKeyAccepts)
{
    m_Keyboard.ShowDialog("Name", false, this);
    for (const char* const typed : {"ä", "b", "\xF0\x9F\x8E\xAC", "\b", "日"}) {
        EXPECT_TRUE(TestPlatform::TypeText(typed));
    }
    for (const char* const refused : {"\x1B", "\t", "\xC3", "\xFF", "\xC2\x85", "\xED\xA0\x80", "\xE0\x80\x80", ""}) {
        EXPECT_FALSE(TestPlatform::TypeText(refused));
    }
    EXPECT_TRUE(Shows("äb日"));
    TestPlatform::PressKeys({Remote::kSelect});
    EXPECT_EQ(Result(), "text:äb日");

    m_Keyboard.ShowDialog("Name", false, this);
    for (size_t i = 0; i < EKeyboardWindow::kMaxCharacters; ++i) {
        EXPECT_TRUE(TestPlatform::TypeText("é"));
    }
    EXPECT_FALSE(TestPlatform::TypeText("x"));
    TestPlatform::PressKeys({Remote::kRewind, Remote::kSelect});
    EXPECT_EQ(m_Results.at(0).size(), 5 + 2 * (EKeyboardWindow::kMaxCharacters - 1));
}

TEST_F(EKeyboardWindowTest, APasswordIsNeverDrawn)
{
    m_Keyboard.SetText("Sésame");
    m_Keyboard.ShowDialog("Enter Password", true, this);
    EXPECT_TRUE(Shows("••••••"));
    EXPECT_FALSE(Shows("Sésame"));
    TestPlatform::PressKeys({Remote::kPlay});
    EXPECT_EQ(Result(), "text:Sésame");
    m_Keyboard.ShowDialog("Enter Password", false, this);    // nothing of it is left
    EXPECT_FALSE(Shows("Sésame"));
    EXPECT_TRUE(Shows("Enter Password"));
}

TEST_F(EKeyboardWindowTest, EveryKeyStandsInsideThePanel)
{
    m_Keyboard.SetText(std::string(100, 'W').c_str());
    m_Keyboard.ShowDialog("A title that is much too long for the panel in which it is to stand, by a good many characters", false, this);
    for (const int pages : {0, 1}) {
        int caps = 0;
        for (const Drawing& drawing : TestPlatform::Paint(m_Keyboard)) {
            CascadeRect inside = drawing.rect;
            inside.Intersect(m_Keyboard.GetRect());
            EXPECT_EQ(inside, drawing.rect) << drawing.text;
            if (drawing.kind == Drawing::kText) {
                EXPECT_GE(drawing.fontSize, 20);
            }
            if ((drawing.kind == Drawing::kRoundedRect || drawing.kind == Drawing::kGradient) && drawing.rect.height == 58) {
                ++caps;
            }
        }
        EXPECT_EQ(caps, 44) << pages;
        TestPlatform::PressKeys({Remote::kUp, Remote::kUp, Remote::kSelect});
    }
}

// From every key every other can be reached, and up after down comes back.
TEST(KeyboardGridTest, TheFocusReachesEveryKey)
{
    for (const auto page : {KeyboardGrid::Page::kLetters, KeyboardGrid::Page::kSigns}) {
        std::set<std::pair<int, size_t>> seen;
        std::vector<KeyboardGrid> open(1);
        open[0].SetPage(page);
        size_t keys = 0;
        for (int row = 0; row < KeyboardGrid::kRows; ++row) {
            keys += open[0].RowAt(row).size();
        }
        while (!open.empty()) {
            const KeyboardGrid grid = open.back();
            open.pop_back();
            if (!seen.emplace(grid.FocusRow(), grid.FocusColumn()).second) {
                continue;
            }
            for (const int step : {-1, 1}) {
                KeyboardGrid moved = grid;
                moved.MoveVertical(step);
                open.push_back(moved);
                moved.MoveVertical(-step);
                EXPECT_EQ(std::pair(moved.FocusRow(), moved.FocusColumn()), std::pair(grid.FocusRow(), grid.FocusColumn()));
                moved = grid;
                moved.MoveHorizontal(step);
                open.push_back(moved);
            }
        }
        EXPECT_EQ(seen.size(), keys);
    }
}

}    // namespace
