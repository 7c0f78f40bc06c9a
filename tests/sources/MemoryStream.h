// A stream on bytes in memory that counts what is read.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "platform/CascadeStream.h"

class MemoryStream : public CascadeStream {
public:
    explicit MemoryStream(std::string bytes)
        : m_Bytes(std::move(bytes))
    {
    }

    unsigned long long GetSize() override { return m_Bytes.size(); }
    unsigned long long GetPosition() override { return m_nPosition; }
    bool SeekToPosition(unsigned long long position) override
    {
        if (position > m_Bytes.size()) {
            return false;
        }
        m_nPosition = position;
        return true;
    }
    unsigned long ReadBytes(unsigned long count, void* buffer) override
    {
        const size_t got = std::min<size_t>(count, m_Bytes.size() - m_nPosition);
        std::memcpy(buffer, m_Bytes.data() + m_nPosition, got);
        m_nPosition += got;
        m_nRead += got;
        return got;
    }
    size_t BytesRead() const { return m_nRead; }

private:
    std::string m_Bytes;
    size_t m_nPosition = 0;
    size_t m_nRead = 0;
};
