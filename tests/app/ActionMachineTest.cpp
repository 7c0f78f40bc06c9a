#include "app/ActionMachine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class ActionMachineTest : public testing::Test, protected ISequenceActions {
protected:
    void OpenSelected() override { Did("open selected"); }
    bool OpenListEntry() override
    {
        Did("open list entry");
        return m_bOpens;
    }
    void SkipForward(int seconds) override { Did("forward " + std::to_string(seconds)); }
    void SkipBack(int seconds) override { Did("back " + std::to_string(seconds)); }
    void Reselect() override { Did("reselect"); }
    void Reopen() override { Did("reopen"); }
    void EndOfFileReached() override { Did("end of file"); }
    void JumpToNextChapter() override { Did("next chapter"); }
    void JumpToPrevChapter(bool repeated) override { Did(repeated ? "prev chapter again" : "prev chapter"); }
    void JumpToNextBookmark() override { Did("next bookmark"); }
    void JumpToPrevBookmark(bool repeated) override { Did(repeated ? "prev bookmark again" : "prev bookmark"); }

    void Did(const std::string& what) { m_Done.push_back(what); }
    void Tick(int times)
    {
        for (int i = 0; i < times; ++i) {
            m_Machine.Tick();
        }
    }
    // Ticks until a scheduled action has acted, and until it has settled after that.
    int TicksUntilIdle()
    {
        int ticks = 0;
        while (m_Machine.State() != SEQ_IDLE && ticks < 100) {
            Tick(1);
            ++ticks;
        }
        return ticks;
    }

    bool m_bOpens = true;
    std::vector<std::string> m_Done;
    ActionMachine m_Machine {*this};
};

TEST_F(ActionMachineTest, EachStateDoesItsActionAndSettles)
{
    const struct {
        SequenceState state;
        int argument;
        const char* action;
        int ticks;    // one of delay, one that acts, and those of settling
    } cases[] = {{SEQ_OPEN_SELECTED, 0, "open selected", 2}, {SEQ_SKIP_FORWARD, 30, "forward 30", 3}, {SEQ_SKIP_BACK, 10, "back 10", 3},
        {SEQ_RESELECT, 0, "reselect", 9}, {SEQ_REOPEN, 0, "reopen", 3}, {SEQ_OPEN_LIST_ENTRY, 0, "open list entry", 2},
        {SEQ_END_OF_FILE, 0, "end of file", 9}, {SEQ_NEXT_CHAPTER, 0, "next chapter", 3}, {SEQ_PREV_CHAPTER, 0, "prev chapter", 3},
        {SEQ_PREV_CHAPTER, 1, "prev chapter again", 3}, {SEQ_NEXT_BOOKMARK, 0, "next bookmark", 3}, {SEQ_PREV_BOOKMARK, 0, "prev bookmark", 3},
        {SEQ_PREV_BOOKMARK, 1, "prev bookmark again", 3}};
    for (const auto& c : cases) {
        m_Machine.GoIdle();
        m_Done.clear();
        ASSERT_TRUE(m_Machine.Schedule(c.state, c.argument));
        EXPECT_EQ(TicksUntilIdle(), c.ticks) << c.action;
        EXPECT_EQ(m_Done, (std::vector<std::string> {c.action}));
    }
}

TEST_F(ActionMachineTest, ItemsThatFailAreTriedOnePerTick)
{
    m_bOpens = false;
    m_Machine.Begin(SEQ_OPEN_LIST_ENTRY, 3);
    Tick(3);
    EXPECT_TRUE(m_Done.empty());
    Tick(2);
    EXPECT_EQ(m_Done.size(), 2U);
    EXPECT_EQ(m_Machine.State(), SEQ_OPEN_LIST_ENTRY);
    m_bOpens = true;
    Tick(5);
    EXPECT_EQ(m_Done.size(), 3U);
}

TEST_F(ActionMachineTest, AStepThatGoesFirstLeavesNoKeyDeaf)
{
    m_Machine.Schedule(SEQ_SKIP_FORWARD, 30);
    m_Machine.Begin(SEQ_OPEN_SELECTED, 2);
    EXPECT_EQ(TicksUntilIdle(), 3);
    EXPECT_EQ(m_Done, (std::vector<std::string> {"open selected"}));
    EXPECT_FALSE(m_Machine.IsBusy());

    m_Machine.Begin(static_cast<SequenceState>(13), 0);    // no such action
    Tick(3);
    EXPECT_EQ(m_Machine.State(), 13);
    m_Machine.GoIdle();
    Tick(3);
    EXPECT_EQ(m_Done.size(), 1U);
}

TEST(DrainTicksTest, TheDelayIsWhatTheDecoderHolds)
{
    EXPECT_EQ(DrainTicks(5120000), 27);
    EXPECT_EQ(DrainTicks(19660800), 7);
    EXPECT_EQ(DrainTicks(0xFFFFFFFF), 0);
    EXPECT_EQ(DrainTicks(1), 141557760);
    EXPECT_EQ(DrainTicks(0), 27);    // not known: as for the engine's first estimate
}

}    // namespace
