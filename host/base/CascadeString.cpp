#include "platform/CascadeString.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace {

// ASCII only, whatever the locale says: file names and stored texts compare the same on every box.
unsigned char Fold(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

std::string_view View(const char* text)
{
    return text == nullptr ? std::string_view() : std::string_view(text);
}

}    // namespace

int CascadeString::Compare(const char* other, bool caseSensitive, bool /*collate*/, size_t length) const
{
    const std::string_view a = std::string_view(m_Text).substr(0, length);
    const std::string_view b = View(other).substr(0, length);
    if (caseSensitive) {
        return a.compare(b);
    }
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        const int difference = Fold(a[i]) - Fold(b[i]);
        if (difference != 0) {
            return difference;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool CascadeString::Contains(const char* part, bool caseSensitive, bool /*wholeWord*/) const
{
    const std::string_view wanted = View(part);
    if (caseSensitive) {
        return m_Text.find(wanted) != std::string::npos;
    }
    const auto same = [](char a, char b) { return Fold(a) == Fold(b); };
    return wanted.empty() || std::search(m_Text.begin(), m_Text.end(), wanted.begin(), wanted.end(), same) != m_Text.end();
}

CascadeString CascadeString::Right(size_t count) const
{
    return From(m_Text.size() - std::min(count, m_Text.size()));
}

CascadeString CascadeString::From(size_t start) const
{
    return CascadeString(std::string_view(m_Text).substr(std::min(start, m_Text.size())));
}

CascadeString& CascadeString::operator+=(const char* text)
{
    m_Text += View(text);
    return *this;
}

CascadeString CascadeString::Format(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0) {
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return CascadeString(std::move(text));
}
