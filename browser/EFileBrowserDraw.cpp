// What the browser paints itself: the ground, the head and the line of hints.
#include <algorithm>

#include "browser/BrowserKeys.h"
#include "browser/BrowserLayout.h"
#include "browser/EFileBrowser.h"
#include "platform/CascadeFile.h"
#include "widgets/EUtils.h"

namespace {

constexpr const char* kFilterLabels[] = {"Filter: All", "Filter: Sequence", "Filter: Sequence + Size", "Filter: Size"};
constexpr const char* kStep = " \xE2\x80\xBA ";    // between two folders of the path
constexpr CascadeColor kGroundTop = 0x060A14C8;
constexpr CascadeColor kGroundBottom = 0x02040AE6;
constexpr CascadeColor kShadowColor = 0x000000C0;
constexpr int kShadow = 2;
constexpr int kPillPadding = 16;
constexpr int kCapPadding = 8;
constexpr int kCapRadius = 8;
constexpr int kHintGap = 8;
constexpr int kHintSpace = 18;    // between two hints
constexpr CascadeColor kFaintOf256 = 96;    // the opacity of a hint that is not for this item

int Middle(const CascadeRect& box, int height)
{
    return box.top + (box.height - height) / 2;
}

CascadeColor Faint(CascadeColor color)
{
    return (color & 0xFFFFFF00) | ((color & 0xFF) * kFaintOf256 >> 8);
}

}    // namespace

// The number of the item under the cursor, the way up not counted, and the hints that are for it.
void EFileBrowser::ShowPosition()
{
    const int total = m_List.GetItemCount();
    const ItemKind first = KindOf(0);
    const int leading = total > 0 && (first == ItemKind::kParent || first == ItemKind::kLeave || first == ItemKind::kText) ? 1 : 0;
    const int count = total - leading;
    const int number = Selected() + 1 - leading;
    if (count == 0) {
        m_Position.SetText("");
    } else if (number < 1) {
        m_Position.SetText(CascadeString::Format(count == 1 ? "%d item" : "%d items", count));
    } else {
        m_Position.SetText(CascadeString::Format("%d of %d", number, count));
    }
    if (!BrowserKeys::AreAlike(KindOf(Selected()), m_HintsFor)) {
        Redraw(BrowserLayout::kHintLine);
    }
}

const char* EFileBrowser::FilterLabel() const
{
    if (IsInServer()) {
        return "";
    }
    if (!m_Set.filterLabel.IsEmpty()) {
        return m_Set.filterLabel;
    }
    return m_Place.filter >= 0 && m_Place.filter < static_cast<int>(std::size(kFilterLabels)) ? kFilterLabels[m_Place.filter] : "";
}

// From the top folder down; the whole path for a folder outside of it.
CascadeString EFileBrowser::PathText() const
{
    const std::string& folder = m_curPath.Str();
    std::string text;
    if (IsInServer()) {
        for (const ServerLocation::Crumb& crumb : m_Server.crumbs) {
            text += (text.empty() ? "" : kStep) + crumb.name.Str();
        }
        return CascadeString(text);
    }
    std::string rest = folder;
    if (m_Set.topFolder.GetLength() > 1 && folder.starts_with(m_Set.topFolder.Str())) {
        text = CascadeFSObject(m_Set.topFolder).GetName().Str();
        rest = folder.substr(m_Set.topFolder.GetLength());
    }
    const CascadeTokenArray steps(rest.c_str(), "/");
    for (size_t i = 0; i < steps.GetSize(); ++i) {
        text += (text.empty() ? "" : kStep) + steps[i].Str();
    }
    return CascadeString(text.empty() ? "/" : text);
}

void EFileBrowser::OnPaint(CascadeBitmap& bitmap)
{
    bitmap.Fill(0);
    bitmap.FillGradient(GetRect(), 0, kGroundTop, kGroundBottom, true);
    PaintHead(bitmap);
    PaintHints(bitmap);
}

// The ground between and around them stays as it is, and is most of the screen.
void EFileBrowser::RedrawTexts()
{
    Redraw(BrowserLayout::kHeadLine);
    Redraw(BrowserLayout::kHintLine);
}

void EFileBrowser::PaintHead(CascadeBitmap& bitmap) const
{
    const CascadeRect& head = BrowserLayout::kHead;
    const CascadeFont titleFont("system", BrowserLayout::kTitleSize);
    const CascadeFont pathFont("system", BrowserLayout::kPathSize);
    const CascadeFont labelFont("system", BrowserLayout::kTextSize);

    const char* const label = FilterLabel();
    const CascadeDims labelExtent = labelFont.GetTextExtent(label);
    CascadeRect pill {head.Right() - labelExtent.width - 2 * kPillPadding, head.top, labelExtent.width + 2 * kPillPadding, 40};
    if (*label != '\0') {
        bitmap.FillRoundedRect(pill, pill.height / 2, m_Palette.key);
        bitmap.StrokeRoundedRect(pill, pill.height / 2, 2, m_Palette.rim);
        bitmap.TextOut({pill.left + kPillPadding, Middle(pill, labelExtent.height)}, label, labelFont, m_Palette.text);
    }
    const CascadeString title = EUtils::TrimStringToWidth(m_Set.title, pill.left - head.left - kHintSpace, titleFont, false);
    EUtils::ShadowedTextOut(bitmap, {head.left, head.top - 2}, title, titleFont, m_Palette.text, kShadowColor, kShadow);
    const CascadeString path = EUtils::TrimStringToWidth(PathText(), head.width, pathFont, true);
    const int pathTop = head.Bottom() - EUtils::GetLineHeight(pathFont) - 4;
    EUtils::ShadowedTextOut(bitmap, {head.left, pathTop}, path, pathFont, m_Palette.quiet, kShadowColor, kShadow);
}

// What is of no use in the whole folder is left out; what is of none to the item is faint, so that nothing jumps.
void EFileBrowser::PaintHints(CascadeBitmap& bitmap)
{
    m_HintsFor = KindOf(Selected());
    const CascadeRect& line = BrowserLayout::kHints;
    const CascadeFont font("system", BrowserLayout::kHintSize);
    if (!m_Notice.IsEmpty()) {
        const CascadeFont noticeFont("system", BrowserLayout::kTextSize);
        const CascadeString shown = EUtils::TrimStringToWidth(m_Notice, line.width, noticeFont, false);
        const int top = Middle(line, noticeFont.GetTextExtent(shown).height);
        EUtils::ShadowedTextOut(bitmap, {line.left, top}, shown, noticeFont, m_Palette.accent, kShadowColor, kShadow);
        return;
    }
    int x = line.left;
    for (const BrowserKeys::Row& row : BrowserKeys::kRows) {
        const bool filesAlone = row.key == Remote::kStop || row.key == Remote::kMenu || row.key == Remote::kInfo;
        const bool inVain = (row.key == Remote::kStop && !m_Set.deletion) || (row.key == Remote::kLeft && IsAtTop() && !IsInServer())
            || (filesAlone && IsInServer());
        if (row.cap == nullptr || inVain) {
            continue;
        }
        const CascadeDims cap = font.GetTextExtent(row.cap);
        const char* const text = row.key == Remote::kSelect && !m_Set.chooseHint.IsEmpty() ? m_Set.chooseHint.Text() : row.hint;
        const CascadeDims hint = font.GetTextExtent(text);
        const CascadeRect key {x, line.top + 2, cap.width + 2 * kCapPadding, line.height - 4};
        if (key.Right() + kHintGap + hint.width > line.Right()) {
            break;
        }
        const auto shade = [bright = BrowserKeys::IsFor(m_HintsFor, row.key)](CascadeColor color) { return bright ? color : Faint(color); };
        bitmap.FillRoundedRect(key, kCapRadius, shade(m_Palette.key));
        bitmap.StrokeRoundedRect(key, kCapRadius, 1.5, shade(m_Palette.rim));
        bitmap.TextOut({key.left + kCapPadding, Middle(key, cap.height)}, row.cap, font, shade(m_Palette.text));
        bitmap.TextOut({key.Right() + kHintGap, Middle(line, hint.height)}, text, font, shade(m_Palette.quiet));
        x = key.Right() + kHintGap + hint.width + kHintSpace;
    }
}
