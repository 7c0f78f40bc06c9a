#include "host/screen/EventQueue.h"

#include <algorithm>

#include "host/base/UiQueue.h"

namespace screen {

EventQueue& EventQueue::Instance()
{
    static EventQueue queue;
    return queue;
}

void EventQueue::Push(Event event)
{
    {
        const std::lock_guard lock(m_Mutex);
        m_Events.push_back(std::move(event));
    }
    host::WakeUi();
}

size_t EventQueue::Size() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Events.size();
}

bool EventQueue::Take(Event& event)
{
    const std::lock_guard lock(m_Mutex);
    if (m_Events.empty()) {
        return false;
    }
    event = std::move(m_Events.front());
    m_Events.pop_front();
    return true;
}

bool EventQueue::TakeInput(Event& event)
{
    const std::lock_guard lock(m_Mutex);
    const auto found = std::find_if(m_Events.begin(), m_Events.end(), [](const Event& queued) { return queued.IsInput(); });
    if (found == m_Events.end()) {
        return false;
    }
    event = std::move(*found);
    m_Events.erase(found);
    return true;
}

void EventQueue::PutBack(Event event)
{
    const std::lock_guard lock(m_Mutex);
    m_Events.push_front(std::move(event));
}

void EventQueue::Clear()
{
    const std::lock_guard lock(m_Mutex);
    m_Events.clear();
}

}    // namespace screen
