#include "platform/CascadeInput.h"

#include "host/screen/EventQueue.h"
#include "host/screen/HostLoop.h"

using screen::Event;
using screen::EventQueue;

namespace {

void Push(Event::Kind kind, unsigned long key)
{
    Event event;
    event.kind = kind;
    event.key = uint32_t(key);
    EventQueue::Instance().Push(std::move(event));
}

}    // namespace

void CascadeInput::DispatchKeyDown(unsigned long key)
{
    Push(Event::Kind::kKeyDown, key);
}
void CascadeInput::DispatchKeyUp(unsigned long key)
{
    Push(Event::Kind::kKeyUp, key);
}

void CascadeInput::NotifyScreenActivity()
{
    if (screen::HostLoop* const loop = screen::HostLoop::Current()) {
        loop->KeepScreenAwake();
    }
}
