#include "playback/SideFileWriter.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/AtomicFile.h"
#include "platform/CascadeFile.h"
#include "playback/FileSettings.h"

namespace {

// A medium that takes longer for a text is asked for a sign of life, and given up after so much more.
constexpr auto kUsualTime = std::chrono::milliseconds(500);
constexpr uint32_t kPatienceMs = 4000;

// False when it cannot be written. A file that says the same already is left alone, and so is one whose medium
// was given up meanwhile: newer texts may be in it by now.
bool WriteUnlessForeign(const CascadeString& path, const std::string& text, const std::atomic<bool>& givenUp)
{
    const std::optional<std::string> old = ReadSettingsText(path);
    if (old && (!IsFileSettings(*old) || *old == text)) {
        return true;
    }
    if (!old && CascadeFSObject::Exists(path)) {
        return false;    // what is there but cannot be read is not ours to replace either
    }
    AtomicFile file(path);
    return file.Open() && file.Write(text) && (givenUp || file.Commit());
}

}    // namespace

struct SideFileWriter::State {
    std::thread thread;    // the caller's alone
    std::mutex mutex;    // of all below
    std::condition_variable changed;
    CascadeString path;
    std::optional<std::string> waiting;
    bool writing = false;
    bool stop = false;
    std::atomic<bool> givenUp {false};
    bool told = false;    // that this recording's file cannot be written
};

SideFileWriter::SideFileWriter()
    : m_pState(std::make_shared<State>())
{
}

SideFileWriter::~SideFileWriter()
{
    WaitUntilIdle();
    {
        const std::lock_guard lock(m_pState->mutex);
        m_pState->stop = true;
    }
    m_pState->changed.notify_all();
    if (m_bStarted) {
        m_pState->thread.join();
    }
}

void SideFileWriter::Begin(const CascadeString& path)
{
    WaitUntilIdle();    // a text belongs to the recording that it was made for
    const std::lock_guard lock(m_pState->mutex);
    m_pState->path = path;
    m_pState->told = false;
}

void SideFileWriter::Save(std::string text)
{
    Post(std::move(text));
}

void SideFileWriter::Finish(std::string text)
{
    if (Post(text)) {
        WaitUntilIdle();
    } else {
        Write(*m_pState, m_pState->path, text);    // no thread is to be had: late is better than never
    }
}

// False: the box has no thread left, and nothing waits.
bool SideFileWriter::Post(std::string text)
{
    if (!m_bStarted) {
        try {
            m_pState->thread = std::thread([state = m_pState] { WriteAll(*state); });
        } catch (const std::system_error&) {
            return false;
        }
        m_bStarted = true;
    }
    {
        const std::lock_guard lock(m_pState->mutex);
        m_pState->waiting = std::move(text);
    }
    m_pState->changed.notify_all();
    return true;
}

// A thread whose medium is gone is left to itself; what comes next gets a new one.
void SideFileWriter::WaitUntilIdle()
{
    std::unique_lock lock(m_pState->mutex);
    const auto idle = [this] { return !m_pState->waiting && !m_pState->writing; };
    while (!m_pState->changed.wait_for(lock, kUsualTime, idle)) {
        const CascadeString path = m_pState->path;
        lock.unlock();
        if (!CascadeFSObject::IsAwake(path, kPatienceMs)) {
            std::printf("Can not open settings file for writing\n");
            std::fflush(stdout);
            m_pState->givenUp = true;
            m_pState->thread.detach();
            m_pState = std::make_shared<State>();
            m_bStarted = false;
            return;
        }
        lock.lock();
    }
}

void SideFileWriter::WriteAll(State& state)
{
    std::unique_lock lock(state.mutex);
    for (;;) {
        state.changed.wait(lock, [&] { return state.waiting || state.stop; });
        if (!state.waiting) {
            return;
        }
        const std::string text = *std::exchange(state.waiting, std::nullopt);
        const CascadeString path = state.path;
        state.writing = true;
        lock.unlock();
        Write(state, path, text);
        lock.lock();
        state.writing = false;
        state.changed.notify_all();
    }
}

// One thread at a time: the worker, or the caller when there is none.
void SideFileWriter::Write(State& state, const CascadeString& path, const std::string& text)
{
    if (WriteUnlessForeign(path, text, state.givenUp)) {
        return;
    }
    const std::lock_guard lock(state.mutex);
    if (!std::exchange(state.told, true)) {
        std::printf("Can not open settings file for writing\n");
        std::fflush(stdout);
    }
}
