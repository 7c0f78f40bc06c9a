// What is to be delivered to the application, each as an event of its own, in the order it came.
//
// Threads:   Push may be called from any thread; Take on the user-interface thread.
// Ownership: owns what is queued; Clear drops it undelivered.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>

#include "platform/CascadeWormhole.h"

namespace screen {

struct Event {
    enum class Kind { kKeyDown, kKeyUp, kText, kMessage, kAction };
    Kind kind = Kind::kAction;
    uint32_t key = 0;    // remote code; 0: a keyboard key that stands for none
    int physical = 0;    // the keyboard's own number of the key; 0: injected
    bool repeat = false;
    std::string text;    // what the key types, when it types something
    CascadeMessage message;
    std::function<void()> action;

    bool IsInput() const { return kind == Kind::kKeyDown || kind == Kind::kKeyUp || kind == Kind::kText; }
};

class EventQueue {
public:
    static EventQueue& Instance();

    void Push(Event event);    // wakes the loop
    size_t Size() const;
    bool Take(Event& event);
    bool TakeInput(Event& event);    // the first input, past everything else
    void PutBack(Event event);    // in front
    void Clear();

private:
    mutable std::mutex m_Mutex;
    std::deque<Event> m_Events;    // guarded by m_Mutex
};

}    // namespace screen
