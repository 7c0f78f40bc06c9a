#include "app/MMenu.h"

#include "app/MenuTables.h"
#include "tests/app/AppTest.h"

using TestPlatform::Drawing;

namespace {

class MMenuTest : public AppTest, public IMMenu_CB {
protected:
    MMenuTest()
    {
        std::filesystem::create_directories(m_Folder / "graphics/common");
        for (const char* const name :
            {"textbutton-narrow-normal", "textbutton-narrow-highlight", "spinner-narrow-normal", "spinner-narrow-highlight"}) {
            const std::string path = m_Folder.Write(std::string("graphics/common/") + name + ".png", "x");
            TestPlatform::AddPicture(path, {270, 46});
        }
        TestPlatform::SetGraphicsFolder(m_Folder / "graphics/");
        g_ThemeSelect.SetAppFolder((m_Folder / "").c_str());
        constexpr const char* kChoices[] = {"a", "b", "c"};
        m_Menu.SetTitle("Title");
        m_Menu.SetRect({100, 100, 700, 445});
        m_Menu.SetHandler(this);
        m_Menu.AddItem(1, "One");
        m_Menu.AddSpinner(2, "Two", 1, kChoices, 3);
        m_Menu.AddItem(3, "Three");
    }
    ~MMenuTest() override { g_ThemeSelect.ClearBitmapCache(); }
    void OnMenu(unsigned long id) override
    {
        EXPECT_FALSE(m_Menu.IsMaterialized());
        m_Ids.push_back(id);
    }

    MMenu m_Menu;
    std::vector<unsigned long> m_Ids;
};

TEST_F(MMenuTest, KeysMoveRoundAndRoundAndPress)
{
    const struct {
        std::vector<unsigned long> keys;
        unsigned long id;
    } cases[] = {
        {{Remote::kSelect}, 1},
        {{Remote::kUp, Remote::kSelect}, 3},
        {{Remote::kDown, Remote::kDown, Remote::kSelect}, 3},
        {{Remote::kDown, Remote::kDown, Remote::kDown, Remote::kSelect}, 1},
        {{Remote::kLeft, Remote::kRight, Remote::kPlay, Remote::kStop, Remote::kPower, Remote::kSelect}, 1},
        {{Remote::kMenu}, IMMenu_CB::kCancelled},
        {{Remote::kDown, Remote::kExit}, IMMenu_CB::kCancelled},
    };
    for (const auto& c : cases) {
        m_Menu.Materialize();
        TestPlatform::PressKeys(c.keys);
        EXPECT_EQ(m_Ids, (std::vector<unsigned long> {c.id}));
        m_Ids.clear();
    }
}

TEST_F(MMenuTest, SpinnersTurnPastMissingChoices)
{
    m_Menu.Materialize();
    TestPlatform::PressKeys({Remote::kDown});
    EXPECT_EQ(m_Menu.GetCurrentChoice(2), 1);
    TestPlatform::Paint(m_Menu);
    TestPlatform::PressKeys({Remote::kRight, Remote::kRight});
    EXPECT_EQ(m_Menu.GetCurrentChoice(2), 0);
    EXPECT_TRUE(TestPlatform::NeedsPaint(m_Menu));
    TestPlatform::PressKeys({Remote::kLeft});
    EXPECT_EQ(m_Menu.GetCurrentChoice(2), 2);
    m_Menu.SetText(2, nullptr, 1);
    m_Menu.SetText(2, "h", 7);
    TestPlatform::PressKeys({Remote::kSelect});
    EXPECT_EQ(m_Menu.GetCurrentChoice(2), 7);
    TestPlatform::PressKeys({Remote::kRight, Remote::kRight});
    EXPECT_EQ(m_Menu.GetCurrentChoice(2), 2);
    EXPECT_TRUE(m_Ids.empty());

    // What is not there cannot be chosen.
    for (const int choice : {1, 8, -1}) {
        m_Menu.SetCurrentChoice(2, choice);
        m_Menu.SetText(2, "x", choice == 1 ? 9 : choice);
        EXPECT_EQ(m_Menu.GetCurrentChoice(2), 2);
    }
    EXPECT_EQ(m_Menu.GetCurrentChoice(99), 0);
    for (int i = 0; i < MMenu::kMaxChoices; ++i) {
        m_Menu.SetText(2, nullptr, i);
    }
    TestPlatform::PressKeys({Remote::kRight});    // ends
    TestPlatform::Paint(m_Menu);
}

// Every menu as it is built, with the longest texts that it may show.
TEST_F(MMenuTest, NothingOfAnyMenuIsClippedOrOverlaps)
{
    for (const Menus::MenuRow& row : Menus::kRows) {
        MMenu menu;
        menu.SetTitle(row.title);
        menu.SetRect({290, 100, row.width, row.height});
        menu.SetButtonSize(row.buttonWidth);
        for (size_t i = 0; i < row.itemCount; ++i) {
            const Menus::ItemRow& item = row.items[i];
            if (item.ChoiceCount() == 0) {
                menu.AddItem(item.id, item.text);
                menu.SetText(item.id, std::string(200, 'w').c_str(), 0);
            } else {
                menu.AddSpinner(item.id, item.text, 0, item.choices, item.ChoiceCount());
                menu.SetText(item.id, std::string(200, 'w').c_str(), 0);
            }
        }
        const auto drawings = TestPlatform::Paint(menu);
        std::vector<Drawing> texts;
        std::vector<Drawing> pictures;
        for (const Drawing& drawing : drawings) {
            CascadeRect inside = drawing.rect;
            inside.Intersect(menu.GetRect());
            EXPECT_EQ(inside, drawing.rect) << row.title << ": " << drawing.text;
            if (drawing.kind == Drawing::kText) {
                EXPECT_GE(drawing.fontSize, 24);
                texts.push_back(drawing);
            } else if (drawing.kind == Drawing::kStretchBlit) {
                pictures.push_back(drawing);
            }
        }
        EXPECT_GE(pictures.size(), row.itemCount);
        for (size_t i = 0; i < row.itemCount; ++i) {    // labels are never shortened
            EXPECT_TRUE(row.items[i].ChoiceCount() == 0 || TestPlatform::FindText(drawings, row.items[i].text) != nullptr) << row.items[i].text;
        }
        for (const auto& drawn : {texts, pictures}) {
            for (size_t i = 0; i < drawn.size(); ++i) {
                for (size_t j = i + 1; j < drawn.size(); ++j) {
                    CascadeRect both = drawn[i].rect;
                    both.Intersect(drawn[j].rect);
                    EXPECT_TRUE(both.IsEmpty()) << row.title << ": " << drawn[i].text << " over " << drawn[j].text;
                }
            }
        }
    }
}

}    // namespace
