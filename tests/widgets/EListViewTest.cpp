#include "widgets/EListView.h"

#include <algorithm>

#include "platform/RemoteKeys.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

using TestPlatform::Drawing;
using TestPlatform::FindText;

namespace {

class EListViewTest : public PlatformTest {
protected:
    EListViewTest()
    {
        m_List.SetRect({100, 50, 700, 480});    // ten small rows
        m_List.AddColumn("Name", 0);
        m_Size = m_List.AddColumn("Size", 130);
        m_List.AddColumn("UUID", 0);
        m_Owner.Materialize();
        m_List.Materialize();
    }
    void Add(int count)
    {
        for (int i = 0; i < count; ++i) {
            m_List.SetText(m_List.AddItem(("name " + std::to_string(i)).c_str()), m_Size, (std::to_string(i) + " KB").c_str());
        }
        m_List.SetSelectedIndex(0, true);
    }
    std::vector<Drawing> Paint() { return TestPlatform::Paint(m_List); }
    bool Shows(const std::string& text) { return FindText(Paint(), text) != nullptr; }
    // The names on screen from top to bottom, first and last.
    std::string Range()
    {
        std::string first;
        std::string last;
        for (const Drawing& drawing : Paint()) {
            if (drawing.kind == Drawing::kText && drawing.text.starts_with("name ")) {
                first = first.empty() ? drawing.text.substr(5) : first;
                last = drawing.text.substr(5);
            }
        }
        return first + "-" + last;
    }

    CascadeWindow m_Owner;    // has the keys
    EListView m_List;
    int m_Size = -1;
};

TEST_F(EListViewTest, RowsOnScreenAreDrawnInsideThePanelAndFollowTheCursor)
{
    Add(100);
    EXPECT_EQ(TestPlatform::FocusWindow(), &m_Owner);
    EXPECT_EQ(Range(), "0-9");
    EXPECT_EQ(m_List.GetVisibleCount(), 10);
    CascadeRect panel = m_List.GetRect();
    int texts = 0;
    for (const Drawing& drawing : Paint()) {
        CascadeRect inside = drawing.rect;
        inside.Intersect(panel);
        EXPECT_EQ(inside, drawing.rect) << drawing.text;
        texts += drawing.kind == Drawing::kText ? 1 : 0;
        EXPECT_TRUE(drawing.kind != Drawing::kText || drawing.fontSize >= 20);
    }
    EXPECT_EQ(texts, 20);

    EXPECT_TRUE(m_List.Page(1));
    EXPECT_TRUE(TestPlatform::NeedsPaint(m_List));
    EXPECT_EQ(Range(), "10-19");
    EXPECT_FALSE(TestPlatform::NeedsPaint(m_List));
    m_List.SetListMode(EListView::kLarge);    // fewer rows fit, the cursor stays in sight
    EXPECT_TRUE(Shows("name 10"));
    EXPECT_EQ(m_List.GetVisibleCount(), 5);
    m_List.SetListMode(7);
    EXPECT_EQ(m_List.GetListMode(), EListView::kLarge);
    EXPECT_FALSE(m_List.Last() && m_List.Last());
    EXPECT_EQ(Range(), "95-99");
}

TEST_F(EListViewTest, ColumnsAreFoundByNameAndHiddenWhenNarrow)
{
    Add(3);
    EXPECT_EQ(m_List.GetColumn("Size"), m_Size);
    EXPECT_EQ(m_List.GetColumn("Duration"), -1);
    m_List.SetText(1, m_List.GetColumn("UUID"), "uuid:1");
    EXPECT_EQ(m_List.FindText(m_List.GetColumn("UUID"), "uuid:1"), 1);
    EXPECT_TRUE(Shows("1 KB"));
    EXPECT_FALSE(Shows("uuid:1"));
    m_List.SetColumnWidth(m_Size, 5);
    EXPECT_FALSE(Shows("1 KB"));
    EXPECT_STREQ(m_List.GetText(1, m_Size), "1 KB");

    // A size that needs more room than its column takes it from the name.
    const std::string longName(200, 'n');
    m_List.SetText(1, 0, longName.c_str());
    m_List.SetText(1, m_Size, "1,234,567,890,123 KB");
    m_List.SetColumnWidth(m_Size, 130);
    const auto drawings = Paint();
    const Drawing* const size = FindText(drawings, "1,234,567,890,123 KB");
    ASSERT_NE(size, nullptr);
    for (const Drawing& drawing : drawings) {
        if (drawing.text.starts_with("nnn")) {
            EXPECT_TRUE(drawing.text.ends_with("..."));
            EXPECT_LT(drawing.rect.Right(), size->rect.left);
        }
    }
}

TEST_F(EListViewTest, AMessageStandsWhereItemsLeaveRoom)
{
    m_List.SetMessage("This folder is empty");
    EXPECT_TRUE(Shows("This folder is empty"));
    Add(1);
    const auto drawings = Paint();
    EXPECT_GT(FindText(drawings, "This folder is empty")->rect.top, FindText(drawings, "name 0")->rect.Bottom());
    Add(40);
    EXPECT_FALSE(Shows("This folder is empty"));
    m_List.Clear(true);
    EXPECT_TRUE(TestPlatform::NeedsPaint(m_List));
    EXPECT_FALSE(Shows("This folder is empty"));
    EXPECT_EQ(m_List.GetSelectedIndex(), -1);
    EXPECT_FALSE(m_List.Move(1));
}

TEST_F(EListViewTest, OnlyALongNameUnderTheFocusMovesAndOnlyForAWhile)
{
    Add(5);
    const std::string longName = "a name that is by far too long for the width of this list, with its end " + std::string(30, '.');
    m_List.SetText(2, 0, longName.c_str());
    Paint();
    EXPECT_EQ(TestPlatform::RunningTimers(), 0);
    m_List.SetSelectedIndex(2, true);
    Paint();
    EXPECT_EQ(TestPlatform::RunningTimers(), 1);
    TestPlatform::RunFor(2500);
    EXPECT_TRUE(TestPlatform::NeedsPaint(m_List));
    Paint();
    int paintings = 0;
    for (int i = 0; i < 3000 && TestPlatform::RunningTimers() > 0; ++i) {
        TestPlatform::RunFor(40);
        paintings += TestPlatform::PaintAll();
    }
    EXPECT_GT(paintings, 100);
    EXPECT_EQ(TestPlatform::RunningTimers(), 0);
    m_List.Redraw();
    Paint();
    EXPECT_EQ(TestPlatform::RunningTimers(), 0);    // it had its rounds
    m_List.Move(1);
    m_List.Move(-1);
    Paint();
    EXPECT_EQ(TestPlatform::RunningTimers(), 1);
    m_List.Vanish();
    EXPECT_EQ(TestPlatform::RunningTimers(), 0);
}

TEST_F(EListViewTest, IconsComeWhenTheyAreLoadedAndOnlyThoseInSight)
{
    TemporaryFolder folder;
    for (const char* const name : {"small.png", "large.png", "other.png"}) {
        TestPlatform::AddPicture(folder / name, {64, 64});
    }
    Add(20);
    for (int i = 0; i < 20; ++i) {
        const bool last = i == 19;
        m_List.SetIcons(i, last ? (folder / "other.png").c_str() : (folder / "small.png").c_str(), (folder / "large.png").c_str(), "/missing.png");
    }
    const auto icons = [this] {
        const auto drawings = Paint();
        return std::count_if(
            drawings.begin(), drawings.end(), [](const Drawing& drawing) { return drawing.kind == Drawing::kBlit && drawing.rect.width < 200; });
    };
    const auto settles = [&](long wanted) { return TestPlatform::Until([&] { return icons() == wanted; }); };
    EXPECT_EQ(icons(), 0);    // not asked for yet
    m_List.StartIconLoading();
    EXPECT_TRUE(settles(10));
    m_List.Last();
    EXPECT_EQ(icons(), 9);    // the last one is new
    EXPECT_TRUE(settles(10));
    m_List.SetListMode(EListView::kLarge);
    EXPECT_TRUE(settles(5));
    m_List.SetListMode(EListView::kExtraLarge);
    EXPECT_EQ(icons(), 0);
    TestPlatform::AddPicture(folder / "film.jpg", {640, 360});
    m_List.SetThumbnail(m_List.GetSelectedIndex(), (folder / "film.jpg").c_str());
    EXPECT_TRUE(settles(1));    // the picture of the recording itself
    m_List.StopIconLoading();
    EXPECT_EQ(icons(), 0);
}

}    // namespace
