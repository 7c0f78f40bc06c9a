// The files of one recording as they were at one moment, with their sizes: maps a byte of the whole to a
// file and a byte of that file.
//
// Units:     sizes and offsets are bytes, 64-bit.
// Errors:    a folder without members gives an empty list and a line on standard output; a member whose
//            size cannot be read counts 0 bytes.
// Threads:   one thread at a time per object. Create blocks on the disk: one scan and one status a member.
// Ownership: a value.
#pragma once

#include <cstddef>
#include <vector>

#include "sources/FileSearch.h"

struct FileListEntry {
    CascadeString name;    // without folder
    unsigned long long size = 0;
};

class FileList : public FileSearch {
public:
    // `startName`, when not null and not empty, is the member the list begins with; the list is empty when there is none of that name.
    void Create(const char* name, const char* startName);

    const std::vector<FileListEntry>& GetEntries() const { return m_Entries; }
    unsigned long long GetTotalSize() const { return m_nTotalSize; }

    // The member that holds byte `offset` of the whole. False, and nothing is changed, at the end and beyond.
    [[nodiscard]] bool GetFileAt(unsigned long long offset, CascadeString* fileName, unsigned long long* offsetInFile) const;

private:
    std::vector<FileListEntry> m_Entries;
    unsigned long long m_nTotalSize = 0;
};
