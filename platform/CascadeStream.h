// Byte streams of the platform: the interface, and the one on a file.
//
// Units:     positions and sizes are bytes, 64-bit.
// Errors:    ReadBytes answers fewer bytes than asked for, 0 at the end or after an error;
//            SeekToPosition answers false and changes nothing. Nothing is printed.
// Threads:   one thread at a time reads and seeks; GetPosition and GetSize may be asked from another
//            thread while a read is under way and then answer a value that was right a moment ago.
// Ownership: closes what it opened in its destructor.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "platform/CascadeFile.h"
#include "platform/CascadeString.h"

class CascadeStream {
public:
    virtual ~CascadeStream() = default;

    virtual unsigned long long GetSize() = 0;
    virtual unsigned long long GetPosition() = 0;
    [[nodiscard]] virtual bool SeekToPosition(unsigned long long position) = 0;
    virtual unsigned long ReadBytes(unsigned long count, void* buffer) = 0;

    // Whether the last ReadBytes was cut off because its wait was ended from outside (the decoder is
    // being paused or closed, or the user-interface thread's wait was ended). Such a read has taken
    // nothing: the position stands where it stood, and the same read may be asked again.
    virtual bool WasInterrupted() const { return false; }

    // One text line without its line end; false at the end.
    virtual bool GetLine(CascadeString& line);

    virtual void AddMetadata(const char* key, const char* value);
    virtual void RemoveMetadata(const char* key);
    virtual void RemoveAllMetadata();
    virtual bool LookupMetadata(const char* key, CascadeString& value) const;

private:
    std::map<std::string, std::string> m_Metadata;
};

// A stream on a file of any size. A recording under way is waited for a short while at its end (at most 3 s,
// ended at once by pause and close) before a read is answered short: a file that has grown since it was
// opened and, on a thread whose waits can be ended (the decoder feed), one written in the last three seconds.
// A disk that wakes up or a share that is gone holds up no thread whose wait can be ended: an opening then
// fails, a read answers 0 and was interrupted.
class CascadeFileStream : public CascadeStream {
public:
    CascadeFileStream();
    ~CascadeFileStream() override;
    CascadeFileStream(const CascadeFileStream&) = delete;
    CascadeFileStream& operator=(const CascadeFileStream&) = delete;

    // Only regular files, block devices and links to them; a folder, a socket or a pipe is refused.
    [[nodiscard]] bool Open(const CascadeFile& file);
    void Close();
    bool IsOpen() const { return m_pFile != nullptr; }

    unsigned long long GetSize() override;    // as the file is now
    unsigned long long GetPosition() override;
    bool SeekToPosition(unsigned long long position) override;    // false beyond the end
    unsigned long ReadBytes(unsigned long count, void* buffer) override;
    bool WasInterrupted() const override { return m_bInterrupted; }

    struct File;    // the platform's own

private:
    bool MayBeGrowing() const;
    bool AwaitGrowth(unsigned char* to, unsigned long count, unsigned long long position, unsigned long& done);

    std::shared_ptr<File> m_pFile;
    std::atomic<unsigned long long> m_nPosition{0};
    unsigned long long m_nSizeAtOpen = 0;
    bool m_bInterrupted = false;
};
