// Messages to the application's address, from any thread.
//
// Threads:   PostMessage may be called from any thread and never blocks; the message arrives on the
//            user-interface thread as CascadeApp::OnWormholeMessage, in the order of posting.
// Errors:    PostMessage answers false when nobody listens at the address.
// Ownership: the data is copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/CascadeString.h"

struct CascadeMessage {
    uint32_t id = 0;
    std::vector<unsigned char> data;
};

class CascadeWormhole {
public:
    explicit CascadeWormhole(const char* address) : m_Address(address) {}
    const CascadeString& GetAddress() const { return m_Address; }
    bool PostMessage(const char* address, uint32_t id, const void* data, size_t size);

private:
    CascadeString m_Address;
};
