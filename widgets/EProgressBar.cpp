#include "widgets/EProgressBar.h"

#include <algorithm>
#include <utility>

#include "platform/CascadeFile.h"
#include "platform/CascadeScreen.h"
#include "playback/MDecoder.h"
#include "sources/FileList.h"
#include "widgets/EUtils.h"

namespace {

constexpr uint32_t kDiskPatienceMs = 200;
constexpr uint32_t kTickMs = 100;
constexpr uint32_t kTicksPerRedraw = 5;
constexpr int kFontSize = 18;
constexpr int kBandHeight = 100;
constexpr int kFadeHeight = 28;    // of the band, from the picture to its own colour
constexpr int kTextTop = 14;    // below the top of the band
constexpr int kBarMargin = 60;    // pixels left and right of the bar
constexpr int kBarTop = 54;
constexpr int kBarHeight = 20;
constexpr int kRimWidth = 1;
constexpr int kHeadSize = 30;    // of the disc that stands where playback is
constexpr int kChapterWidth = 4;    // of the gaps between chapters
constexpr int kPinSize = 12;    // of a bookmark's head, above the bar
constexpr int kPinWidth = 4;    // of the line from there through the bar

constexpr char kNoTime[] = "0:00";
constexpr double kLongestTime = 1e9;    // seconds: a server may state any size

constexpr CascadeColor kBandClear = 0x0A0E1A00;
constexpr CascadeColor kBandTop = 0x0A0E1AD8;
constexpr CascadeColor kBandBottom = 0x04060CF4;
constexpr CascadeColor kTrackColor = 0xFFFFFF48;
constexpr CascadeColor kRimColor = 0xFFFFFF60;
constexpr CascadeColor kPlayedTop = 0x9CB8FFFF;
constexpr CascadeColor kPlayedBottom = 0x4A68C8FF;
constexpr CascadeColor kChapterColor = 0x060810FF;
constexpr CascadeColor kBookmarkColor = 0xFFC840FF;
constexpr CascadeColor kHeadColor = 0xFFFFFFFF;
constexpr CascadeColor kEdgeColor = 0x000000A0;    // around the head and the pins
constexpr CascadeColor kTextColor = 0xF2F4FFFF;
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
    // The marks are not worth waiting for: those of the last time stand while the disk or its server is silent.
    const bool onDisk = !decoder->CurStreamIsHTTP() && !decoder->CurStreamIsISO();
    if (!onDisk || CascadeFSObject::IsAwake(decoder->GetOriginalFileName(), kDiskPatienceMs)) {
        m_Marks = MarksOf(*decoder);
    }

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
    const bool onDisk = !decoder.CurStreamIsHTTP() && !decoder.CurStreamIsISO();
    return MarksOf(decoder, onDisk ? FilesOf(decoder.GetOriginalFileName()) : std::vector<ProgressMarks::File>());
}

ProgressMarks EProgressBar::MarksOf(MDecoder& decoder, std::vector<ProgressMarks::File> files)
{
    const std::vector<ProgressMarks::Mark> chapters = Listed(decoder.GetChapters());
    const std::vector<ProgressMarks::Mark> bookmarks = Listed(decoder.GetBookmarks());
    if (decoder.CurStreamIsHTTP() || decoder.CurStreamIsISO()) {
        return ProgressMarks::OfStream(decoder.GetCurFileSize(), chapters, bookmarks);
    }
    return ProgressMarks::OfFiles(std::move(files), chapters, bookmarks);
}

std::vector<ProgressMarks::File> EProgressBar::FilesOf(const char* name)
{
    FileList sequence;
    sequence.Create(name, nullptr);
    std::vector<ProgressMarks::File> files;
    for (const FileListEntry& entry : sequence.GetEntries()) {
        files.push_back({entry.name, entry.size});
    }
    return files;
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
    const double share = m_Marks.TotalBytes() == 0 ? 0 : static_cast<double>(position) / static_cast<double>(m_Marks.TotalBytes());

    bitmap.Fill(0);
    bitmap.FillGradient({band.left, band.top, band.width, kFadeHeight}, 0, kBandClear, kBandTop, true);
    bitmap.FillGradient({band.left, band.top + kFadeHeight, band.width, band.height - kFadeHeight}, 0, kBandTop, kBandBottom, true);
    bitmap.FillRoundedRect(bar, kBarHeight / 2, kTrackColor);
    bitmap.StrokeRoundedRect(bar, kBarHeight / 2, kRimWidth, kRimColor);
    CascadeRect played = bar;
    played.width = static_cast<int>(share * bar.width);
    if (!played.IsEmpty()) {
        bitmap.FillGradient(played, std::min(kBarHeight, played.width) / 2, kPlayedTop, kPlayedBottom, true);
    }
    PaintMarks(bitmap, bar);
    const int head = std::clamp(played.width, kBarHeight / 2, bar.width - kBarHeight / 2);
    PaintDisc(bitmap, {bar.left + head, bar.top + kBarHeight / 2}, kHeadSize, kHeadColor);
    PaintTexts(bitmap, bar, position, share);
}

// Where marks are to be drawn, in pixels from the left end of the bar. Of those that fall on the same pixel
// only one is: a recording may have thousands.
std::vector<int> EProgressBar::Places(const std::vector<double>& percents, int width)
{
    std::vector<int> places;
    for (const double percent : percents) {
        if (percent <= 100.0) {    // a side file may hold a mark beyond the end
            places.push_back(static_cast<int>(percent / 100.0 * width));
        }
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
}

// Chapters are gaps in the bar, bookmarks are pins on it: their shapes tell them apart on any set.
void EProgressBar::PaintMarks(CascadeBitmap& bitmap, const CascadeRect& bar) const
{
    for (const int x : Places(m_Marks.Chapters(), bar.width)) {
        if (x >= kBarHeight / 2 && x <= bar.width - kBarHeight / 2) {    // the ends of the bar are to be seen anyway
            bitmap.FillRect({bar.left + x - kChapterWidth / 2, bar.top, kChapterWidth, bar.height}, kChapterColor);
        }
    }
    for (const int x : Places(m_Marks.Bookmarks(), bar.width)) {
        bitmap.FillRect({bar.left + x - kPinWidth / 2, bar.top - kPinSize / 2, kPinWidth, bar.height + kPinSize / 2}, kBookmarkColor);
        PaintDisc(bitmap, {bar.left + x, bar.top - kPinSize / 2}, kPinSize, kBookmarkColor);
    }
}

void EProgressBar::PaintDisc(CascadeBitmap& bitmap, CascadePoint middle, int size, CascadeColor color)
{
    CascadeRect disc = {middle.x - size / 2, middle.y - size / 2, size, size};
    bitmap.FillRoundedRect(disc, size / 2, kEdgeColor);
    disc.InsetRect(1, 1);
    bitmap.FillRoundedRect(disc, size / 2, color);
}

void EProgressBar::PaintTexts(CascadeBitmap& bitmap, const CascadeRect& bar, uint64_t position, double share) const
{
    const int y = GetRect().top + kTextTop;
    const CascadeString played = CascadeString::Format("%i%%", static_cast<int>(share * 100.0));
    const CascadeString whole = TimeText(m_Marks.TotalBytes());
    const CascadeString times = whole == kNoTime ? whole : TimeText(position) + " / " + whole;
    EUtils::ShadowedTextOut(bitmap, {bar.left, y}, played, m_Font, kTextColor, kShadowColor, kFontSize / 10);
    EUtils::ShadowedTextOut(bitmap, {bar.Right() - m_Font.GetTextExtent(times).width, y}, times, m_Font, kTextColor, kShadowColor, kFontSize / 10);
}

// Minutes and seconds of so many bytes: a share of the duration where it is known, else what the bit rate
// makes of them, once it has been measured.
CascadeString EProgressBar::TimeText(uint64_t bytes) const
{
    double seconds = 0;
    if (m_pDecoder->GetDuration() != 0 && m_Marks.TotalBytes() != 0) {
        seconds = static_cast<double>(bytes) / static_cast<double>(m_Marks.TotalBytes()) * m_pDecoder->GetDuration();
    } else if (m_pDecoder->IsBitrateMeasured() && m_pDecoder->GetBitrate() > 0) {
        seconds = static_cast<double>(bytes) * 8.0 / m_pDecoder->GetBitrate();
    }
    const auto whole = static_cast<int>(std::min(seconds, kLongestTime));
    return CascadeString::Format("%d:%02d", whole / 60, whole % 60);
}
