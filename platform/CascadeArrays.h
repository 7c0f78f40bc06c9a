// Growable array of the platform and the tokens of a split text.
//
// Errors:    an index outside the array is a programming error and ends the program; callers test the size.
// Threads:   values; one thread at a time.
// Ownership: `CascadeTemplateArray<T*>` does not own what its pointers name; its user deletes.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <utility>
#include <vector>

#include "platform/CascadeString.h"

template <typename T> class CascadeTemplateArray {
public:
    size_t GetSize() const { return m_Items.size(); }
    bool IsEmpty() const { return m_Items.empty(); }
    void Append(T item) { m_Items.push_back(std::move(item)); }
    void InsertAt(size_t index, T item) { m_Items.insert(m_Items.begin() + static_cast<std::ptrdiff_t>(Checked(index, 1)), std::move(item)); }
    void RemoveAt(size_t index) { m_Items.erase(m_Items.begin() + static_cast<std::ptrdiff_t>(Checked(index, 0))); }
    void Empty() { m_Items.clear(); }
    T& operator[](size_t index) { return m_Items[Checked(index, 0)]; }
    const T& operator[](size_t index) const { return m_Items[Checked(index, 0)]; }
    auto begin() { return m_Items.begin(); }
    auto end() { return m_Items.end(); }
    auto begin() const { return m_Items.begin(); }
    auto end() const { return m_Items.end(); }

private:
    size_t Checked(size_t index, size_t extra) const
    {
        if (index >= m_Items.size() + extra) {
            std::abort();
        }
        return index;
    }
    std::vector<T> m_Items;
};

// The pieces of a text between any of the separator characters. Empty pieces are dropped, so "a;;b"
// gives two tokens and the empty text none.
class CascadeTokenArray {
public:
    CascadeTokenArray(const char* text, const char* separators);
    size_t GetSize() const { return m_Tokens.size(); }
    const CascadeString& operator[](size_t index) const { return m_Tokens.at(index); }

private:
    std::vector<CascadeString> m_Tokens;
};
