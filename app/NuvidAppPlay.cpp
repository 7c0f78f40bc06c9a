// Opening, moving along the queue, the end of a file, and the status line.
#include <algorithm>
#include <cstdio>

#include "app/NuvidApp.h"
#include "app/Playlist.h"
#include "platform/CascadeTime.h"
#include "platform/RemoteKeys.h"
#include "playback/PlaybackGlobals.h"
#include "playback/PlaybackMessages.h"

namespace {

constexpr uint32_t kTickMs = 100;
constexpr int kDeepestPlaylist = 8;    // a playlist that names itself ends here

}    // namespace

const CascadeString& NuvidApp::ShownName(const EFileBrowser::FileInfo& entry)
{
    return entry.title.IsEmpty() ? entry.path : entry.title;
}

void NuvidApp::TimerSeq()
{
    g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds();
    m_Windows.Tick();
    m_Sequence.Tick();
    m_Decoder.Tick();
    TellBuffering();
}

// Again and again as long as it lasts: the text goes by itself.
void NuvidApp::TellBuffering()
{
    if (!m_Decoder.IsStarving()) {
        m_nStarvingTicks = 0;
    } else if (m_nStarvingTicks++ % std::max(m_Options.infoTimeoutMs / kTickMs, 1U) == 0) {
        Info("Buffering...");
    }
}

// ---- opening

bool NuvidApp::OpenFile(const EFileBrowser::FileInfo& entry, bool addToRecent)
{
    m_Decoder.DoTheClose();
    if (Playlist::IsPlaylist(entry.path)) {
        if (addToRecent) {
            m_Recent.Add(Playlist::Absolute(entry.path));
        }
        return OpenPlaylist(CascadeString(entry.path));    // a copy: the entry may be the current one, which changes
    }
    if (!m_Decoder.DoTheOpen(entry.path)) {
        std::printf("File open failed!\n");
        Info("File open failed");
        return false;
    }
    std::printf("File opened OK\n");
    if (entry.duration != 0 && m_Decoder.GetDuration() == 0) {
        m_Decoder.SetDuration(entry.duration);
    }
    Info("Play", Osd::kPlay, ShownName(entry), "", true);
    if (addToRecent) {
        m_Recent.Add(Playlist::Absolute(entry.path));
    }
    return true;
}

bool NuvidApp::OpenFile(const char* path, bool addToRecent)
{
    EFileBrowser::FileInfo entry;
    entry.path = entry.location = path;
    return OpenFile(entry, addToRecent);
}

// The items share one queue and one cursor: an item that is a playlist itself replaces the queue.
bool NuvidApp::OpenPlaylist(const char* path)
{
    if (m_nPlaylistDepth >= kDeepestPlaylist || !LoadFilelist(path)) {
        std::printf("File open failed!\n");
        Info("File open failed");
        return false;
    }
    ++m_nPlaylistDepth;
    while (!WaitWasEnded() && m_Queue.Entry() != nullptr && !OpenEntryAtCursor(false)) {
        m_Queue.SkipFailedEntry();
    }
    --m_nPlaylistDepth;
    return m_Queue.Entry() != nullptr;
}

// False leaves the queue as it was.
bool NuvidApp::LoadFilelist(const char* path)
{
    std::vector<CascadeString> paths;
    if (!Playlist::Read(path, paths)) {
        return false;
    }
    m_Queue.Clear();
    for (const CascadeString& item : paths) {
        EFileBrowser::FileInfo entry;
        entry.path = entry.location = item;
        m_Queue.Append(entry);
        std::printf("Adding %s to FileList(%d)\n", item.Text(), m_Queue.Size());
    }
    return true;
}

bool NuvidApp::CloseFile(const char* path)
{
    if (path != nullptr) {
        const char* const current = m_Decoder.GetCurFile();
        if (current == nullptr || CascadeString(path) != current) {
            return false;
        }
    }
    m_Decoder.DoTheClose();
    return true;
}

// Opening may replace the queue, so the entry is copied out of it first.
bool NuvidApp::OpenEntryAtCursor(bool addToRecent)
{
    m_CurrentEntry = *m_Queue.Entry();
    return OpenFile(m_CurrentEntry, addToRecent);
}

// ---- moving along the queue

bool NuvidApp::NextFile()
{
    if (!m_Queue.HasNext()) {
        return false;
    }
    EndOfFileReached();
    return true;
}

bool NuvidApp::PrevFile()
{
    while (!WaitWasEnded() && m_Queue.StepBack()) {
        if (OpenEntryAtCursor(false)) {
            return true;
        }
    }
    return false;
}

void NuvidApp::EndOfFileReached()
{
    std::printf("EndOfFileReached()\n");
    m_Decoder.PauseStreaming();
    std::printf("m_CurFileIdx= %d, m_FileList.size() = %d\n", m_Queue.Cursor(), m_Queue.Size());
    if (!m_Queue.HasNext()) {
        EndOfQueue();
        return;
    }
    PlayQueue::Forward walk(m_Queue);
    while (!WaitWasEnded() && walk.Step()) {
        if (OpenEntryAtCursor(false)) {
            return;
        }
    }
}

void NuvidApp::EndOfQueue()
{
    Info("End of File");
    if (m_Options.exitAtEnd) {
        Quit();
    } else if (m_Options.menuAtEnd) {
        OnKeyDown(Remote::kMenu);
    }
}

void NuvidApp::OnWormholeMessage(const CascadeMessage& message)
{
    if (message.id == kMessageDecoderError) {
        std::printf("Decoder error!\n");
        std::fflush(stdout);
        m_Decoder.DoTheClose();
        Terminate(0);
        return;
    }
    if (message.id == kMessageEndOfStream && m_Sequence.State() == SEQ_IDLE) {
        std::printf("Nuvid: End of file\n");
        // The decoder still plays what it holds.
        const int delay = DrainTicks(static_cast<unsigned>(m_Decoder.GetBitrate()));
        m_Sequence.Begin(SEQ_END_OF_FILE, delay);
        std::printf("Wait time: %i\n", delay);
    }
}

// ---- what the deferred actions do

void NuvidApp::OpenSelected()
{
    OpenFile(m_CurrentEntry, true);
}

bool NuvidApp::OpenListEntry()
{
    if (m_Queue.Entry() == nullptr) {
        OnKeyDown(Remote::kMenu);
        return true;
    }
    if (OpenEntryAtCursor(true) || WaitWasEnded()) {
        return true;
    }
    m_Queue.SkipFailedEntry();
    return false;
}

void NuvidApp::SkipForward(int seconds)
{
    m_Decoder.SkipFW(seconds);
    m_Decoder.ReOpen();
    ShowProgress();
}

void NuvidApp::SkipBack(int seconds)
{
    m_Decoder.SkipBack(seconds);
    m_Decoder.ReOpen();
    ShowProgress();
}

void NuvidApp::Reselect()
{
    m_Decoder.ReSelectPIDs();
}

void NuvidApp::Reopen()
{
    m_Decoder.ReOpen();
}

void NuvidApp::JumpToNextChapter()
{
    m_Decoder.NextChapter();
    ShowProgress();
}

void NuvidApp::JumpToPrevChapter(bool repeated)
{
    m_Decoder.PrevChapter(repeated);
    ShowProgress();
}

void NuvidApp::JumpToNextBookmark()
{
    m_Decoder.NextBookmark();
    ShowProgress();
}

void NuvidApp::JumpToPrevBookmark(bool repeated)
{
    m_Decoder.PrevBookmark(repeated);
    ShowProgress();
}

// ---- the status line

void NuvidApp::Info(const char* text, const IconOrText& second, const char* line3, const char* line4, bool withProgress)
{
    if (IsBrowsing()) {    // which covers the screen, and has a line of its own for such texts
        m_pBrowser->ShowNotice(CascadeString(text) + (*text == '\0' || *line3 == '\0' ? "" : ": ") + line3);
        return;
    }
    MyWindow::Message message;
    message.first = text;
    message.third = line3;
    message.fourth = line4;
    if (m_Options.showIcons) {
        message.iconIndex = Osd::IconIndex(second.Icon());
        message.second = message.iconIndex == Osd::kNoIconIndex ? second.Text() : CascadeString("-");
    }
    m_Osd.ShowMessage(message, static_cast<int>(m_Options.infoTimeoutMs / kTickMs));
    if (withProgress) {
        ShowProgress();
    }
}

void NuvidApp::ShowProgress()
{
    m_Progress.Display(&m_Decoder, m_Options.infoTimeoutMs);
}
