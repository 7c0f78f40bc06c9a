// A picture file that is decoded at the size at which it is shown: JPEG, and PNG, which thumbnail caches hold.
//
// Units:     pixels; three bytes each, red, green, blue, rows from the top without padding.
// Errors:    Open answers false for what is no picture and for what would take too long or too much memory: a
//            file above 64 MB, a side above 16,384 pixels, more than 100 million pixels (PNG: 25 million). That is
//            decided by the header, before anything is decoded. A damaged or truncated file gives what there is of it.
//            Nothing is printed.
// Threads:   one thread at a time per object; blocks on the disk.
// Ownership: owns the open file.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "platform/CascadeGeometry.h"

class CascadeJpegFile {
public:
    CascadeJpegFile();
    ~CascadeJpegFile();
    CascadeJpegFile(const CascadeJpegFile&) = delete;
    CascadeJpegFile& operator=(const CascadeJpegFile&) = delete;

    bool Open(const char* path);
    void Close();
    bool IsOpen() const { return m_pFile != nullptr; }

    unsigned GetImageWidth() const;    // of the file; 0 while none is open
    unsigned GetImageHeight() const;

    // Bytes that a picture of this size takes; 0 for one that GetBitmapData would refuse.
    size_t GetBitmapDataSize(unsigned width, unsigned height) const;

    // The whole picture, scaled to the rectangle's width and height; its left and top are 0. True as soon as a
    // row could be decoded. While `stop` becomes true the decoder gives up soon and answers false.
    bool GetBitmapData(const CascadeRect& rect, unsigned char* data, const std::atomic<bool>* stop = nullptr);

private:
    struct File;
    std::unique_ptr<File> m_pFile;
};
