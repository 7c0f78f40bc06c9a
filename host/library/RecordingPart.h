// A part of a recording, from a position on, for a demultiplexer that begins in the middle: no seeking, no index.
//
// Units:     bytes.
// Errors:    a read that fails or is stopped is the end; WasBroken tells it from an end.
// Threads:   one at a time; reads block on the disk.
// Ownership: borrows the descriptor, which outlives it.
#pragma once

#include <cstdint>
#include <functional>

extern "C" {
#include <libavformat/avformat.h>
}

namespace host {

class RecordingPart {
public:
    // At most `length` bytes are read; `stop` is asked before each read.
    RecordingPart(int fd, int64_t position, int64_t length, const std::function<bool()>& stop);
    ~RecordingPart();
    RecordingPart(const RecordingPart&) = delete;
    RecordingPart& operator=(const RecordingPart&) = delete;

    // The demultiplexer for what begins here: a transport stream, a program stream or MPEG video alone; null: none
    // of these within the first 256 KiB. Nothing else is ever opened, whatever the name or the bytes say.
    const AVInputFormat* Kind() const;

    // Null: out of memory.
    AVIOContext* Io() const { return m_pIo; }
    bool WasBroken() const { return m_bBroken; }

private:
    static int OnRead(void* self, uint8_t* bytes, int count);

    const int m_Fd;
    const int64_t m_nBegin;
    int64_t m_nPosition;
    const int64_t m_nEnd;
    const std::function<bool()>& m_Stop;
    bool m_bBroken = false;
    AVIOContext* m_pIo = nullptr;
};

}    // namespace host
