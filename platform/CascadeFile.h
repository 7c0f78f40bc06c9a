// Files, folders and folder entries of the platform.
//
// Units:     sizes are bytes, 64-bit. Paths are UTF-8 or whatever bytes the file system holds.
// Errors:    answers false, 0 or empty; nothing is printed.
// Threads:   one thread at a time per object. Operations block on the disk, on the user-interface thread and the
//            decoder's feed as IsAwake says; what gives up there answers that nothing is there.
// Ownership: values.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/CascadeString.h"

// A named object of the file system, which need not exist.
class CascadeFSObject {
public:
    // Decides which entries of a folder a scan keeps.
    class Selector {
    public:
        // A set of bits.
        enum SelectorTypeFilter : unsigned { kFiles = 1, kDirectories = 2, kFilesAndDirectories = 3 };
        virtual ~Selector() = default;
        virtual bool Match(CascadeFSObject& entry) = 0;
    };

    explicit CascadeFSObject(const char* path) : m_Path(path) {}
    virtual ~CascadeFSObject() = default;

    // Asks the disk or the server behind a path for a sign of life. On the user-interface thread the loop turns
    // when that takes long (CascadeApp::IsWaiting), and like the decoder's feed it gives up when its wait is
    // ended: false, and so after `patienceMs`, if that is not 0. Whatever the answer would be, and on every other
    // thread: true.
    static bool IsAwake(const char* path, uint32_t patienceMs = 0);

    static bool Exists(const char* path);
    bool Exists() const { return Exists(m_Path); }
    bool IsDirectory() const;    // follows links

    const CascadeString& GetPath() const { return m_Path; }     // as given
    CascadeString GetName() const;                              // last path component, without a trailing "/"
    CascadeString GetFullPath() const;                          // absolute: the working folder is put before a relative path; no link is resolved
    CascadeString GetParentPath() const;                        // folder that holds it, without a trailing "/" ("/" for a top entry); empty for "/" and ""

private:
    CascadeString m_Path;
};

class CascadeFile : public CascadeFSObject {
public:
    explicit CascadeFile(const char* path) : CascadeFSObject(path) {}
    CascadeString GetFilenameExtension() const;    // text of the name after its last dot; empty without one
};

class CascadeDirectory : public CascadeFSObject {
public:
    explicit CascadeDirectory(const char* path) : CascadeFSObject(path) {}
};

// The entries of one folder, read once at construction, "." and ".." left out, in ascending byte-wise
// name order, so that the numbered files of one recording stand next to each other.
class CascadeDirScanner {
public:
    explicit CascadeDirScanner(const char* folder, CascadeFSObject::Selector* selector = nullptr);
    size_t GetNumEntries() const { return m_Names.size(); }
    const CascadeString& GetEntryName(size_t index) const { return m_Names.at(index); }
    bool EntryIsDirectory(size_t index) const;    // asks the disk only where the scan did not tell; follows links

private:
    CascadeString m_Folder;
    std::vector<CascadeString> m_Names;
    std::vector<signed char> m_Kinds;    // 1 folder, 0 not, -1 the scan did not say
};
