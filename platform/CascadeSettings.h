// The platform's settings store: named sections of keys and values that outlive the program.
//
// Errors:    a read of an absent key answers the default; a write answers false when the section is
//            missing or the store cannot be written, and then changes nothing.
// Threads:   the user-interface thread.
// Ownership: opens the store; written values are on the medium when Flush, or the destructor, returns.
#pragma once

#include <memory>

#include "platform/CascadeString.h"

class CascadeSettings {
public:
    explicit CascadeSettings(const char* section);
    ~CascadeSettings();
    CascadeSettings(const CascadeSettings&) = delete;
    CascadeSettings& operator=(const CascadeSettings&) = delete;

    bool SectionExists() const;
    bool CreateSection();
    int ReadIntegerValue(const char* key, int defaultValue) const;
    CascadeString ReadStringValue(const char* key, const char* defaultValue) const;
    bool WriteIntegerValue(const char* key, int value);
    bool WriteStringValue(const char* key, const char* value);
    bool Flush();

private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};
