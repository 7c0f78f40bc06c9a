#include "app/NowPlayingMarks.h"

#include <chrono>
#include <optional>
#include <utility>

#include "playback/MDecoder.h"
#include "widgets/EProgressBar.h"

namespace {

constexpr std::chrono::milliseconds kBlink {10};    // a disk that is awake answers within

}    // namespace

// Whether they are others now.
bool NowPlayingMarks::ReadFiles(MDecoder& decoder, uint64_t position)
{
    const CascadeString name = decoder.GetOriginalFileName();
    const bool other = name != m_Of;
    if (other) {
        Forget();
        m_Of = name;
    }
    if (decoder.CurStreamIsHTTP() || decoder.CurStreamIsISO()) {
        return other;
    }
    const char* const current = decoder.GetCurFileName();
    const bool grown = m_Marks.TotalBytes() != 0 && m_Marks.PositionInWhole(current == nullptr ? "" : current, position) >= m_Marks.TotalBytes();
    if ((other || grown) && !m_Reading.IsRunning() && m_Reading.Start([name](const JobStop&) { return EProgressBar::FilesOf(name); })) {
        m_Reading.Wait(kBlink);
    }
    std::optional<Files> read = m_Reading.Take();
    if (read) {
        m_Files = std::move(*read);
    }
    return other || read.has_value();
}

const ProgressMarks& NowPlayingMarks::Follow(MDecoder& decoder, uint64_t position)
{
    const bool otherFiles = ReadFiles(decoder, position);
    const size_t marks = static_cast<size_t>(decoder.GetBookmarks().Size()) << 32 | static_cast<size_t>(decoder.GetChapters().Size());
    const bool streamGrown = m_Files.empty() && position > m_Marks.TotalBytes();
    if (otherFiles || marks != m_nMarks || streamGrown) {
        m_nMarks = marks;
        m_Marks = EProgressBar::MarksOf(decoder, m_Files);
    }
    return m_Marks;
}

void NowPlayingMarks::Forget()
{
    m_Reading.Abandon();
    m_Of.Empty();
    m_Files.clear();
    m_Marks = {};
    m_nMarks = 0;
}
