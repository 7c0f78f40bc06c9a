// Splits the name of one file of a recording, and decides which other files of its folder belong to it:
// VTS_01_1.VOB and VTS_01_2.VOB, clip1.mpg and clip2.mpg.
//
// Errors:    a folder that cannot be read, or holds no member, is told on standard output by the users of a scan.
// Threads:   one thread at a time per object. The rule of the scan under way is kept per thread, so scans
//            on the user-interface thread and on the decoder's thread never meet.
// Ownership: values. Between scans nothing is shared.
#pragma once

#include <dirent.h>

#include <cstddef>
#include <memory>

#include "platform/CascadeString.h"

class FileSearch {
public:
    // `name` is a file, or an "http://" resource or a location with "~", whose folder is never searched in a useful way.
    void Create(const char* name);

    const CascadeString& GetName() const { return m_Name; }    // as given
    const CascadeString& GetPath() const { return m_Path; }    // folder, without a trailing "/"
    const CascadeString& GetBase() const { return m_Base; }    // name without extension and trailing number
    const CascadeString& GetExt() const { return m_Ext; }    // without its dot

    // The filter of a folder scan, which carries no argument: the rule is in the words below. 1 accepts.
    static int FileSearchSelect(const dirent* entry);

    // The rule of the scan under way on this thread. The texts belong to the object that scans.
    static constinit thread_local const char* g_BaseFileSearch;
    static constinit thread_local size_t g_BaseFileSearchLen;
    static constinit thread_local const char* g_BaseExtSearch;
    static constinit thread_local size_t g_BaseExtSearchLen;
    static constinit thread_local bool g_IncludeMenuVOB;

protected:
    // The members of the sequence as the folder is now, in byte-wise name order.
    class Members {
    public:
        Members() = default;
        ~Members();
        Members(Members&& other) noexcept;
        Members& operator=(Members&&) = delete;

        int Count() const { return m_nCount; }    // below 0: the folder cannot be scanned
        const char* Name(int index) const { return m_pEntries[index]->d_name; }
        int Find(const char* name) const;    // -1: no member of that name
        int Folder() const { return m_Folder; }    // descriptor, for the status of the members

    private:
        friend class FileSearch;
        int m_Folder = -1;
        int m_nCount = -1;
        dirent** m_pEntries = nullptr;
    };
    Members Scan() const;

private:
    CascadeString m_Name;
    CascadeString m_Path;
    CascadeString m_Base;
    CascadeString m_Ext;
};
