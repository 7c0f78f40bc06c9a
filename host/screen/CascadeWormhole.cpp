#include "platform/CascadeWormhole.h"

#include <cstring>

#include "host/screen/EventQueue.h"
#include "host/screen/HostLoop.h"

bool CascadeWormhole::PostMessage(const char* address, uint32_t id, const void* data, size_t size)
{
    if (address == nullptr || std::strcmp(address, screen::kWormholeAddress) != 0 || !screen::HostLoop::IsListening()) {
        return false;
    }
    screen::Event event;
    event.kind = screen::Event::Kind::kMessage;
    event.message.id = id;
    if (data != nullptr) {
        const auto* const bytes = static_cast<const unsigned char*>(data);
        event.message.data.assign(bytes, bytes + size);
    }
    screen::EventQueue::Instance().Push(std::move(event));
    return true;
}
