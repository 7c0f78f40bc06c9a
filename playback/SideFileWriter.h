// Writes side files on a thread of its own, so that a slow medium holds up neither the picture nor the keys.
//
// Errors:    what cannot be written is told on standard output, once for a recording. A file of that name
//            that is no side file is never overwritten.
// Threads:   one thread calls; Save returns at once, Finish and the destructor wait for the medium.
// Ownership: owns its thread, which starts with the first text and sleeps between them.
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>

#include "platform/CascadeString.h"
#include "platform/CascadeThread.h"

class SideFileWriter {
public:
    SideFileWriter() = default;
    ~SideFileWriter();    // what is still waiting is written
    SideFileWriter(const SideFileWriter&) = delete;
    SideFileWriter& operator=(const SideFileWriter&) = delete;

    void Begin(const CascadeString& path);    // another recording: texts go to this file from now on
    void Save(std::string text);    // a text that has not been begun gives way to a newer one
    void Finish(std::string text);    // as Save; all is done when it returns

private:
    static void Run(void* context) { static_cast<SideFileWriter*>(context)->WriteAll(); }
    bool Post(std::string text);
    void WriteAll();
    void Write(const CascadeString& path, const std::string& text);
    void WaitUntilIdle(std::unique_lock<std::mutex>& lock);

    CascadeThread m_Thread;
    bool m_bStarted = false;    // the caller's alone
    std::mutex m_Mutex;    // of all below
    std::condition_variable m_Changed;
    CascadeString m_Path;
    std::optional<std::string> m_Waiting;
    bool m_bWriting = false;
    bool m_bStop = false;
    bool m_bTold = false;    // that this recording's file cannot be written
};
