#include "widgets/EProgressBar.h"

#include <algorithm>
#include <utility>

#include "platform/CascadeScreen.h"
#include "playback/MDecoder.h"
#include "sources/FileList.h"
#include "widgets/EUtils.h"

namespace {

constexpr uint32_t kTickMs = 100;
constexpr uint32_t kTicksPerRedraw = 5;
constexpr int kFontSize = 18;
constexpr int kBandHeight = 100;
constexpr int kBarMargin = 60;    // pixels left and right of the bar
constexpr int kBarTop = 52;    // below the top of the band
constexpr int kBarHeight = 18;
constexpr int kTextTop = 18;
constexpr int kMarkWidth = 2;
constexpr int kBookmarkReach = 8;    // by how much a bookmark stands out above and below the bar

constexpr double kLongestTime = 1e9;    // seconds: a server may state any size

constexpr CascadeColor kBandTop = 0x10182CB0;
constexpr CascadeColor kBandBottom = 0x04060CE8;
constexpr CascadeColor kBarColor = 0xFFFFFF38;
constexpr CascadeColor kPlayedTop = 0x9CB8FFFF;
constexpr CascadeColor kPlayedBottom = 0x4A68C8FF;
constexpr CascadeColor kChapterColor = 0xFFFFFFB0;
constexpr CascadeColor kBookmarkColor = 0xFFC840FF;
constexpr CascadeColor kTextColor = 0xE8ECFFFF;
constexpr CascadeColor kShadowColor = 0x000000FF;

std::vector<ProgressMarks::Mark> Listed(const BookmarkList& list)
{
    std::vector<ProgressMarks::Mark> marks;
    for (int i = 0; i < list.Size(); ++i) {
        marks.push_back({list.Get(i)->name, list.Get(i)->position});
    }
    return marks;
}

}    // namespace

uint32_t EProgressBar::s_nTicks = 0;

EProgressBar::EProgressBar()
    : m_Font("system", kFontSize)
{
    SetTitle("Progress");
}

void EProgressBar::Display(MDecoder* decoder, unsigned long timeMs)
{
    if (decoder == nullptr || !decoder->IsFileOpen()) {
        return;
    }
    m_nRemainingMs = static_cast<uint32_t>(timeMs);
    m_pDecoder = decoder;
    m_Marks = MarksOf(*decoder);

    const CascadeDims screen = CascadeScreen::GetDims();
    SetRect({0, screen.height - kBandHeight, screen.width, kBandHeight});
    if (IsMaterialized()) {
        Redraw();
    } else {
        Materialize(kPlane1);
    }
}

ProgressMarks EProgressBar::MarksOf(MDecoder& decoder)
{
    const std::vector<ProgressMarks::Mark> chapters = Listed(decoder.GetChapters());
    const std::vector<ProgressMarks::Mark> bookmarks = Listed(decoder.GetBookmarks());
    if (decoder.CurStreamIsHTTP() || decoder.CurStreamIsISO()) {
        return ProgressMarks::OfStream(decoder.GetCurFileSize(), chapters, bookmarks);
    }
    FileList sequence;
    sequence.Create(decoder.GetOriginalFileName(), nullptr);
    std::vector<ProgressMarks::File> files;
    for (const FileListEntry& entry : sequence.GetEntries()) {
        files.push_back({entry.name, entry.size});
    }
    return ProgressMarks::OfFiles(std::move(files), chapters, bookmarks);
}

void EProgressBar::OnMaterialize()
{
    m_nTimer = SetTimer(kTickMs);
}

void EProgressBar::OnTimer(unsigned long /*id*/)
{
    m_nRemainingMs -= kTickMs;
    ++s_nTicks;
    // On purpose only exactly zero ends the band: a time that is no multiple of a tick runs on until the
    // next Display.
    if (m_nRemainingMs == 0) {
        KillTimer(m_nTimer);
        m_nTimer = 0;
        Vanish();
    } else if (s_nTicks % kTicksPerRedraw == 0) {
        Redraw();
    }
}

void EProgressBar::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& band = GetRect();
    const CascadeRect bar = {band.left + kBarMargin, band.top + kBarTop, band.width - 2 * kBarMargin, kBarHeight};
    const char* const name = m_pDecoder->GetCurFileName();
    const uint64_t position = m_Marks.PositionInWhole(name == nullptr ? "" : name, m_pDecoder->GetCurFilePosition());

    bitmap.Fill(0);
    bitmap.FillGradient(band, 0, kBandTop, kBandBottom, true);
    bitmap.FillRoundedRect(bar, kBarHeight / 2, kBarColor);
    if (m_Marks.TotalBytes() != 0) {
        CascadeRect played = bar;
        played.width = static_cast<int>(static_cast<double>(position) / static_cast<double>(m_Marks.TotalBytes()) * bar.width);
        if (!played.IsEmpty()) {
            bitmap.FillGradient(played, std::min(kBarHeight, played.width) / 2, kPlayedTop, kPlayedBottom, true);
        }
    }
    PaintMarks(bitmap, bar);
    PaintTexts(bitmap, bar, position);
}

void EProgressBar::PaintMarks(CascadeBitmap& bitmap, const CascadeRect& bar) const
{
    // A side file may hold a mark beyond the end; it is drawn nowhere.
    const auto markAt = [&](double percent, int reach, CascadeColor color) {
        if (percent <= 100.0) {
            const int x = bar.left + static_cast<int>(percent / 100.0 * (bar.width - kMarkWidth));
            bitmap.FillRect({x, bar.top - reach, kMarkWidth, bar.height + 2 * reach}, color);
        }
    };
    for (const double percent : m_Marks.Chapters()) {
        markAt(percent, 0, kChapterColor);
    }
    for (const double percent : m_Marks.Bookmarks()) {
        markAt(percent, kBookmarkReach, kBookmarkColor);
    }
}

void EProgressBar::PaintTexts(CascadeBitmap& bitmap, const CascadeRect& bar, uint64_t position) const
{
    const int y = GetRect().top + kTextTop;
    const auto percent
        = m_Marks.TotalBytes() == 0 ? 0 : static_cast<int>(static_cast<double>(position) / static_cast<double>(m_Marks.TotalBytes()) * 100.0);
    const CascadeString played = CascadeString::Format("%i%%", percent);
    const CascadeString times = TimeText(position) + " / " + TimeText(m_Marks.TotalBytes());
    EUtils::ShadowedTextOut(bitmap, {bar.left, y}, played, m_Font, kTextColor, kShadowColor, kFontSize / 10);
    EUtils::ShadowedTextOut(bitmap, {bar.Right() - m_Font.GetTextExtent(times).width, y}, times, m_Font, kTextColor, kShadowColor, kFontSize / 10);
}

// Minutes and seconds of so many bytes: a share of the duration where it is known, else what the measured
// bit rate makes of them.
CascadeString EProgressBar::TimeText(uint64_t bytes) const
{
    double seconds = 0;
    if (m_pDecoder->GetDuration() != 0 && m_Marks.TotalBytes() != 0) {
        seconds = static_cast<double>(bytes) / static_cast<double>(m_Marks.TotalBytes()) * m_pDecoder->GetDuration();
    } else if (m_pDecoder->GetBitrate() > 0) {
        seconds = static_cast<double>(bytes) * 8.0 / m_pDecoder->GetBitrate();
    }
    const auto whole = static_cast<int>(std::min(seconds, kLongestTime));
    return CascadeString::Format("%d:%02d", whole / 60, whole % 60);
}
