#include "platform/CascadeSharedMemZone.h"

#include <sys/mman.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>

// The platform and the player are one process here, so a zone is found by name in a table of this process.
struct CascadeSharedMemZone::Zone {
    void* memory = MAP_FAILED;
    size_t size = 0;
    std::recursive_mutex mutex;    // held from MapLock to Unlock
    std::atomic<std::thread::id> holder {};
    int depth = 0;    // guarded by mutex

    explicit Zone(size_t bytes)
        : memory(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
        , size(bytes)
    {
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;
    ~Zone()
    {
        if (memory != MAP_FAILED) {
            munmap(memory, size);
        }
    }
    void Unlock()
    {
        if (holder.load() != std::this_thread::get_id()) {
            return;    // not locked by the caller
        }
        if (--depth == 0) {
            holder = std::thread::id();
        }
        mutex.unlock();
    }
};

CascadeSharedMemZone::CascadeSharedMemZone() = default;

CascadeSharedMemZone::~CascadeSharedMemZone()
{
    Close();
}

bool CascadeSharedMemZone::Open(const char* name, size_t size, bool create)
{
    static std::mutex tableMutex;
    static std::map<std::string, std::weak_ptr<Zone>> table;

    if (name == nullptr) {
        return false;
    }
    std::shared_ptr<Zone> zone;
    {
        const std::lock_guard lock(tableMutex);
        std::erase_if(table, [](const auto& entry) { return entry.second.expired(); });
        const auto found = table.find(name);
        if (found != table.end()) {
            zone = found->second.lock();
        }
        if (!zone && create && size > 0) {
            zone = std::make_shared<Zone>(size);
            if (zone->memory == MAP_FAILED) {
                return false;
            }
            table[name] = zone;
        }
    }
    if (!zone || zone->size < size) {
        return false;
    }
    Close();
    m_pZone = std::move(zone);
    return true;
}

void* CascadeSharedMemZone::MapLock()
{
    if (!m_pZone) {
        return nullptr;
    }
    m_pZone->mutex.lock();
    m_pZone->holder = std::this_thread::get_id();
    ++m_pZone->depth;
    return m_pZone->memory;
}

void CascadeSharedMemZone::Unlock()
{
    if (m_pZone) {
        m_pZone->Unlock();
    }
}

void CascadeSharedMemZone::Close()
{
    m_pZone.reset();
}

size_t CascadeSharedMemZone::GetSize() const
{
    return m_pZone ? m_pZone->size : 0;
}
