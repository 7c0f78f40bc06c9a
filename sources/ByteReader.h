// Bounds-checked reads from bytes that come from a disc or a network.
//
// Units:     offsets and sizes are bytes from the first byte of the view.
// Errors:    a read that does not fit answers 0 (or the empty text) and latches Overrun, so a structure is
//            read field by field and asked once.
// Threads:   a value; one thread at a time per object.
// Ownership: a view; the bytes must outlive it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

class ByteReader {
public:
    constexpr explicit ByteReader(std::span<const uint8_t> bytes)
        : m_Bytes(bytes)
    {
    }

    constexpr size_t Size() const { return m_Bytes.size(); }
    constexpr bool Overrun() const { return m_bOverrun; }

    constexpr uint8_t U8(size_t offset) { return Fits(offset, 1) ? m_Bytes[offset] : uint8_t {0}; }
    constexpr uint16_t BE16(size_t offset) { return static_cast<uint16_t>(Big(offset, 2)); }
    constexpr uint32_t BE32(size_t offset) { return Big(offset, 4); }
    constexpr uint16_t LE16(size_t offset) { return static_cast<uint16_t>(Little(offset, 2)); }
    constexpr uint32_t LE32(size_t offset) { return Little(offset, 4); }

    // The characters from `offset` up to a zero byte or the end of the view.
    std::string_view Text(size_t offset)
    {
        if (!Fits(offset, 0)) {
            return {};
        }
        const auto rest = m_Bytes.subspan(offset);
        const auto end = std::find(rest.begin(), rest.end(), uint8_t {0});
        return {reinterpret_cast<const char*>(rest.data()), static_cast<size_t>(end - rest.begin())};
    }

    // A view of a part; empty, and an overrun of this one, when the part does not fit.
    constexpr ByteReader Sub(size_t offset, size_t size)
    {
        return ByteReader(Fits(offset, size) ? m_Bytes.subspan(offset, size) : std::span<const uint8_t>());
    }

private:
    constexpr bool Fits(size_t offset, size_t size)
    {
        const bool fits = offset <= m_Bytes.size() && m_Bytes.size() - offset >= size;
        m_bOverrun = m_bOverrun || !fits;
        return fits;
    }
    constexpr uint32_t Big(size_t offset, size_t size)
    {
        uint32_t value = 0;
        for (size_t i = 0; Fits(offset, size) && i < size; ++i) {
            value = value << 8 | m_Bytes[offset + i];
        }
        return value;
    }
    constexpr uint32_t Little(size_t offset, size_t size)
    {
        uint32_t value = 0;
        for (size_t i = size; Fits(offset, size) && i > 0; --i) {
            value = value << 8 | m_Bytes[offset + i - 1];
        }
        return value;
    }

    std::span<const uint8_t> m_Bytes;
    bool m_bOverrun = false;
};
