// A stream on an "http://" resource, read ahead by a thread of its own into a bounded buffer.
//
// Units:     time-outs are microseconds, positions bytes.
// Errors:    Open answers false: not found, refused, timed out, redirected anywhere but to http, or ended
//            from outside. A read that the server never answers times out and then counts as the end.
// Threads:   as CascadeStream. Open and ReadBytes block. On the user-interface thread the application
//            loop goes on turning meanwhile (CascadeApp::IsWaiting); on the feeding thread the wait ends
//            at once when the decoder is paused or closed.
// Ownership: owns its connection, its thread and its buffer.
#pragma once

#include <memory>

#include "platform/CascadeStream.h"

class CascadeHTTPStream : public CascadeStream {
public:
    CascadeHTTPStream();
    ~CascadeHTTPStream() override;

    void SetConnectTimeout(unsigned long microseconds);    // default 15 s
    void SetReceiveTimeout(unsigned long microseconds);    // longest silence of the server, default 15 s
    [[nodiscard]] bool Open(const char* url);

    // Bytes from the position to the end, as the server states them: right after Open the size of the
    // resource. 0 when the server does not say.
    unsigned long long GetSize() override;
    unsigned long long GetPosition() override;

    // Answers at once; the next read waits for the server. Inside what is buffered (at least 1 MiB behind
    // the position is kept) nothing is asked again. False beyond a known size.
    bool SeekToPosition(unsigned long long position) override;
    unsigned long ReadBytes(unsigned long count, void* buffer) override;
    bool WasInterrupted() const override;

private:
    class Impl;
    std::unique_ptr<Impl> m_pImpl;
};
