// The last five things that the viewer opened, the latest first.
//
// Units:     a slot that has not been used reads "Empty".
// Threads:   the user-interface thread.
// Ownership: values.
#pragma once

#include <array>
#include <cstddef>

#include "platform/CascadeString.h"

class RecentFiles {
public:
    static constexpr size_t kSlots = 5;
    static constexpr const char* kEmpty = "Empty";

    const CascadeString& operator[](size_t slot) const { return m_Slots.at(slot); }
    void Set(size_t slot, const CascadeString& path) { m_Slots.at(slot) = path; }

    // To the front; a path that is there already moves, else the oldest drops off.
    void Add(const CascadeString& path);

private:
    std::array<CascadeString, kSlots> m_Slots {kEmpty, kEmpty, kEmpty, kEmpty, kEmpty};
};
