// A named piece of memory that is handed to the platform.
//
// Units:     bytes.
// Errors:    Open and MapLock answer false or null.
// Threads:   one thread at a time per object.
// Ownership: the zone lives until the last object that opened its name closes it.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/CascadeString.h"

class CascadeSharedMemZone {
public:
    CascadeSharedMemZone();
    ~CascadeSharedMemZone();
    bool Open(const char* name, size_t size, bool create);
    void* MapLock();
    void Unlock();
    void Close();
    size_t GetSize() const;

private:
    struct Zone;
    std::shared_ptr<Zone> m_pZone;
};
