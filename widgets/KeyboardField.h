// The text that is typed on the screen's keyboard.
//
// Units:   characters are Unicode code points of UTF-8; nothing is ever cut inside one.
// Errors:  what is not a printable character is not taken.
// Threads: one thread at a time.
#pragma once

#include "platform/CascadeString.h"

class KeyboardField {
public:
    explicit KeyboardField(size_t maxCharacters)
        : m_nMax(maxCharacters)
    {
    }

    void SetText(const char* utf8);
    bool Append(const char* utf8);    // every character that can be taken; false when none was
    bool Backspace();    // false: there is nothing left
    const CascadeString& Text() const { return m_Text; }
    size_t Characters() const;
    CascadeString Dots() const;    // as many as characters

private:
    size_t m_nMax;
    CascadeString m_Text;
};
