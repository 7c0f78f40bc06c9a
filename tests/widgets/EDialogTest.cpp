#include "widgets/EDialog.h"

#include "platform/RemoteKeys.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

using TestPlatform::Drawing;

namespace {

class EDialogTest : public PlatformTest, public EDialog::Client {
protected:
    EDialogTest()
    {
        std::filesystem::create_directories(m_Folder / "theme/common");
        std::filesystem::create_directories(m_Folder / "shared/common");
        std::filesystem::create_directories(m_Folder / "platform/common");
        AddPicture("platform/common/dialog.png", {700, 445});
        AddPicture("shared/common/textbutton-narrow-normal.png", {270, 46});
        AddPicture("platform/common/textbutton-narrow-normal.png", {1, 1});
        AddPicture("theme/common/textbutton-narrow-highlight.png", {270, 46});
        TestPlatform::SetGraphicsFolder(m_Folder / "platform/");
        m_Dialog.SetGraphicsFolders((m_Folder / "theme/").c_str(), (m_Folder / "shared/").c_str());
        m_Dialog.SetTitle("Title");
        m_Dialog.SetText("One\nTwo");
        m_Dialog.SetChoices({"Yes", "No", "Later", "Never", "Too many"});
    }
    void AddPicture(const std::string& name, CascadeDims dims) { TestPlatform::AddPicture(m_Folder.Write(name, "x"), dims); }
    void OnDialogResult(const CascadeString& name, const CascadeString& button) override
    {
        EXPECT_FALSE(m_Dialog.IsMaterialized());
        EXPECT_EQ(TestPlatform::RunningTimers(), 0);
        m_Results.push_back(name.Str() + "=" + button.Str());
    }
    bool Says(const std::string& text) { return TestPlatform::FindText(TestPlatform::Paint(m_Dialog), text) != nullptr; }
    std::string Result()
    {
        const std::string result = m_Results.size() == 1 ? m_Results[0] : "results: " + std::to_string(m_Results.size());
        m_Results.clear();
        return result;
    }

    TemporaryFolder m_Folder;
    EDialog m_Dialog;
    std::vector<std::string> m_Results;
};

TEST_F(EDialogTest, TheFocusGoesRoundAndSelectAnswers)
{
    const struct {
        std::vector<unsigned long> keys;
        const char* result;
    } cases[] = {
        {{Remote::kSelect}, "Q=Yes"},
        {{Remote::kRight, Remote::kSelect}, "Q=No"},
        {{Remote::kDown, Remote::kDown, Remote::kUp, Remote::kSelect}, "Q=No"},
        {{Remote::kLeft, Remote::kSelect}, "Q=Never"},
        {{Remote::kRight, Remote::kRight, Remote::kRight, Remote::kRight, Remote::kSelect}, "Q=Yes"},
        {{Remote::kRight, Remote::kExit}, "Q="},
        {{Remote::kMenu}, "Q="},
        {{Remote::kPlay, Remote::kStop, Remote::kPower, Remote::kSelect}, "Q=Yes"},
    };
    CascadeWindow below;
    below.Materialize();
    for (const auto& c : cases) {
        m_Dialog.Show("Q", this);
        EXPECT_EQ(TestPlatform::FocusWindow(), &m_Dialog);
        TestPlatform::PressKeys(c.keys);
        EXPECT_EQ(Result(), c.result);
        EXPECT_EQ(TestPlatform::FocusWindow(), &below);
    }
}

TEST_F(EDialogTest, TimeRunsOutSecondBySecond)
{
    m_Dialog.SetTimeout(2);
    m_Dialog.Show("Q", this);
    EXPECT_TRUE(Says("Closes in 2 seconds"));
    TestPlatform::RunFor(900);
    EXPECT_FALSE(TestPlatform::NeedsPaint(m_Dialog));
    TestPlatform::RunFor(200);
    EXPECT_TRUE(TestPlatform::NeedsPaint(m_Dialog));
    EXPECT_TRUE(Says("Closes in 1 second"));
    TestPlatform::RunFor(800);
    EXPECT_TRUE(m_Results.empty());
    TestPlatform::RunFor(100);
    EXPECT_EQ(Result(), "Q=");

    // Shown again, it begins anew; across the clock's wrap too.
    TestPlatform::SetTime(0xFFFFFFFF - 500);
    m_Dialog.Show("Q", this);
    TestPlatform::RunFor(1900);
    EXPECT_TRUE(m_Results.empty());
    TestPlatform::RunFor(100);
    EXPECT_EQ(Result(), "Q=");
}

TEST_F(EDialogTest, WithoutATimeoutItStandsAndTheOwnerMayTakeItBack)
{
    m_Dialog.SetTimeout(0);
    m_Dialog.Show("Q", this);
    TestPlatform::RunFor(1000000);
    EXPECT_TRUE(m_Dialog.IsMaterialized());
    m_Dialog.SetTimeout(10);
    m_Dialog.Vanish();
    EXPECT_EQ(Result(), "results: 0");
    m_Dialog.SetTimeout(0x7FFFFFFF);    // a number of the settings: a day is the longest
    m_Dialog.Show("Q", this);
    EXPECT_TRUE(Says("Closes in 86400 seconds"));
}

TEST_F(EDialogTest, AllOfItStandsInsideThePanelInTheMiddleOfTheScreen)
{
    m_Dialog.SetText("A question that is so long that it takes two lines of the panel, at the least, and some more words");
    m_Dialog.SetTimeout(30);
    m_Dialog.Show("Q", this);
    const CascadeRect panel = m_Dialog.GetRect();
    EXPECT_NEAR(panel.left + panel.width / 2, 640, 2);
    EXPECT_NEAR(panel.top + panel.height / 2, 360, 2);
    const auto drawings = TestPlatform::Paint(m_Dialog);
    int texts = 0;
    for (const Drawing& drawing : drawings) {
        CascadeRect inside = drawing.rect;
        inside.Intersect(panel);
        EXPECT_EQ(inside, drawing.rect) << drawing.text;
        if (drawing.kind == Drawing::kText) {
            EXPECT_GE(drawing.fontSize, 24) << drawing.text;
            ++texts;
        }
    }
    EXPECT_GE(texts, 1 + 2 + 4 + 1);
    EXPECT_NE(TestPlatform::FindBlit(drawings, "dialog.png"), nullptr);    // the platform's: the theme has none

    // One button alone has the look of the focus, and it moves.
    m_Dialog.SetChoices({"Yes", "No"});
    const auto highlightLeft = [this] {
        const auto painted = TestPlatform::Paint(m_Dialog);
        const Drawing* const focus = TestPlatform::FindBlit(painted, "textbutton-narrow-highlight.png");
        const Drawing* const normal = TestPlatform::FindBlit(painted, "textbutton-narrow-normal.png");
        EXPECT_TRUE(focus != nullptr && normal != nullptr);
        return focus == nullptr || normal == nullptr ? 0 : focus->rect.left - normal->rect.left;
    };
    EXPECT_LT(highlightLeft(), 0);
    TestPlatform::PressKey(Remote::kRight);
    EXPECT_GT(highlightLeft(), 0);
}

}    // namespace
