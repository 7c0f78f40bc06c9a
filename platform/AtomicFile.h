// The one way in which a file of the user's is written: into a new file of the same folder, flushed to
// the medium, renamed over the old one. A power cut leaves the old file or the new one, never half.
//
// Errors:    Commit answers false and leaves the old file untouched and no new one behind; `Error()` is
//            the errno of the step that failed.
// Threads:   one thread at a time; blocks on the disk.
// Ownership: owns the temporary file until Commit; the destructor removes it.
#pragma once

#include <string>
#include <string_view>

class AtomicFile {
public:
    explicit AtomicFile(const char* path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    bool Open();                          // false: the folder cannot be written
    bool Write(std::string_view bytes);
    [[nodiscard]] bool Commit();
    int Error() const { return m_nError; }

private:
    std::string m_Path;
    std::string m_TemporaryPath;
    int m_Fd = -1;
    int m_nError = 0;
};
