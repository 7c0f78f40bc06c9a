// The platform's text type: UTF-8 bytes, value semantics.
//
// Units:     lengths and positions are bytes. A null `const char*` is taken as the empty text.
// Errors:    positions outside the text are clamped; nothing throws but out-of-memory.
// Threads:   a value; no sharing between instances.
// Ownership: owns its bytes. `Text()` is valid until the next change.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class CascadeString {
public:
    static constexpr size_t kWhole = static_cast<size_t>(-1);

    CascadeString() = default;
    CascadeString(const char* text) : m_Text(text == nullptr ? "" : text) {}
    CascadeString(std::string text) : m_Text(std::move(text)) {}
    CascadeString(std::string_view text) : m_Text(text) {}

    const char* Text() const { return m_Text.c_str(); }
    operator const char*() const { return m_Text.c_str(); }
    const std::string& Str() const { return m_Text; }

    size_t GetLength() const { return m_Text.size(); }
    bool IsEmpty() const { return m_Text.empty(); }
    void Empty() { m_Text.clear(); }

    // 0 when equal, below 0 when this sorts first. `caseSensitive` false folds ASCII letters only.
    // `collate` is kept for the platform's sake and has no effect. At most `length` bytes of both are looked at.
    int Compare(const char* other, bool caseSensitive, bool collate = false, size_t length = kWhole) const;

    // Whether `part` occurs anywhere; the empty part always does. `wholeWord` is kept for the platform's
    // sake and has no effect.
    bool Contains(const char* part, bool caseSensitive, bool wholeWord = false) const;

    CascadeString Left(size_t count) const { return CascadeString(std::string_view(m_Text).substr(0, count)); }
    CascadeString Right(size_t count) const;
    CascadeString From(size_t start) const;

    CascadeString& operator+=(const char* text);
    CascadeString& operator+=(char c)
    {
        m_Text += c;
        return *this;
    }

    // Equality is byte-wise and minds case.
    friend bool operator==(const CascadeString& a, const CascadeString& b) { return a.m_Text == b.m_Text; }
    friend bool operator==(const CascadeString& a, const char* b) { return a.m_Text == (b == nullptr ? "" : b); }
    friend CascadeString operator+(const CascadeString& a, const CascadeString& b) { return CascadeString(a.m_Text + b.m_Text); }
    friend CascadeString operator+(const CascadeString& a, const char* b) { return CascadeString(a.m_Text + (b == nullptr ? "" : b)); }
    friend CascadeString operator+(const char* a, const CascadeString& b) { return CascadeString((a == nullptr ? "" : a) + b.m_Text); }

    // printf into a new text.
    static CascadeString Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

private:
    std::string m_Text;
};
