// What external commands do. Those that press a key obey the rules of keys: they are ignored while an
// action is pending or a menu is open, and reply "OK" all the same.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "app/CommandTable.h"
#include "app/KeyTable.h"
#include "app/NuvidApp.h"

void NuvidApp::OnECPCommand(const CascadeString& command, CascadeString& reply)
{
    const CommandRow* const row = CommandTable::Find(command);
    if (row == nullptr) {
        return;
    }
    const CascadeString rest = command.From(row->argumentAt);
    if (row->needsArgument && rest.IsEmpty()) {
        reply = "Failed";
        return;
    }
    reply = "OK";
    if (IsWaiting() && row->whileWaiting != WhileWaiting::kAnswered) {
        PostponeCommand(*row, rest);
    } else if (row->handler != nullptr) {
        (this->*row->handler)(rest, reply);
    } else {
        OnKeyDown(row->key);
    }
}

// The same rule as for keys (OnKeyWhileWaiting).
void NuvidApp::PostponeCommand(const CommandRow& row, const CascadeString& rest)
{
    if (row.whileWaiting == WhileWaiting::kIgnored) {
        return;
    }
    const bool endsWait = row.whileWaiting == WhileWaiting::kEndsWait;
    if (endsWait) {
        EndWait();
    }
    PostAfterWait([this, &row, rest, endsWait] {
        if (endsWait) {
            m_Sequence.GoIdle();
        }
        CascadeString unheard;
        if (row.handler != nullptr) {
            (this->*row.handler)(rest, unheard);
        } else {
            PerformKey(row.key);
        }
    });
}

void NuvidApp::OnSkipCommand(const char* text, Osd::Icon icon, SequenceState state, const char* seconds)
{
    Info(text, icon);
    m_Sequence.Schedule(state, static_cast<int>(std::clamp(std::strtol(seconds, nullptr, 10), long{INT32_MIN}, long{INT32_MAX})));
    m_Windows.CloseAll(KeyTable::kPrevBookmark | KeyTable::kPrevChapter);
}

void NuvidApp::OnForwardCommand(const CascadeString& rest, CascadeString& /*reply*/)
{
    OnSkipCommand("Fast Forward", Osd::kFastForward, SEQ_SKIP_FORWARD, rest);
}

void NuvidApp::OnBackCommand(const CascadeString& rest, CascadeString& /*reply*/)
{
    OnSkipCommand("Rewind", Osd::kRewind, SEQ_SKIP_BACK, rest);
}

void NuvidApp::OnPathCommand(BrowseMode mode, const CascadeString& path)
{
    EFileBrowser::FileInfo entry;
    entry.path = path;
    if (mode == kBrowseOpen) {
        DismissWindows();
    }
    // What is on the screen stays as it is while something is put into the queue.
    const bool asked = IsAnythingAsked();
    const int asksFor = m_nBrowseMode;
    const EFileBrowser::FileInfo chosen = m_SelectedEntry;
    m_nBrowseMode = mode;
    callback(entry, EFileBrowser::kItemChosen);
    if (asked) {
        m_bMenuOpen = true;
        m_nBrowseMode = asksFor;
        m_SelectedEntry = chosen;
    }
}

void NuvidApp::OnOpenCommand(const CascadeString& rest, CascadeString& /*reply*/)
{
    OnPathCommand(kBrowseOpen, rest);
}

void NuvidApp::OnQueueCommand(const CascadeString& rest, CascadeString& /*reply*/)
{
    OnPathCommand(kBrowseQueue, rest);
}

void NuvidApp::OnStatusQuery(const CascadeString& /*rest*/, CascadeString& reply)
{
    const int state = m_Decoder.GetState();
    reply = state == 1 ? "Playing" : state == 2 ? "Paused" : "Stopped";
}

void NuvidApp::OnFileNameQuery(const CascadeString& /*rest*/, CascadeString& reply)
{
    reply = m_Decoder.GetCurFileName();
}

void NuvidApp::OnFileProgressQuery(const CascadeString& /*rest*/, CascadeString& reply)
{
    reply = CascadeString::Format("%i", m_Decoder.GetCurFileProgress());
}

void NuvidApp::OnTotalProgressQuery(const CascadeString& /*rest*/, CascadeString& reply)
{
    reply = CascadeString::Format("%i", m_Decoder.GetTotalFileProgress());
}

void NuvidApp::OnZoomQuery(const CascadeString& /*rest*/, CascadeString& reply)
{
    reply = CascadeString::Format("%i", m_Decoder.GetZoomMode());
}

void NuvidApp::OnPing(const CascadeString& /*rest*/, CascadeString& reply)
{
    reply = "pong";
}
