// A cursor on the files of one recording that works from the folder as it is now: every step scans it
// again, so files that come or go during playback are seen.
//
// Units:     sizes are bytes, 64-bit.
// Errors:    null or 0, told on standard output.
// Threads:   one thread at a time per object. Steps and sizes block on the disk.
// Ownership: a value. The texts that it answers live until the cursor moves.
#pragma once

#include "sources/FileSearch.h"

class SmartFileList : public FileSearch {
public:
    void Create(const char* name);    // nothing is scanned yet

    const CascadeString& GetCurrent() const { return m_Current; }    // full path
    const CascadeString& GetCurrentName() const { return m_CurrentName; }    // without folder

    // The full path of the member after, or before, the current one; null, and the cursor stays, when there is none.
    const char* GetNextFile();
    const char* GetPrevFile();

    unsigned long long GetCurrentFileSize() const;

    // Size of all members. `throughCurrent` becomes the size of those up to and with the current one, and is
    // left alone when the current file is no member. The cursor stays.
    unsigned long long GetTotalFileSize(long long& throughCurrent) const;

private:
    const char* StepTo(const Members& members, int index);

    CascadeString m_Current;
    CascadeString m_CurrentName;
};
