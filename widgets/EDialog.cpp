#include "widgets/EDialog.h"

#include <algorithm>

#include "platform/CascadeFile.h"
#include "platform/CascadeScreen.h"
#include "platform/CascadeTime.h"
#include "platform/RemoteKeys.h"
#include "widgets/ESlices.h"
#include "widgets/EUtils.h"

namespace {

constexpr int kWidth = 700;
constexpr int kMargin = 48;    // between the panel's edge and what stands in it
constexpr int kTop = 32;
constexpr int kTitleGap = 20;
constexpr int kLineGap = 6;
constexpr int kChoiceHeight = 46;
constexpr int kChoiceGap = 20;
constexpr int kWidestChoice = 270;
constexpr int kButtonEnd = 20;    // the pictures' round ends lie within
constexpr int kBottom = 36;

constexpr int kTitleSize = 36;
constexpr int kTextSize = 28;
constexpr int kChoiceSize = 26;
constexpr CascadeColor kTitleColor = 0xFFFFFFFF;
constexpr CascadeColor kTextColor = 0xE6EAF6FF;
constexpr CascadeColor kQuietColor = 0xB9C2D8FF;
constexpr CascadeColor kRuleColor = 0xFFFFFF30;

constexpr uint32_t kTickMs = 100;
constexpr int kLongestTimeout = 24 * 60 * 60;    // seconds: the number comes from the settings
constexpr uint32_t kMsPerSecond = 1000;

void PaintCentred(CascadeBitmap& bitmap, const CascadeRect& box, const char* text, const CascadeFont& font, CascadeColor color)
{
    const CascadeString shown = EUtils::TrimStringToWidth(text, box.width, font, false);
    const CascadeDims extent = font.GetTextExtent(shown);
    bitmap.TextOut({box.left + (box.width - extent.width) / 2, box.top + (box.height - extent.height) / 2}, shown, font, color);
}

}    // namespace

EDialog::EDialog()
    : m_TitleFont("system", kTitleSize)
    , m_TextFont("system", kTextSize)
    , m_ChoiceFont("system", kChoiceSize)
{
}

void EDialog::SetGraphicsFolders(const char* theme, const char* common)
{
    m_ThemeFolder = theme;
    m_CommonFolder = common;
}

void EDialog::SetChoices(std::initializer_list<const char*> choices)
{
    const size_t count = std::min(choices.size(), kMaxChoices);
    m_Choices.assign(choices.begin(), choices.begin() + count);
}

void EDialog::LoadPicture(CascadeBitmap& bitmap, const char* name) const
{
    const CascadeString own = m_ThemeFolder + name;
    const CascadeString shared = m_CommonFolder + name;
    EUtils::LoadBitmapFromFile(bitmap, CascadeFSObject::Exists(own) ? own : shared, CascadeString(CascadeGraphicsFolder()) + name);
}

void EDialog::Show(const char* name, Client* client)
{
    m_Name = name;
    m_pClient = client;
    m_nFocus = 0;
    LoadPicture(m_Panel, "common/dialog.png");
    LoadPicture(m_Normal, "common/textbutton-narrow-normal.png");
    LoadPicture(m_Highlight, "common/textbutton-narrow-highlight.png");
    LayOut();
    m_nShownAt = CascadeTime::GetUptimeMilliseconds();
    m_nShownSeconds = SecondsLeft();
    Materialize(kPlane3);
    Redraw();
}

// As high as the text needs. All edges are even, so that pictures stand on whole pixels of the usual outputs.
void EDialog::LayOut()
{
    m_Lines = EUtils::WrapText(m_TextFont, m_Text, kWidth - 2 * kMargin);
    const int title = EUtils::GetLineHeight(m_TitleFont) + 2 * kTitleGap;
    const int line = EUtils::GetLineHeight(m_TextFont) + kLineGap;
    const int text = static_cast<int>(m_Lines.size()) * line;
    const int countdown = m_nTimeout > 0 ? kChoiceGap + EUtils::GetLineHeight(m_ChoiceFont) : 0;
    const int above = (kTop + title + text + kChoiceGap + 1) / 2 * 2;

    CascadeRect rect = {0, 0, kWidth, (above + kChoiceHeight + countdown + kBottom + 1) / 2 * 2};
    EUtils::CenterRectInScreen(rect);
    rect.left -= rect.left % 2;
    rect.top -= rect.top % 2;
    m_nChoicesTop = rect.top + above;
    SetRect(rect);
}

void EDialog::OnMaterialize()
{
    TakeFocus();
    if (m_nTimeout > 0) {
        m_nTimer = SetTimer(kTickMs);
    }
}

void EDialog::OnVanish()
{
    if (m_nTimer != 0) {
        KillTimer(m_nTimer);
        m_nTimer = 0;
    }
}

uint32_t EDialog::SecondsLeft() const
{
    if (m_nTimeout <= 0) {
        return 0;
    }
    const uint32_t whole = static_cast<uint32_t>(std::min(m_nTimeout, kLongestTimeout)) * kMsPerSecond;
    const uint32_t passed = CascadeTime::GetUptimeMilliseconds() - m_nShownAt;
    return passed >= whole ? 0 : (whole - passed + kMsPerSecond - 1) / kMsPerSecond;
}

void EDialog::OnTimer(unsigned long /*id*/)
{
    const uint32_t left = SecondsLeft();
    if (left == 0) {
        Finish("");
    } else if (left != m_nShownSeconds) {
        m_nShownSeconds = left;
        Redraw();
    }
}

bool EDialog::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    const bool back = key == Remote::kLeft || key == Remote::kUp;
    MoveFocus(back ? m_Choices.size() - 1 : 1);
    return true;
}

void EDialog::MoveFocus(size_t steps)
{
    if (!m_Choices.empty()) {
        m_nFocus = (m_nFocus + steps) % m_Choices.size();
        Redraw();
    }
}

// Every other key is swallowed: the question stands until it is answered.
bool EDialog::OnKeyDown(unsigned long key)
{
    if (key == Remote::kSelect) {
        Finish(m_Choices.empty() ? CascadeString() : m_Choices[m_nFocus]);
    } else if (key == Remote::kExit || key == Remote::kMenu) {
        Finish("");
    }
    return true;
}

// The client may show the dialog again, with other choices, so the texts are copied first.
void EDialog::Finish(const CascadeString& button)
{
    const CascadeString name = m_Name;
    const CascadeString chosen = button;
    Vanish();
    if (m_pClient != nullptr) {
        m_pClient->OnDialogResult(name, chosen);
    }
}

void EDialog::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& panel = GetRect();
    const CascadeRect inner = {panel.left + kMargin, panel.top + kTop, panel.width - 2 * kMargin, 0};
    bitmap.Fill(0);
    bitmap.StretchBlit(panel, m_Panel);

    CascadeRect line = inner;
    line.height = EUtils::GetLineHeight(m_TitleFont);
    PaintCentred(bitmap, line, GetTitle(), m_TitleFont, kTitleColor);
    bitmap.FillRect({inner.left, line.Bottom() + kTitleGap / 2, inner.width, 2}, kRuleColor);

    line.top = line.Bottom() + 2 * kTitleGap;
    line.height = EUtils::GetLineHeight(m_TextFont);
    for (const CascadeString& text : m_Lines) {
        PaintCentred(bitmap, line, text, m_TextFont, kTextColor);
        line.top += line.height + kLineGap;
    }
    PaintChoices(bitmap);
    if (m_nTimeout > 0) {
        const CascadeString countdown = CascadeString::Format(m_nShownSeconds == 1 ? "Closes in %u second" : "Closes in %u seconds", m_nShownSeconds);
        line.top = m_nChoicesTop + kChoiceHeight + kChoiceGap;
        line.height = EUtils::GetLineHeight(m_ChoiceFont);
        PaintCentred(bitmap, line, countdown, m_ChoiceFont, kQuietColor);
    }
}

void EDialog::PaintChoices(CascadeBitmap& bitmap) const
{
    if (m_Choices.empty()) {
        return;
    }
    const int count = static_cast<int>(m_Choices.size());
    const int room = (kWidth - 2 * kMargin - (count - 1) * kChoiceGap) / count;
    const int width = std::min(room, kWidestChoice) / 2 * 2;
    const int row = count * width + (count - 1) * kChoiceGap;
    CascadeRect box = {(GetRect().left + (kWidth - row) / 2) / 2 * 2, m_nChoicesTop, width, kChoiceHeight};
    for (size_t i = 0; i < m_Choices.size(); ++i) {
        const bool focused = i == m_nFocus;
        ESlices::Draw(bitmap, box, focused ? m_Highlight : m_Normal, kButtonEnd);
        CascadeRect inside = box;
        inside.InsetRect(kButtonEnd / 2, 0);
        PaintCentred(bitmap, inside, m_Choices[i], m_ChoiceFont, focused ? kTitleColor : kTextColor);
        box.left += width + kChoiceGap;
    }
}
