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

    bool m_bOpens = true;
    std::vector<std::string> m_Done;
    ActionMachine m_Machine {*this};
};

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

// Another stream, or none, takes longer to settle than another place in the same one; further keys wait so long.
TEST_F(ActionMachineTest, SettlesAfterItsAction)
{
    for (const auto& [state, ticks] : {std::pair(SEQ_SKIP_FORWARD, 3), std::pair(SEQ_RESELECT, 9), std::pair(SEQ_END_OF_FILE, 9)}) {
        m_Machine.Schedule(state, 0);
        Tick(ticks - 1);
        EXPECT_NE(m_Machine.State(), SEQ_IDLE) << state;
        Tick(1);
        EXPECT_EQ(m_Machine.State(), SEQ_IDLE) << state;
    }
}

TEST_F(ActionMachineTest, AStepThatGoesFirstLeavesNoKeyDeaf)
{
    m_Machine.Schedule(SEQ_SKIP_FORWARD, 30);
    m_Machine.Begin(SEQ_OPEN_SELECTED, 2);
    Tick(2);
    EXPECT_TRUE(m_Done.empty());
    Tick(1);
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
