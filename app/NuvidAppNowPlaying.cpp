// What is playing, for phones and the desktop, and what they may ask for beyond the keys.
#include <algorithm>

#include "app/NuvidApp.h"
#include "platform/CascadeNowPlaying.h"

namespace {

constexpr double kLongestMs = 1e12;    // a server may state any size

int64_t Milliseconds(double seconds)
{
    return static_cast<int64_t>(std::clamp(seconds * 1000.0, 0.0, kLongestMs));
}

// A side file may hold a mark beyond the end.
std::vector<double> Shown(std::vector<double> marks)
{
    std::erase_if(marks, [](double percent) { return !(percent >= 0.0 && percent <= 100.0); });
    std::sort(marks.begin(), marks.end());
    return marks;
}

}    // namespace

void NuvidApp::OnNowPlaying(CascadeNowPlaying& now)
{
    now.queueCount = m_Queue.Size();
    now.queueIndex = std::min(m_Queue.Cursor() + 1, now.queueCount);
    if (!m_Decoder.IsFileOpen()) {
        m_Marks.Forget();
        return;
    }
    const int state = m_Decoder.GetState();
    now.state = state == 1 ? CascadeNowPlaying::State::kPlaying : state == 2 ? CascadeNowPlaying::State::kPaused : CascadeNowPlaying::State::kStopped;
    const char* const name = m_Decoder.GetCurFileName();
    now.title = m_CurrentEntry.title.IsEmpty() ? CascadeString(name) : m_CurrentEntry.title;
    now.path = m_Decoder.GetOriginalFileName();    // of numbered files the one that was opened: they are one recording

    const uint64_t position = m_Decoder.GetCurFilePosition();
    const ProgressMarks& marks = m_Marks.Follow(m_Decoder, position);
    now.sizeBytes = marks.TotalBytes();
    now.positionBytes = marks.PositionInWhole(name == nullptr ? "" : name, position);
    now.chapters = Shown(marks.Chapters());
    now.bookmarks = Shown(marks.Bookmarks());
    const double share = now.sizeBytes == 0 ? 0 : static_cast<double>(now.positionBytes) / static_cast<double>(now.sizeBytes);
    if (m_Decoder.GetDuration() != 0) {
        now.durationMs = Milliseconds(m_Decoder.GetDuration());
        now.positionMs = now.sizeBytes == 0 ? -1 : Milliseconds(share * m_Decoder.GetDuration());
    } else if (m_Decoder.IsBitrateMeasured()) {
        now.durationMs = now.sizeBytes == 0 ? -1 : Milliseconds(static_cast<double>(now.sizeBytes) * 8.0 / m_Decoder.GetBitrate());
        now.positionMs = Milliseconds(static_cast<double>(now.positionBytes) * 8.0 / m_Decoder.GetBitrate());
    }
}

// Both go the way of the external commands, and obey their rules.
void NuvidApp::OnSkipWanted(int seconds)
{
    CascadeString unheard;
    OnECPCommand(seconds < 0 ? CascadeString::Format("Nuvid back %lld", -static_cast<long long>(seconds)) : CascadeString::Format("Nuvid forward %d", seconds),
        unheard);
}

void NuvidApp::OnOpenWanted(const CascadeString& path)
{
    CascadeString unheard;
    OnECPCommand("Nuvid open " + path, unheard);
}
