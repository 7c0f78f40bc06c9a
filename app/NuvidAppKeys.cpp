// What the keys of the remote control do.
#include <cstdio>

#include "app/KeyTable.h"
#include "app/NuvidApp.h"

void NuvidApp::OnKeyDown(unsigned long key)
{
    if (m_Sequence.IsBusy() || m_bMenuOpen) {
        return;
    }
    PerformKey(key);
}

void NuvidApp::PerformKey(unsigned long key)
{
    const KeyTable::Row* const row = KeyTable::Find(key);
    if (row == nullptr || (row->needsOpenFile && !m_Decoder.IsFileOpen())) {
        return;
    }
    (this->*row->onDown)();
    m_Windows.CloseAll(row->resets);
}

// Not guarded: a release belongs to a press that was heard.
void NuvidApp::OnKeyUp(unsigned long key)
{
    if (key == Remote::kFastForward && m_FastForward.Up()) {
        RequestSkip(KeyTable::kFastShort);
    }
    if (key == Remote::kRewind && m_Rewind.Up()) {
        RequestSkip(KeyTable::kRewindShort);
    }
}

// While a server is waited for inside an action, a key cannot act: the few that must be heard end the wait
// and act once the action has been left. The action's own next step is forgotten, so that a stop is not
// followed by the next item of the queue.
void NuvidApp::OnKeyWhileWaiting(unsigned long key)
{
    const KeyTable::Row* const row = KeyTable::Find(key);
    if (row == nullptr || !row->endsWait) {
        return;
    }
    EndWait();
    PostAfterWait([this, key] {
        m_Sequence.GoIdle();
        PerformKey(key);
    });
}

// The text is shown before the request is tried, so also when it is refused.
void NuvidApp::RequestSkip(int skip)
{
    const KeyTable::SkipRow& row = KeyTable::kSkips[skip];
    std::printf("%s", row.line);
    std::fflush(stdout);
    Info(row.text, row.icon);
    m_Sequence.Schedule(row.state, row.seconds);
    m_Windows.CloseAll(KeyTable::kPrevBookmark | KeyTable::kPrevChapter);
}

void NuvidApp::OnPauseKey()
{
    if (m_Decoder.IsStreaming()) {
        m_Decoder.PauseStreaming();
        m_Windows.Open(KeyWindows::kPause, KeyWindows::kTwoAndAHalfSeconds);
        Info("Pause", Osd::kPause, "", "", true);
        return;
    }
    m_Decoder.ResumeStreaming();
    // Pause and play in quick succession is how a viewer helps a decoder that shows no picture or plays no sound.
    if (m_Windows.IsOpen(KeyWindows::kPause)) {
        m_Decoder.ReSelectPIDs();
        m_Windows.Close(KeyWindows::kPause);
    }
    Info("Play", Osd::kPlay, "", "", true);
}

void NuvidApp::OnPlayKey()
{
    m_Decoder.ResumeStreaming();
    Info("Play", Osd::kPlay, "", "", true);
}

void NuvidApp::OnStopKey()
{
    m_Decoder.DoTheClose();
    Info("Stop");
}

void NuvidApp::OnPowerKey()
{
    std::printf("Power button pressed\n");
    m_Decoder.PauseStreaming();
    Info("Pause", Osd::kPause);
}

void NuvidApp::OnRewindKey()
{
    if (m_Rewind.Down()) {
        RequestSkip(KeyTable::kRewindLong);
    }
}

void NuvidApp::OnFastForwardKey()
{
    if (m_FastForward.Down()) {
        RequestSkip(KeyTable::kFastLong);
    }
}

void NuvidApp::OnNextBookmarkKey()
{
    Info("Next Bookmark");
    m_Sequence.Schedule(SEQ_NEXT_BOOKMARK);
    m_Windows.Open(KeyWindows::kBookmark, KeyWindows::kJumpWindow);
}

void NuvidApp::OnPrevBookmarkKey()
{
    Info("Prev Bookmark");
    m_Sequence.Schedule(SEQ_PREV_BOOKMARK, m_Windows.IsOpen(KeyWindows::kPrevBookmark) ? 1 : 0);
    m_Windows.Open(KeyWindows::kPrevBookmark, KeyWindows::kJumpWindow);
    m_Windows.Open(KeyWindows::kBookmark, KeyWindows::kTwoAndAHalfSeconds);
}

void NuvidApp::OnNextChapterKey()
{
    Info("Next Chapter");
    m_Sequence.Schedule(SEQ_NEXT_CHAPTER);
}

void NuvidApp::OnPrevChapterKey()
{
    Info("Prev Chapter");
    m_Sequence.Schedule(SEQ_PREV_CHAPTER, m_Windows.IsOpen(KeyWindows::kPrevChapter) ? 1 : 0);
    m_Windows.Open(KeyWindows::kPrevChapter, KeyWindows::kJumpWindow);
}

void NuvidApp::OnBookmarkKey()
{
    if (m_Windows.IsOpen(KeyWindows::kBookmark)) {
        m_Decoder.ClearBookmark();
        m_Windows.Close(KeyWindows::kBookmark);
        Info("Bookmark deleted");
        return;
    }
    m_Decoder.SetBookmark();
    m_Windows.Open(KeyWindows::kBookmark, KeyWindows::kTwoAndAHalfSeconds);
    Info("Bookmark added");
}

void NuvidApp::OnMenuKey()
{
    if (m_Options.unattended) {
        Quit();
        return;
    }
    if (m_bBrowsePending) {
        m_bBrowsePending = false;
        FileBrowse();
    } else if (m_Options.menuEnabled) {
        ShowMenu(Menus::kMain);
    } else {
        OpenFile();
    }
}

void NuvidApp::OnZoomKey()
{
    if (m_Windows.IsOpen(KeyWindows::kZoom)) {
        m_Decoder.NextZoomMode();
    }
    char description[128] = {};
    m_Decoder.GetCurZoomStr(description, sizeof description);
    Info("", Osd::ZoomIcon(m_Decoder.GetZoomMode()), description);
    m_Windows.Open(KeyWindows::kZoom, KeyWindows::kTwoAndAHalfSeconds);
}

void NuvidApp::OnInfoKey()
{
    CascadeString name = m_CurrentEntry.title;
    if (name.IsEmpty()) {
        name = m_Decoder.GetCurFileName();
    }
    if (name.IsEmpty()) {
        Info("No file");
        return;
    }
    const CascadeString first = CascadeString::Format("%s: %d%%", name.Text(), m_Decoder.GetCurFileProgress());
    const CascadeString audio = m_Decoder.GetAudioStr(static_cast<int>(m_Decoder.GetAudioStream()));
    CascadeString fourth;
    if (m_Windows.IsOpen(KeyWindows::kInfo)) {
        VidOptions();
    } else {
        fourth = CascadeString::Format("Bitrate: %dKbps  Zoom %d", m_Decoder.GetBitrate() / 1024, m_Decoder.GetZoomMode());
    }
    Info(first, Osd::kNoIcon, audio, fourth, true);
    m_Windows.Open(KeyWindows::kInfo, KeyWindows::kTwoAndAHalfSeconds);
}
