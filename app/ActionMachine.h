// The deferred actions: every skip, jump and change of file is asked for by a key or a command, and done a
// tick later, one at a time. Knows neither screen nor engine.
//
// Units:   ticks of 100 ms; skips in seconds.
// Errors:  a request that comes while another is pending is dropped and told on standard output.
// Threads: the user-interface thread. An action may block for a server; nothing enters the machine meanwhile.
#pragma once

// The numbers are fixed: they are stored and compared.
enum SequenceState : int {
    SEQ_OPEN_SELECTED = 0,
    SEQ_IDLE = 1,
    SEQ_SETTLE = 2,
    SEQ_SKIP_FORWARD = 3,
    SEQ_SKIP_BACK = 4,
    SEQ_RESELECT = 5,
    SEQ_REOPEN = 6,
    SEQ_OPEN_LIST_ENTRY = 7,
    SEQ_END_OF_FILE = 8,
    SEQ_NEXT_CHAPTER = 9,
    SEQ_PREV_CHAPTER = 10,
    SEQ_NEXT_BOOKMARK = 11,
    SEQ_PREV_BOOKMARK = 12,
};

// What the actions do.
class ISequenceActions {
public:
    virtual ~ISequenceActions() = default;
    virtual void OpenSelected() = 0;
    virtual bool OpenListEntry() = 0;    // false: this one failed, the next is tried at the next tick
    virtual void SkipForward(int seconds) = 0;
    virtual void SkipBack(int seconds) = 0;
    virtual void Reselect() = 0;
    virtual void Reopen() = 0;
    virtual void EndOfFileReached() = 0;
    virtual void JumpToNextChapter() = 0;
    virtual void JumpToPrevChapter(bool repeated) = 0;
    virtual void JumpToNextBookmark() = 0;
    virtual void JumpToPrevBookmark(bool repeated) = 0;
};

class ActionMachine {
public:
    explicit ActionMachine(ISequenceActions& actions)
        : m_Actions(actions)
    {
    }

    // The request of a key or a command: runs after one tick of delay, and no other is taken and no key
    // heard until it has settled. False: another is pending, nothing is changed.
    bool Schedule(SequenceState state, int argument = 0);

    // A step that goes before whatever is pending. Keys are heard meanwhile.
    void Begin(SequenceState state, int delayTicks);

    void GoIdle();    // forgets what is pending
    void Tick();

    SequenceState State() const { return m_State; }
    int Delay() const { return m_nDelay; }
    bool IsBusy() const { return m_bBusy; }

private:
    ISequenceActions& m_Actions;
    SequenceState m_State = SEQ_IDLE;
    int m_nArgument = 0;
    int m_nDelay = 1;
    bool m_bBusy = false;
};

// Ticks until the decoder has played what it holds when the stream has ended.
int DrainTicks(unsigned bitsPerSecond);
