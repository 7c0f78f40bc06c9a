// What a small text file says about the recording or folder that it stands beside.
//
// Errors:    without such a file everything but the title is empty; lines that are not understood are passed over.
// Threads:   one thread at a time per object; finding and reading blocks on the disk.
// Ownership: a value.
#pragma once

#include "platform/CascadeString.h"

class EInfoFile {
public:
    EInfoFile() = default;
    explicit EInfoFile(const char* path) { ParseFile(path); }
    virtual ~EInfoFile() = default;
    EInfoFile(const EInfoFile&) = default;
    EInfoFile(EInfoFile&&) = default;
    EInfoFile& operator=(const EInfoFile&) = default;
    EInfoFile& operator=(EInfoFile&&) = default;

    // The information file of a recording or folder, empty when there is none; `title` is what to call what it
    // tells about. A recording without one of its own has that of its folder, under the folder's name.
    static CascadeString GetAssociatedInfoFile(const char* path, CascadeString& title);

    void ParseFile(const char* path);    // of a recording or folder: finds and reads what belongs to it
    void ParseText(const CascadeString& text);    // as TextBytes::Decode answers it
    void Reset();

    // A recording had none of its own: all but `file` is its folder's.
    bool IsOfParentFolder() const { return m_bOfParentFolder; }

    CascadeString title;
    CascadeString description;
    CascadeString genre;
    CascadeString rating;
    CascadeString director;
    CascadeString writer;
    CascadeString year;
    CascadeString actors;
    CascadeString file;    // as given to ParseFile

private:
    static CascadeString Find(const char* path, CascadeString& title, bool& ofParentFolder);

    bool m_bOfParentFolder = false;
};
