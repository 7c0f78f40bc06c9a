// Opening, moving along the queue, the end of a file, and the status line.
#include <cstdio>

#include "app/NuvidApp.h"
#include "platform/CascadeTime.h"
#include "platform/RemoteKeys.h"
#include "playback/PlaybackGlobals.h"
#include "playback/PlaybackMessages.h"

namespace {

constexpr uint32_t kTickMs = 100;

const CascadeString& ShownName(const EFileBrowser::FileInfo& entry)
{
    return entry.title.IsEmpty() ? entry.path : entry.title;
}

}    // namespace

void NuvidApp::TimerSeq()
{
    g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds();
    m_Windows.Tick();
    m_Sequence.Tick();
    m_Decoder.Tick();
}

// ---- opening

bool NuvidApp::OpenFile(const EFileBrowser::FileInfo& entry)
{
    m_Decoder.DoTheClose();
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
    return true;
}

void NuvidApp::OpenFile()
{
    Info("Press [Menu] to open a file");
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
bool NuvidApp::OpenEntryAtCursor()
{
    m_CurrentEntry = *m_Queue.Entry();
    return OpenFile(m_CurrentEntry);
}

void NuvidApp::callback(const EFileBrowser::FileInfo& entry, int reason)
{
    std::printf("inReason %d\n", reason);
    m_bMenuOpen = false;
    if (reason != EFileBrowser::kItemChosen && reason != EFileBrowser::kPathSettled) {
        Info("Press [Menu] to open a file");
        return;
    }
    m_SelectedEntry = entry;
    if (m_nBrowseMode == kBrowseQueue) {
        m_Queue.Append(m_SelectedEntry);
        Info("File added to the playlist", Osd::kNoIcon, m_SelectedEntry.path);
    } else if (m_nBrowseMode == kBrowseOpen) {
        m_Queue.Clear();
        m_CurrentEntry = m_SelectedEntry;
        m_Queue.Append(m_CurrentEntry);
        m_Sequence.Begin(SEQ_OPEN_SELECTED, 2);
        Info("Opening " + ShownName(m_CurrentEntry) + "...");
    }
}

// The question is asked once there is a dialog to ask it with; until then a file plays from its start.
void NuvidApp::AskForResume() { }

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
        if (OpenEntryAtCursor()) {
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
        if (OpenEntryAtCursor()) {
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
    OpenFile(m_CurrentEntry);
}

bool NuvidApp::OpenListEntry()
{
    if (m_Queue.Entry() == nullptr) {
        OnKeyDown(Remote::kMenu);
        return true;
    }
    if (OpenEntryAtCursor() || WaitWasEnded()) {
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
