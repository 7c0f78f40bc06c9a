#include "host/network/HttpStreamWindow.h"

#include <algorithm>
#include <cstring>

namespace host {

void HttpStreamWindow::Reset(uint64_t position)
{
    m_nBegin = position;
    m_nEnd = position;
}

size_t HttpStreamWindow::Room(uint64_t readPosition) const
{
    const uint64_t ahead = m_nEnd - std::min(readPosition, m_nEnd);
    return ahead >= kAhead ? 0 : kAhead - static_cast<size_t>(ahead);
}

void HttpStreamWindow::Append(const uint8_t* data, size_t length)
{
    if (m_Ring == nullptr) {
        m_Ring = std::make_unique_for_overwrite<uint8_t[]>(kCapacity);
    }
    length = std::min(length, kCapacity);
    while (length != 0) {
        const auto at = static_cast<size_t>(m_nEnd % kCapacity);
        const size_t part = std::min(length, kCapacity - at);
        std::memcpy(m_Ring.get() + at, data, part);
        data += part;
        length -= part;
        m_nEnd += part;
    }
    if (m_nEnd - m_nBegin > kCapacity) {
        m_nBegin = m_nEnd - kCapacity;
    }
}

size_t HttpStreamWindow::Copy(uint64_t position, void* target, size_t length) const
{
    if (position < m_nBegin || position >= m_nEnd) {
        return 0;
    }
    const auto count = static_cast<size_t>(std::min<uint64_t>(length, m_nEnd - position));
    auto* bytes = static_cast<uint8_t*>(target);
    for (size_t done = 0; done < count;) {
        const auto at = static_cast<size_t>((position + done) % kCapacity);
        const size_t part = std::min(count - done, kCapacity - at);
        std::memcpy(bytes + done, m_Ring.get() + at, part);
        done += part;
    }
    return count;
}

}    // namespace host
