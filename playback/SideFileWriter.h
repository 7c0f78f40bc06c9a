// Writes side files on a thread of its own, so that a slow medium holds up neither the picture nor the keys.
//
// Errors:    what cannot be written is told on standard output, once for a recording. A file of that name
//            that is no side file is never overwritten.
// Threads:   one thread calls; Save returns at once. Begin, Finish and the destructor wait for the medium, and
//            give up one that gives no sign of life (CascadeFSObject::IsAwake).
// Ownership: owns its thread, which starts with the first text and sleeps between them. A thread that was given
//            up with its medium keeps its own state and ends when it can.
#pragma once

#include <memory>
#include <string>

#include "platform/CascadeString.h"

class SideFileWriter {
public:
    SideFileWriter();
    ~SideFileWriter();    // what is still waiting is written
    SideFileWriter(const SideFileWriter&) = delete;
    SideFileWriter& operator=(const SideFileWriter&) = delete;

    void Begin(const CascadeString& path);    // another recording: texts go to this file from now on
    void Save(std::string text);    // a text that has not been begun gives way to a newer one
    void Finish(std::string text);    // as Save; all is done when it returns

private:
    struct State;
    static void WriteAll(State& state);
    static void Write(State& state, const CascadeString& path, const std::string& text);
    bool Post(std::string text);
    void WaitUntilIdle();

    std::shared_ptr<State> m_pState;    // shared with the thread alone
    bool m_bStarted = false;    // the caller's alone
};
