// Marks in a recording: a file of the sequence and a byte position in it, kept in order.
//
// Units:     positions are bytes from the start of the named file.
// Threads:   the user-interface thread.
// Ownership: the list owns its records; what Get answers lives until it is cleared.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "platform/CascadeString.h"

struct tagBookmark {
    CascadeString name;        // without folder
    long long position = 0;
};

class BookmarkList {
public:
    void AddBookmark(const char* name, long long position);    // after all records that are equal
    void AddBookmarks(std::vector<tagBookmark> marks);         // as one after the other, whatever their order and number
    int LocateBookmark(const tagBookmark* key) const;          // first record that sorts strictly after the key
    int GetNext(const tagBookmark* key) const;                 // wraps to 0; -1 when empty
    int GetPrev(const tagBookmark* key, bool skipOne) const;   // wraps to the last; -1 when empty
    tagBookmark* Get(int index) const;                         // null outside the list
    int Size() const { return static_cast<int>(m_Marks.size()); }
    bool ClearBookmark(int index);
    void Clear();
    void Save(char key, std::string& out) const;               // one "%c %s@%lld\n" line a record

private:
    std::vector<std::unique_ptr<tagBookmark>> m_Marks;
};
