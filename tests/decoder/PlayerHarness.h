// A feeder that reads files one after the other, and a user-interface loop that shows its pictures.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>

#include "host/base/HostHooks.h"
#include "host/base/HostOptions.h"
#include "host/base/UiQueue.h"
#include "host/base/VideoOutput.h"
#include "platform/MPEGDecoder.h"
#include "tests/support/FakeUiLoop.h"
#include "tests/support/TestBytes.h"

namespace test {

using host::Clock;

inline std::string Fixture(const std::string& name)
{
    return NUVID_FIXTURES "/" + name;
}

inline std::string BytesOf(const std::string& name)
{
    return FileBytes(Fixture(name));
}

// Feeds bytes as the engine does: a short buffer at the end, then nothing, and the end is known when the
// buffer that held the last bytes is offered again.
class Feeder : public MPEGDecoder {
public:
    explicit Feeder(std::string bytes = {}) : m_Bytes(std::move(bytes)) {}
    ~Feeder() override { Close(); }

    bool Open(unsigned buffers = 8, unsigned size = 192512) { return NewOpen(buffers, size, 5, 1, 3, 1, true, true, true, true, 45000); }
    bool Start(bool program, unsigned video, unsigned audio, unsigned sub = 0, bool ac3 = false)
    {
        return Open() && SelectPIDs(program, video, video, audio, sub, ac3) && ResumeStreaming(true);
    }
    void SeekTo(size_t position)    // while stopped
    {
        m_nPosition = position;
        m_pEnd = nullptr;
        m_bEnd = false;
        m_bAllTaken = false;
    }
    bool AllTaken() const { return m_bAllTaken; }
    bool HadError() const { return m_bError; }

    unsigned long OnFillBuffer(unsigned char* buffer, unsigned long length) override
    {
        if (m_bEnd) {
            m_bAllTaken = m_bAllTaken || buffer == m_pEnd;
            return 0;
        }
        const size_t count = std::min<size_t>(length, m_Bytes.size() - m_nPosition);
        m_Bytes.copy(reinterpret_cast<char*>(buffer), count, m_nPosition);
        m_nPosition += count;
        if (count < length) {
            m_bEnd = true;
            m_pEnd = buffer;
        }
        return count;
    }
    void OnDecoderError() override { m_bError = true; }

private:
    std::string m_Bytes;
    size_t m_nPosition = 0;
    const unsigned char* m_pEnd = nullptr;
    bool m_bEnd = false;
    std::atomic<bool> m_bAllTaken{false};
    std::atomic<bool> m_bError{false};
};

// The user-interface thread: asks the source when it is due, shows at once.
class FakeUi : public FakeUiLoop {
public:
    ~FakeUi() override { host::SetUiLoop(nullptr); }    // while it still is what threads may be waking

    void TurnWhileWaiting(Clock::time_point until) override
    {
        Clock::time_point next = Clock::time_point::max();
        if (host::VideoSource* source = host::CurrentVideoSource()) {
            host::VideoFrame frame;
            if (source->Advance(Clock::now(), frame, next)) {
                m_bBlack = !frame;
                m_Frame = frame;
                m_nShown += frame ? 1 : 0;
                source->OnPresented(Clock::now());
            }
        }
        FakeUiLoop::TurnWhileWaiting(std::min(until, next));
    }

    // Turns until `done` or the time-out. True: done.
    bool RunUntil(const std::function<bool()>& done, std::chrono::milliseconds atMost)
    {
        const Clock::time_point deadline = Clock::now() + atMost;
        while (!done()) {
            if (Clock::now() >= deadline) {
                return false;
            }
            TurnWhileWaiting(std::min(deadline, Clock::now() + std::chrono::milliseconds(200)));
        }
        return true;
    }
    void RunFor(std::chrono::milliseconds time) { RunUntil([] { return false; }, time); }

    size_t Count() const { return m_nShown; }
    bool IsBlack() const { return m_bBlack; }

    static double Number(const std::string& name)
    {
        const std::string all = host::Hooks().decoderStats();
        const size_t at = all.find("\"" + name + "\":");
        return at == std::string::npos ? -1 : std::atof(all.c_str() + at + name.size() + 3);
    }
    static std::string Stats() { return host::Hooks().decoderStats(); }

private:
    bool m_bBlack = true;
    host::VideoFrame m_Frame;    // held as a screen holds it
    size_t m_nShown = 0;
};

}    // namespace test
