// The part of an HTTP resource that is held in memory: a ring of the bytes around the read position.
//
// Units:     positions are bytes of the resource. At least kBehind bytes behind the read position stay, at
//            most kAhead bytes before it are taken.
// Threads:   none of its own; the owner's lock guards it.
// Ownership: owns its memory, which is taken with the first byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace host {

class HttpStreamWindow {
public:
    static constexpr size_t kBehind = 1024 * 1024;
    static constexpr size_t kAhead = 4 * 1024 * 1024;

    void Reset(uint64_t position);    // empty; `position` is the next byte expected
    uint64_t Begin() const { return m_nBegin; }
    uint64_t End() const { return m_nEnd; }
    bool Contains(uint64_t position) const { return position >= m_nBegin && position <= m_nEnd; }

    // How many bytes may be appended while the reader stands at `readPosition`.
    size_t Room(uint64_t readPosition) const;
    // Puts `length` bytes, at most the room, at the end; the oldest make place.
    void Append(const uint8_t* data, size_t length);
    // Copies what is held from `position` on, at most `length` bytes, and says how many.
    size_t Copy(uint64_t position, void* target, size_t length) const;

private:
    static constexpr size_t kCapacity = kBehind + kAhead;

    std::unique_ptr<uint8_t[]> m_Ring;    // byte of position p stands at p % kCapacity
    uint64_t m_nBegin = 0;
    uint64_t m_nEnd = 0;
};

}    // namespace host
