// What a list decides without a window: where its cursor goes, how fast, and what its items cost.
#include <gtest/gtest.h>

#include <string>

#include "widgets/ListItems.h"
#include "widgets/ListMotion.h"
#include "widgets/ListScroll.h"
#include "widgets/Marquee.h"

namespace {

ListScroll Scroll(int count, int page, int selected = 0)
{
    ListScroll scroll;
    scroll.SetPage(page);
    scroll.SetCount(count);
    scroll.Select(selected, true);
    return scroll;
}

TEST(ListScrollTest, TheListScrollsOnlyWhenItMustAndShowsANeighbour)
{
    ListScroll scroll = Scroll(100, 10);
    EXPECT_EQ(scroll.Top(), 0);
    EXPECT_TRUE(scroll.Move(8));
    EXPECT_EQ(scroll.Top(), 0);    // row 9, the neighbour, is on screen
    scroll.Move(1);
    EXPECT_EQ(scroll.Top(), 1);
    scroll.Move(-7);
    EXPECT_EQ(scroll.Top(), 1);
    scroll.Move(-1);
    EXPECT_EQ(scroll.Top(), 0);
    EXPECT_EQ(scroll.Selected(), 1);
    scroll.Select(50, false);
    EXPECT_EQ(scroll.Top(), 0);    // not asked for

    // At the ends there is no neighbour; beyond them nothing moves.
    EXPECT_TRUE(scroll.Move(1000));
    EXPECT_EQ(scroll.Selected(), 99);
    EXPECT_EQ(scroll.Top(), 90);
    EXPECT_FALSE(scroll.Move(1));
    EXPECT_TRUE(scroll.Move(-0x7FFFFFFF));
    EXPECT_EQ(scroll.Top(), 0);
    EXPECT_FALSE(scroll.Select(100, true));
    EXPECT_FALSE(scroll.Select(-1, true));

    // Two rows: a neighbour on both sides does not fit, the cursor's own row does.
    scroll = Scroll(10, 2);
    for (int i = 1; i < 10; ++i) {
        scroll.Move(1);
        EXPECT_TRUE(scroll.IsVisible(scroll.Selected())) << i;
    }
}

TEST(ListScrollTest, PagesKeepTheCursorsPlaceOnTheScreen)
{
    ListScroll scroll = Scroll(35, 10, 4);
    scroll.Page(1);
    EXPECT_EQ(scroll.Selected(), 14);
    EXPECT_EQ(scroll.Top(), 10);
    scroll.Page(1);
    scroll.Page(1);
    EXPECT_EQ(scroll.Top(), 25);    // the last page is a full one
    EXPECT_EQ(scroll.Selected(), 34);
    EXPECT_FALSE(scroll.Page(1));
    scroll.Page(-3);
    EXPECT_EQ(scroll.Selected(), 4);
    scroll.Page(-1);
    EXPECT_EQ(scroll.Selected(), 0);
    EXPECT_FALSE(scroll.Page(-0x7FFFFFFF));
}

TEST(ListScrollTest, FewerItemsOrRowsLeaveTheCursorOnScreen)
{
    ListScroll scroll = Scroll(100, 10, 60);
    scroll.SetPage(3);    // larger rows
    EXPECT_TRUE(scroll.IsVisible(60));
    scroll.SetCount(20);
    EXPECT_EQ(scroll.Selected(), 19);
    EXPECT_EQ(scroll.Top(), 17);
    scroll.SetPage(50);
    EXPECT_EQ(scroll.Top(), 0);
    scroll.SetPage(-4);
    EXPECT_EQ(scroll.PageRows(), 1);
    scroll.SetCount(0);
    EXPECT_EQ(scroll.Selected(), -1);
    EXPECT_FALSE(scroll.Move(1));
    EXPECT_FALSE(scroll.Page(1));
    scroll.SetCount(3);
    EXPECT_EQ(scroll.Selected(), -1);    // none until one is chosen
    EXPECT_TRUE(scroll.Move(1));
    EXPECT_EQ(scroll.Selected(), 0);
}

TEST(ListScrollTest, TheThumbReachesBothEndsAndStaysLargeEnough)
{
    EXPECT_EQ(Scroll(10, 10).ThumbIn(500, 40).length, 0);
    const struct {
        int count;
        int selected;
        int start;
        int length;
    } cases[] = {{20, 0, 0, 250}, {20, 19, 250, 250}, {50000, 0, 0, 40}, {50000, 49999, 460, 40}};
    for (const auto& c : cases) {
        const ListScroll::Thumb thumb = Scroll(c.count, 10, c.selected).ThumbIn(500, 40);
        EXPECT_EQ(thumb.start, c.start);
        EXPECT_EQ(thumb.length, c.length);
    }
    EXPECT_EQ(Scroll(100, 10).ThumbIn(20, 40).length, 20);
}

TEST(ListMotionTest, AHeldKeyGathersSpeedAndAPressIsOneRow)
{
    constexpr int kRepeatMs = 40;
    const auto held = [](int count, int untilMs) {
        ListMotion motion;
        int rows = 0;
        for (int ms = 0; ms <= untilMs; ms += kRepeatMs) {
            rows += motion.Step(1, count, static_cast<uint32_t>(ms) + 0xFFFFFF00U);    // across the clock's wrap
        }
        return rows;
    };
    EXPECT_EQ(held(10000, 760), 20);
    EXPECT_GT(held(10000, 8000), 10000);
    EXPECT_LT(held(10000, 2500), 1000);
    EXPECT_EQ(held(30, 4000), 101);    // a short list is walked row by row

    ListMotion motion;
    for (uint32_t ms = 0; ms < 20000; ms += 300) {
        EXPECT_EQ(motion.Step(-1, 10000, ms), -1);
        motion.Release();
    }
    motion.Step(1, 10000, 0);
    motion.Step(1, 10000, 900);
    EXPECT_GT(motion.Step(1, 10000, 1800), 1);
    EXPECT_EQ(motion.Step(-1, 10000, 1840), -1);    // the other direction begins anew
    EXPECT_EQ(motion.Step(-1, 10000, 4000), -1);    // and so does a key whose release was lost
}

TEST(MarqueeTest, ANameGoesToItsEndAndComesToRest)
{
    Marquee marquee;
    EXPECT_FALSE(marquee.IsRunning(0));
    marquee.Start(120, 0xFFFFFF00U);
    EXPECT_EQ(marquee.Offset(0xFFFFFF00U), 0);
    int furthest = 0;
    uint32_t ms = 0;
    for (; marquee.IsRunning(0xFFFFFF00U + ms) && ms < 60000; ms += Marquee::kTickMs) {
        const int offset = marquee.Offset(0xFFFFFF00U + ms);
        EXPECT_TRUE(offset >= 0 && offset <= 120);
        furthest = std::max(furthest, offset);
    }
    EXPECT_EQ(furthest, 120);
    EXPECT_TRUE(ms > 5000 && ms < 30000) << ms;
    EXPECT_EQ(marquee.Offset(0xFFFFFF00U + ms), 0);
}

TEST(ListItemsTest, TextsStayWithTheirItem)
{
    ListItems items;
    EXPECT_EQ(items.Add("Alpha"), 0);
    const char* const name = items.GetText(0, 0);
    for (int i = 1; i < 5000; ++i) {
        items.Add(("item " + std::to_string(i)).c_str());
        items.SetText(i, 3, std::to_string(i * 7).c_str());
        items.SetText(i, 1, "first");
        items.SetTag(i, ("/tag/" + std::to_string(i)).c_str());
        items.SetThumbnail(i, ("/thumb/" + std::to_string(i)).c_str());
    }
    EXPECT_EQ(items.GetText(0, 0), name);    // others did not move it
    items.SetText(77, 1, "second");
    items.SetText(77, 0, std::string(100000, 'x').c_str());
    EXPECT_STREQ(items.GetText(77, 1), "second");
    EXPECT_STREQ(items.GetText(77, 3), "539");
    EXPECT_STREQ(items.GetText(76, 1), "first");
    EXPECT_STREQ(items.GetText(76, 2), "");
    EXPECT_EQ(std::string(items.GetText(77, 0)).size(), 100000U);
    EXPECT_STREQ(items.GetThumbnail(4999), "/thumb/4999");
    EXPECT_EQ(items.FindTag("/tag/4999"), 4999);
    EXPECT_EQ(items.FindText(3, "539"), 77);
    EXPECT_EQ(items.FindTag("/Tag/1"), -1);

    items.SetText(5000, 0, "x");
    items.SetText(0, 8, "x");
    items.SetMark(-1, true);
    items.SetTag(0, nullptr);
    EXPECT_STREQ(items.GetText(-1, 0), "");
    EXPECT_STREQ(items.GetText(0, 8), "");
    EXPECT_FALSE(items.GetMark(0));

    items.Clear();
    EXPECT_EQ(items.Count(), 0);
    EXPECT_EQ(items.BytesHeld(), 0U);
    EXPECT_EQ(items.FindTag(""), -1);
}

TEST(ListItemsTest, FiftyThousandItemsAreCheap)
{
    ListItems items;
    const std::string folder = "/media/share/recordings/2006/a folder that is rather deep/";
    for (int i = 0; i < 50000; ++i) {
        const std::string name = "recording of the year number " + std::to_string(i) + ".mpg";
        const int item = items.Add(name.c_str());
        items.SetText(item, 1, "1,834,567 KB");
        items.SetTag(item, (folder + name).c_str());
        items.SetThumbnail(item, (folder + name + ".jpg").c_str());
        items.SetIcons(item, (folder + "file.png").c_str(), (folder + "file-large.png").c_str(), (folder + "file-extralarge.png").c_str());
    }
    EXPECT_STREQ(items.GetIcons(49999)[1], (folder + "file-large.png").c_str());
    EXPECT_EQ(items.GetIcons(0)[2], items.GetIcons(49999)[2]);    // one copy
    EXPECT_LT(items.BytesHeld(), 24U << 20);
    EXPECT_STREQ(items.GetIcons(50000)[0], "");
}

}    // namespace
