#include "host/decoder/SegmentOffsets.h"

namespace host {

void SegmentOffsets::Reset()
{
    std::lock_guard lock(m_Mutex);
    m_Entries = {};
}

std::optional<int64_t> SegmentOffsets::Get(unsigned segment) const
{
    std::lock_guard lock(m_Mutex);
    const Entry& entry = m_Entries[segment % m_Entries.size()];
    if (!entry.used || entry.segment != segment) {
        return std::nullopt;
    }
    return entry.offset;
}

void SegmentOffsets::Set(Opening::Number opening, unsigned segment, int64_t offset)
{
    std::lock_guard lock(m_Mutex);
    if (!m_Opening.Is(opening)) {
        return;
    }
    m_Entries[segment % m_Entries.size()] = {true, segment, offset};
}

}    // namespace host
