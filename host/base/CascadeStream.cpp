#include "platform/CascadeStream.h"

#include <algorithm>
#include <utility>

namespace {
constexpr unsigned long kLineBlock = 512;
constexpr size_t kLongestLine = size_t {1} << 20;    // a "text" without line ends comes in pieces of this size
}    // namespace

bool CascadeStream::GetLine(CascadeString& line)
{
    const unsigned long long start = GetPosition();
    std::string text;
    char block[kLineBlock];
    while (text.size() < kLongestLine) {
        const unsigned long count = ReadBytes(kLineBlock, block);
        if (count == 0) {
            // After an interrupt the same line may be asked for again, so nothing of it is taken.
            if (text.empty() || (WasInterrupted() && SeekToPosition(start))) {
                return false;
            }
            break;
        }
        const char* const end = std::find(block, block + count, '\n');
        const auto length = static_cast<size_t>(end - block);
        const unsigned long long next = start + text.size() + length + 1;
        text.append(block, length);
        if (length < count) {
            if (length + 1 < count && !SeekToPosition(next)) {
                return false;
            }
            if (!text.empty() && text.back() == '\r') {
                text.pop_back();
            }
            break;
        }
    }
    line = CascadeString(std::move(text));
    return true;
}

void CascadeStream::AddMetadata(const char* key, const char* value)
{
    if (key != nullptr) {
        m_Metadata[key] = value == nullptr ? "" : value;
    }
}

void CascadeStream::RemoveMetadata(const char* key)
{
    if (key != nullptr) {
        m_Metadata.erase(key);
    }
}

void CascadeStream::RemoveAllMetadata()
{
    m_Metadata.clear();
}

bool CascadeStream::LookupMetadata(const char* key, CascadeString& value) const
{
    const auto found = key == nullptr ? m_Metadata.end() : m_Metadata.find(key);
    if (found == m_Metadata.end()) {
        return false;
    }
    value = CascadeString(found->second);
    return true;
}
