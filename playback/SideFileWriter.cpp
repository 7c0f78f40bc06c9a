#include "playback/SideFileWriter.h"

#include <cstdio>
#include <utility>

#include "platform/AtomicFile.h"
#include "platform/CascadeFile.h"
#include "playback/FileSettings.h"

namespace {

// False when it cannot be written. A file that says the same already is left alone.
bool WriteUnlessForeign(const CascadeString& path, const std::string& text)
{
    const std::optional<std::string> old = ReadSettingsText(path);
    if (old && (!IsFileSettings(*old) || *old == text)) {
        return true;
    }
    if (!old && CascadeFSObject::Exists(path)) {
        return false;    // what is there but cannot be read is not ours to replace either
    }
    AtomicFile file(path);
    return file.Open() && file.Write(text) && file.Commit();
}

}    // namespace

SideFileWriter::~SideFileWriter()
{
    {
        const std::lock_guard lock(m_Mutex);
        m_bStop = true;
    }
    m_Changed.notify_all();
    m_Thread.WaitUntilFinished();
}

void SideFileWriter::Begin(const CascadeString& path)
{
    std::unique_lock lock(m_Mutex);
    WaitUntilIdle(lock);    // a text belongs to the recording that it was made for
    m_Path = path;
    m_bTold = false;
}

void SideFileWriter::Save(std::string text)
{
    Post(std::move(text));
}

void SideFileWriter::Finish(std::string text)
{
    if (!Post(text)) {
        Write(m_Path, text);    // no thread is to be had: late is better than never
        return;
    }
    std::unique_lock lock(m_Mutex);
    WaitUntilIdle(lock);
}

// False: the box has no thread left, and nothing waits.
bool SideFileWriter::Post(std::string text)
{
    if (!m_bStarted) {
        m_bStarted = m_Thread.Start(&Run, this);
        if (!m_bStarted) {
            return false;
        }
    }
    {
        const std::lock_guard lock(m_Mutex);
        m_Waiting = std::move(text);
    }
    m_Changed.notify_all();
    return true;
}

void SideFileWriter::WaitUntilIdle(std::unique_lock<std::mutex>& lock)
{
    m_Changed.wait(lock, [this] { return !m_Waiting && !m_bWriting; });
}

void SideFileWriter::WriteAll()
{
    std::unique_lock lock(m_Mutex);
    for (;;) {
        m_Changed.wait(lock, [this] { return m_Waiting || m_bStop; });
        if (!m_Waiting) {
            return;
        }
        const std::string text = *std::exchange(m_Waiting, std::nullopt);
        const CascadeString path = m_Path;
        m_bWriting = true;
        lock.unlock();
        Write(path, text);
        lock.lock();
        m_bWriting = false;
        m_Changed.notify_all();
    }
}

// One thread at a time: the worker, or the caller when there is none.
void SideFileWriter::Write(const CascadeString& path, const std::string& text)
{
    if (WriteUnlessForeign(path, text)) {
        return;
    }
    const std::lock_guard lock(m_Mutex);
    if (!std::exchange(m_bTold, true)) {
        std::printf("Can not open settings file for writing\n");
        std::fflush(stdout);
    }
}
