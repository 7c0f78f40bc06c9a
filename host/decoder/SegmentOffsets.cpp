#include "host/decoder/SegmentOffsets.h"

namespace host {

void SegmentOffsets::Reset()
{
    std::lock_guard lock(m_Mutex);
    m_Entries = {};
}

SegmentOffsets::Entry& SegmentOffsets::Slot(unsigned segment)
{
    Entry& entry = m_Entries[segment % m_Entries.size()];
    if (!entry.used || entry.segment != segment) {
        entry = Entry();
        entry.used = true;
        entry.segment = segment;
    }
    return entry;
}

const SegmentOffsets::Entry* SegmentOffsets::Find(unsigned segment) const
{
    const Entry& entry = m_Entries[segment % m_Entries.size()];
    return entry.used && entry.segment == segment ? &entry : nullptr;
}

std::optional<int64_t> SegmentOffsets::Get(unsigned segment) const
{
    std::lock_guard lock(m_Mutex);
    const Entry* entry = Find(segment);
    for (size_t steps = 0; entry != nullptr && steps < m_Entries.size(); ++steps) {
        if (entry->placed) {
            return entry->offset;
        }
        if (entry->verdict != SegmentVerdict::kHole) {
            break;
        }
        entry = Find(entry->before);
    }
    return std::nullopt;
}

void SegmentOffsets::Set(Opening::Number opening, unsigned segment, int64_t offset)
{
    std::lock_guard lock(m_Mutex);
    if (m_Opening.Is(opening)) {
        Entry& entry = Slot(segment);
        entry.offset = offset;
        entry.placed = true;
    }
}

void SegmentOffsets::Judge(Opening::Number opening, const SegmentVerdict& verdict)
{
    {
        std::lock_guard lock(m_Mutex);
        if (!m_Opening.Is(opening)) {
            return;
        }
        Entry& entry = Slot(verdict.segment);
        entry.verdict = verdict.kind;
        entry.before = verdict.before;
    }
    m_Judged.notify_all();
}

SegmentVerdict::Kind SegmentOffsets::VerdictOn(unsigned segment) const
{
    std::lock_guard lock(m_Mutex);
    const Entry* entry = Find(segment);
    return entry == nullptr ? SegmentVerdict::kNone : entry->verdict;
}

void SegmentOffsets::AwaitVerdict(Opening::Number opening, unsigned segment, Clock::time_point until)
{
    std::unique_lock lock(m_Mutex);
    m_Judged.wait_until(lock, until, [&] {
        const Entry* entry = Find(segment);
        return !m_Opening.Is(opening) || entry == nullptr || entry->verdict != SegmentVerdict::kDoubt;
    });
}

void SegmentOffsets::Kick()
{
    { std::lock_guard lock(m_Mutex); }
    m_Judged.notify_all();
}

}    // namespace host
