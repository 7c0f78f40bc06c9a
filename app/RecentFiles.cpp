#include "app/RecentFiles.h"

#include <algorithm>

// The last slot is not searched: what is only there drops off and comes back in front, which is the same.
void RecentFiles::Add(const CascadeString& path)
{
    const CascadeString added = path;    // may be one of the slots
    const auto last = m_Slots.end() - 1;
    const auto found = std::find(m_Slots.begin(), last, added);
    std::move_backward(m_Slots.begin(), found, found + 1);
    m_Slots[0] = added;
}
