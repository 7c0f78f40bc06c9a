#include "app/ActionMachine.h"

#include <cstdio>

namespace {

constexpr int kSettleTicks = 6;    // after actions that leave the decoder restless

struct ActionRow {
    SequenceState state;
    bool (*act)(ISequenceActions& actions, int argument);    // false: stay in this state; null: nothing to do
    int delayAfter;
    SequenceState next;
};

template <void (ISequenceActions::*operation)()> bool Do(ISequenceActions& actions, int /*argument*/)
{
    (actions.*operation)();
    return true;
}

template <void (ISequenceActions::*operation)(int)> bool DoSeconds(ISequenceActions& actions, int argument)
{
    (actions.*operation)(argument);
    return true;
}

template <void (ISequenceActions::*operation)(bool)> bool DoRepeated(ISequenceActions& actions, int argument)
{
    (actions.*operation)(argument > 0);
    return true;
}

// Nothing schedules SEQ_RESELECT and SEQ_REOPEN so far; their numbers are taken, so they work.
constexpr ActionRow kActions[] = {
    {SEQ_OPEN_SELECTED, Do<&ISequenceActions::OpenSelected>, 0, SEQ_IDLE},
    {SEQ_IDLE, nullptr, 0, SEQ_IDLE},
    {SEQ_SETTLE, nullptr, 0, SEQ_IDLE},
    {SEQ_SKIP_FORWARD, DoSeconds<&ISequenceActions::SkipForward>, 0, SEQ_SETTLE},
    {SEQ_SKIP_BACK, DoSeconds<&ISequenceActions::SkipBack>, 0, SEQ_SETTLE},
    {SEQ_RESELECT, Do<&ISequenceActions::Reselect>, kSettleTicks, SEQ_SETTLE},
    {SEQ_REOPEN, Do<&ISequenceActions::Reopen>, 0, SEQ_SETTLE},
    {SEQ_OPEN_LIST_ENTRY, [](ISequenceActions& actions, int) { return actions.OpenListEntry(); }, 0, SEQ_IDLE},
    {SEQ_END_OF_FILE, Do<&ISequenceActions::EndOfFileReached>, kSettleTicks, SEQ_SETTLE},
    {SEQ_NEXT_CHAPTER, Do<&ISequenceActions::JumpToNextChapter>, 0, SEQ_SETTLE},
    {SEQ_PREV_CHAPTER, DoRepeated<&ISequenceActions::JumpToPrevChapter>, 0, SEQ_SETTLE},
    {SEQ_NEXT_BOOKMARK, Do<&ISequenceActions::JumpToNextBookmark>, 0, SEQ_SETTLE},
    {SEQ_PREV_BOOKMARK, DoRepeated<&ISequenceActions::JumpToPrevBookmark>, 0, SEQ_SETTLE},
};
constexpr int kActionCount = sizeof kActions / sizeof kActions[0];

constexpr bool RowsStandAtTheirNumbers()
{
    for (int i = 0; i < kActionCount; ++i) {
        if (kActions[i].state != i) {
            return false;
        }
    }
    return true;
}
static_assert(RowsStandAtTheirNumbers());

constexpr float kHeldBits = 14155776.0F;    // 1,769,472 bytes: the ring of buffers and the decoder's own
constexpr unsigned kAssumedBitrate = 5120000;    // of a program stream whose rate is not known

}    // namespace

bool ActionMachine::Schedule(SequenceState state, int argument)
{
    if (m_State != SEQ_IDLE) {
        std::printf("ERROR!!! Already in a sequence\n");
        std::fflush(stdout);
        return false;
    }
    m_State = state;
    m_nArgument = argument;
    m_nDelay = 1;
    m_bBusy = true;
    return true;
}

void ActionMachine::Begin(SequenceState state, int delayTicks)
{
    m_State = state;
    m_nDelay = delayTicks;
    m_bBusy = false;    // the request that set it will never settle
}

void ActionMachine::GoIdle()
{
    Begin(SEQ_IDLE, 0);
}

void ActionMachine::Tick()
{
    if (m_nDelay != 0) {
        --m_nDelay;
        return;
    }
    if (m_State < 0 || m_State >= kActionCount) {
        return;    // an unknown number does nothing and stays
    }
    const ActionRow& row = kActions[m_State];
    if (row.act != nullptr && !row.act(m_Actions, m_nArgument)) {
        return;
    }
    if (row.state == SEQ_SETTLE) {
        m_bBusy = false;
    }
    m_nDelay = row.delayAfter;
    m_State = row.next;
}

int DrainTicks(unsigned bitsPerSecond)
{
    // A rate of zero means that nothing is open any more or nothing was measured: wait as for the engine's
    // own first estimate.
    const auto rate = static_cast<float>(bitsPerSecond == 0 ? kAssumedBitrate : bitsPerSecond);
    return static_cast<int>(kHeldBits / rate * 10.0F);    // at most 141,557,760, at one bit a second
}
