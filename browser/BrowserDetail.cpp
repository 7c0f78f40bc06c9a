#include "browser/BrowserDetail.h"

#include <algorithm>

#include "browser/BrowserLayout.h"
#include "widgets/EUtils.h"

namespace {

constexpr int kHeadingLines = 3;
constexpr int kFactLines = 2;    // of each
constexpr int kGap = 10;
constexpr int kLineGap = 4;
constexpr int kFrameRadius = 10;
constexpr CascadeColor kFrame = 0x00000060;

int LineHeight(const CascadeFont& font)
{
    return EUtils::GetLineHeight(font) + kLineGap;
}

// Names without blanks are as wide as they like, so a line that does not fit is broken anywhere.
std::vector<CascadeString> BreakLines(const CascadeString& text, int width, const CascadeFont& font, size_t most)
{
    std::vector<CascadeString> lines;
    for (const CascadeString& line : EUtils::WrapText(font, text, width)) {
        CascadeString rest = line;
        while (lines.size() < most && font.GetTextExtent(rest).width > width) {
            const std::vector<size_t> offsets = EUtils::CharacterOffsets(rest.Str());
            const size_t fits = EUtils::LargestFitting(offsets.size() - 1, [&](size_t n) { return font.GetTextExtent(rest.Left(offsets[n])).width <= width; });
            const size_t cut = offsets[std::max<size_t>(fits, 1)];
            lines.push_back(rest.Left(cut));
            rest = rest.From(cut);
        }
        if (lines.size() >= most) {
            break;
        }
        lines.push_back(rest);
    }
    return lines;
}

// At most `most` lines, the last one with an ellipsis when there is more.
std::vector<CascadeString> FitLines(const CascadeString& text, int width, const CascadeFont& font, size_t most)
{
    std::vector<CascadeString> lines = BreakLines(text, width, font, most + 1);
    if (lines.size() > most && most > 0) {
        lines.resize(most);
        lines.back() = EUtils::TrimStringToWidth(lines.back() + "\xE2\x80\xA6", width, font, false);
    }
    return lines;
}

}    // namespace

BrowserDetail::BrowserDetail()
    : m_HeadingFont("system", BrowserLayout::kHeadingSize)
    , m_TextFont("system", BrowserLayout::kTextSize)
{
    SetTitle("Browser detail");
    m_Picture.SetTitle("Browser picture");
    SetRect(BrowserLayout::kDetail);
    m_Picture.SetRect(BrowserLayout::kPicture);
}

void BrowserDetail::SetGraphicsPath(const char* folder)
{
    m_Palette = EPalette::Load(folder);
    Redraw();
}

void BrowserDetail::OnMaterialize()
{
    if (m_Default.IsEmpty() && !m_DefaultPath.IsEmpty()) {
        m_Default.CreateFromFile(m_DefaultPath);
        m_Picture.SetDefaultImage(&m_Default);
    }
    if (m_Folder.IsEmpty() && !m_FolderPath.IsEmpty()) {
        m_Folder.CreateFromFile(m_FolderPath);
    }
    ShowPicture();
}

void BrowserDetail::OnVanish()
{
    CascadeThumbnails::Cancel(*this);
    m_Picture.Vanish();
    m_Picture.SetJpegFilePath("");
    m_Picture.WaitUntilFinished();
}

void BrowserDetail::Show(const Content& content)
{
    const bool samePicture = content.picture == m_Content.picture && content.thumbnailOf == m_Content.thumbnailOf;
    m_Content = content;
    if (!samePicture) {
        CascadeThumbnails::Cancel(*this);
        m_Thumbnail.Destroy();
        m_nSeconds = 0;
        ShowPicture();
    }
    Redraw();
}

void BrowserDetail::ShowPicture()
{
    if (!IsMaterialized()) {
        return;
    }
    if (!m_Content.picture.IsEmpty()) {
        m_Picture.SetJpegFilePath(m_Content.picture);
        m_Picture.Materialize(kPlane2);
    } else {
        m_Picture.Vanish();
        m_Picture.SetJpegFilePath("");
    }
    if (!m_Content.thumbnailOf.IsEmpty()) {
        CascadeThumbnails::Request(m_Content.thumbnailOf, *this);
    }
}

void BrowserDetail::OnThumbnail(const char* path, const char* pictureFile, int seconds)
{
    if (!(m_Content.thumbnailOf == path)) {
        return;
    }
    m_nSeconds = m_Content.isWhole ? seconds : 0;
    if (m_Content.picture.IsEmpty() && *pictureFile != '\0') {
        m_Thumbnail.CreateFromFile(pictureFile);
    }
    Redraw();
}

CascadeString BrowserDetail::DurationText(int seconds)
{
    constexpr int kMinute = 60;
    constexpr int kHour = 60 * kMinute;
    return seconds < kHour ? CascadeString::Format("%d:%02d min", seconds / kMinute, seconds % kMinute) :
                             CascadeString::Format("%d h %02d min", seconds / kHour, seconds % kHour / kMinute);
}

std::vector<CascadeString> BrowserDetail::Facts() const
{
    std::vector<CascadeString> facts = m_Content.facts;
    if (m_nSeconds > 0) {    // beside the size: each line that is saved is one of the description
        facts.insert(facts.begin(), DurationText(m_nSeconds));
        if (facts.size() > 1) {
            facts[0] += " \xC2\xB7 " + facts[1];
            facts.erase(facts.begin() + 1);
        }
    }
    return facts;
}

void BrowserDetail::OnPaint(CascadeBitmap& bitmap)
{
    bitmap.Fill(0);
    m_Palette.PaintPanel(bitmap, GetRect());
    PaintPicture(bitmap);
    const int width = GetRect().width - 2 * BrowserLayout::kDetailPadding;
    int top = BrowserLayout::kPicture.Bottom() + kGap + kLineGap;
    top = PaintLines(bitmap, top, FitLines(m_Content.heading, width, m_HeadingFont, kHeadingLines), m_HeadingFont, m_Palette.text) + kGap;
    for (const CascadeString& fact : Facts()) {
        top = PaintLines(bitmap, top, FitLines(fact, width, m_TextFont, kFactLines), m_TextFont, m_Palette.quiet);
    }
    PaintDescription(bitmap, top + kGap);
}

void BrowserDetail::PaintPicture(CascadeBitmap& bitmap) const
{
    const CascadeRect& box = BrowserLayout::kPicture;
    bitmap.FillRoundedRect(box, kFrameRadius, kFrame);
    if (!m_Content.picture.IsEmpty()) {
        return;    // the widget lies above
    }
    const CascadeBitmap& picture = !m_Thumbnail.IsEmpty() ? m_Thumbnail : (m_Content.isFolder ? m_Folder : m_Default);
    const CascadeDims dims = picture.GetDims();
    if (dims.width <= 0 || dims.height <= 0) {
        return;
    }
    // A thumbnail fills the frame, the default picture keeps its size.
    double scale = std::min(static_cast<double>(box.width) / dims.width, static_cast<double>(box.height) / dims.height);
    if (m_Thumbnail.IsEmpty()) {
        scale = std::min(scale, 1.0);
    }
    const int width = static_cast<int>(dims.width * scale);
    const int height = static_cast<int>(dims.height * scale);
    bitmap.StretchBlit({box.left + (box.width - width) / 2, box.top + (box.height - height) / 2, width, height}, picture);
}

int BrowserDetail::PaintLines(CascadeBitmap& bitmap, int top, const std::vector<CascadeString>& lines, const CascadeFont& font, CascadeColor color) const
{
    for (const CascadeString& line : lines) {
        bitmap.TextOut({GetRect().left + BrowserLayout::kDetailPadding, top}, line, font, color);
        top += LineHeight(font);
    }
    return top;
}

void BrowserDetail::PaintDescription(CascadeBitmap& bitmap, int top) const
{
    const int room = GetRect().Bottom() - BrowserLayout::kDetailPadding - top;
    const int lines = room / LineHeight(m_TextFont);
    if (lines > 0 && !m_Content.text.IsEmpty()) {
        const int width = GetRect().width - 2 * BrowserLayout::kDetailPadding;
        PaintLines(bitmap, top, FitLines(m_Content.text, width, m_TextFont, static_cast<size_t>(lines)), m_TextFont, m_Palette.text);
    }
}
