// Folders of an ISO 9660 image (ECMA-119), read one folder at a time.
//
// Units:     positions and sizes are bytes; positions count from the first byte of the image.
// Errors:    what cannot be read is left out. Nothing is printed.
// Threads:   one thread at a time per object.
// Ownership: an entry owns everything below it; IsoDirectory borrows the image stream and moves its position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/CascadeArrays.h"
#include "platform/CascadeStream.h"
#include "platform/CascadeString.h"

// One file or folder. A folder has its entries only once it has been read.
struct IsoDirectoryEntry {
    CascadeString name;    // without the version behind ";"
    unsigned long long size = 0;
    unsigned long long position = 0;
    bool isDirectory = false;
    std::vector<std::unique_ptr<IsoDirectoryEntry>> directories;
    std::vector<std::unique_ptr<IsoDirectoryEntry>> files;

    // The first of that name, whatever its case; null: none. It lives as long as this entry.
    IsoDirectoryEntry* GetDirectory(const char* wanted) const;
    IsoDirectoryEntry* GetFile(const char* wanted) const;
    // Appends the files whose name the shell pattern fits anywhere, whatever its case, in the folder's order.
    void GetFiles(const char* pattern, CascadeTemplateArray<IsoDirectoryEntry*>& out) const;
};

class IsoDirectory {
public:
    // ECMA-119 9.1: the part of a directory record before its identifier.
    static constexpr size_t kRecordHeaderSize = 33;

    // `blockSize` is the image's logical block size, by which it counts positions.
    IsoDirectory(CascadeStream& image, uint16_t blockSize)
        : m_Image(image)
        , m_nBlockSize(blockSize)
    {
    }

    // The entry that the root record of the volume descriptor describes.
    std::unique_ptr<IsoDirectoryEntry> ReadRoot(std::span<const uint8_t> record) const;

    // Fills in the entries of one folder, not of those below it: an image that says a folder holds itself
    // costs nothing. False when the read was interrupted; the entries are then incomplete.
    [[nodiscard]] bool ReadEntries(IsoDirectoryEntry& directory) const;

private:
    std::unique_ptr<IsoDirectoryEntry> Parse(std::span<const uint8_t> record) const;

    CascadeStream& m_Image;
    uint16_t m_nBlockSize;
};
