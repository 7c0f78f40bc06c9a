// One title set of a DVD image, read as one program stream.
//
// Units:     positions and sizes are bytes, counted from the first byte of the first title file.
// Errors:    Open and SeekToPosition answer false; a failed seek changes nothing. ReadBytes answers fewer
//            bytes than asked for, 0 at the end, and never bytes of another place in the stead of those that
//            cannot be read. Nothing is printed.
// Threads:   the user-interface thread until streaming starts; then the feeding thread alone, until
//            PauseStreaming has returned. The folders of the image are read by the first operation that needs
//            them; after that GetPosition and GetSize may be asked from another thread.
// Ownership: owns the image and the directory tree; what GetIFOStream returns dies with Close and with the
//            choice of another title set.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/CascadeArrays.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeStream.h"
#include "platform/CascadeString.h"
#include "sources/FileInfo.h"
#include "sources/IsoDirectory.h"

class DVDISOStream : public CascadeStream {
public:
    using DirectoryEntry = IsoDirectoryEntry;

    // The information file of the title set. It has an image stream of its own, so that reading it does not
    // move the title's position.
    class IFOStream : public CascadeStream {
    public:
        IFOStream(const DirectoryEntry& entry, const char* imagePath);

        unsigned long long GetSize() override { return m_nSize; }
        unsigned long long GetPosition() override { return m_nPosition; }
        bool SeekToPosition(unsigned long long position) override;
        unsigned long ReadBytes(unsigned long count, void* buffer) override;
        bool WasInterrupted() const override { return m_Image.WasInterrupted(); }

    private:
        CascadeFileStream m_Image;
        unsigned long long m_nSize;
        std::atomic<unsigned long long> m_nPosition {0};
        unsigned long long m_nStart;    // in the image
    };

    ~DVDISOStream() override { Close(); }

    // Whether the location can be opened as an image.
    static bool IsISOFile(const CascadeString& location);

    // `location` is the image's path, or path + "~" + name of a title set. Without a name the largest title
    // set is played; so is a file whose own path holds a "~" never an image.
    [[nodiscard]] bool Open(const CascadeString& location);
    [[nodiscard]] bool Open(const CascadeFile& file, const char* titleSet);    // null: the largest
    void Close();
    bool IsOpen() const { return m_bOpen; }

    // The name of the largest title set, the lowest of equal ones; empty without any. With a `minSize` other
    // than 0 the title sets above it are appended to `out`, which may be null; the caller deletes them.
    CascadeString GetTitleSets(unsigned long long minSize, CascadeTemplateArray<FileInfo*>* out);
    void SetVTSRoot(const CascadeString& name);    // empty: the largest
    IFOStream* GetIFOStream();    // null: the title set has none

    unsigned long long GetSize() override;
    unsigned long long GetPosition() override { return m_nPosition; }
    bool SeekToPosition(unsigned long long position) override;
    unsigned long ReadBytes(unsigned long count, void* buffer) override;
    bool WasInterrupted() const override { return m_bInterrupted; }

private:
    // Title files that lie one behind the other in the image and are read as one piece.
    struct Run {
        unsigned long long start;    // in the stream
        unsigned long long position;    // in the image
        unsigned long long size;
    };

    bool ReadDescriptor();
    void ReadTree();
    void Choose();
    void AppendRun(const DirectoryEntry& entry);
    unsigned long ReadRun(const Run& run, unsigned long long offset, unsigned long count, unsigned char* to);

    CascadeString m_Url;    // the image's full path
    CascadeString m_VTSRoot;    // empty until chosen
    CascadeFileStream m_Image;
    std::unique_ptr<IFOStream> m_pIFOStream;
    CascadeTemplateArray<DirectoryEntry*> m_VOBs;    // of the title set with its menu, in the folder's order
    std::vector<Run> m_Runs;    // of the title alone
    std::array<uint8_t, 1395> m_Descriptor {};    // primary volume descriptor (ECMA-119 8.4), the part with named fields
    std::unique_ptr<DirectoryEntry> m_pRoot;
    DirectoryEntry* m_pVideoFolder = nullptr;    // VIDEO_TS, or the root of an image without it
    bool m_bOpen = false;
    bool m_bParsed = false;
    bool m_bChosen = false;
    bool m_bInterrupted = false;
    unsigned long long m_nTotalSize = 0;
    std::atomic<unsigned long long> m_nPosition {0};
};
