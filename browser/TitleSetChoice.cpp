#include "browser/TitleSetChoice.h"

#include <algorithm>
#include <utility>

#include "platform/RemoteKeys.h"
#include "widgets/EUtils.h"

namespace {

constexpr CascadeDims kWindow {760, 480};
constexpr int kMargin = 36;
constexpr int kTop = 28;
constexpr int kGap = 14;
constexpr int kShadow = 6;    // of the panel, inside its rectangle
constexpr CascadeColor kGround = 0x081226C0;    // what lies below must not be read through the text
constexpr const char* kTitle = "Select Title Set";
constexpr const char* kQuestion = "Multiple title sets larger than the configured threshold exist. Which would you like to play?";

}    // namespace

TitleSetChoice::TitleSetChoice()
    : m_TitleFont("system", 32)
    , m_TextFont("system", 24)
{
    SetTitle(kTitle);
    m_List.SetTitle("Title sets");
    m_List.AddColumn("Name", 0);
}

void TitleSetChoice::SetGraphicsPath(const char* folder)
{
    m_Palette = EPalette::Load(folder);
    m_List.SetGraphicsPath(folder);
}

void TitleSetChoice::Show(std::vector<FileInfo> titleSets, Client* client)
{
    m_TitleSets = std::move(titleSets);
    m_pClient = client;
    m_List.Clear(false);
    for (const FileInfo& titleSet : m_TitleSets) {
        m_List.AddItem(titleSet.title);
    }
    // The longest one is what most viewers want.
    const auto largest = std::max_element(m_TitleSets.begin(), m_TitleSets.end(), [](const FileInfo& a, const FileInfo& b) { return a.size < b.size; });
    m_List.SetSelectedIndex(static_cast<int>(largest - m_TitleSets.begin()), true);
    CascadeRect rect {0, 0, kWindow.width, kWindow.height};
    EUtils::CenterRectInScreen(rect);
    SetRect(rect);
    Materialize(kPlane3);
    Redraw();
}

void TitleSetChoice::OnMaterialize()
{
    TakeFocus();
    m_Lines = EUtils::WrapText(m_TextFont, kQuestion, kWindow.width - 2 * kMargin);
    const CascadeRect& panel = GetRect();
    const int head = kTop + EUtils::GetLineHeight(m_TitleFont) + kGap + static_cast<int>(m_Lines.size()) * EUtils::GetLineHeight(m_TextFont) + kGap;
    m_List.SetRect({panel.left + kMargin, panel.top + head, panel.width - 2 * kMargin, panel.height - head - kMargin});
    m_List.Materialize(kPlane3);
}

void TitleSetChoice::OnVanish()
{
    m_List.Vanish();
}

bool TitleSetChoice::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    if (key == Remote::kUp || key == Remote::kDown) {
        m_List.Step(key == Remote::kUp ? -1 : 1);
    }
    return true;
}

bool TitleSetChoice::OnKeyDown(unsigned long key)
{
    if (key == Remote::kSelect || key == Remote::kPlay) {
        Finish(m_List.GetSelectedIndex());
    } else if (key == Remote::kExit || key == Remote::kMenu) {
        Finish(-1);
    }
    return true;
}

bool TitleSetChoice::OnKeyUp(unsigned long /*key*/)
{
    m_List.StepReleased();
    return true;
}

void TitleSetChoice::Finish(int index)
{
    Client* const client = std::exchange(m_pClient, nullptr);
    const FileInfo chosen = index >= 0 && index < static_cast<int>(m_TitleSets.size()) ? m_TitleSets[static_cast<size_t>(index)] : FileInfo();
    Vanish();
    if (client != nullptr) {
        client->OnTitleSet(index < 0 ? nullptr : &chosen);
    }
}

void TitleSetChoice::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& panel = GetRect();
    CascadeRect ground = panel;
    ground.InsetRect(kShadow, kShadow);
    bitmap.Fill(0);
    bitmap.FillRoundedRect(ground, m_Palette.panelRadius, kGround);
    m_Palette.PaintPanel(bitmap, panel);
    CascadePoint at {panel.left + kMargin, panel.top + kTop};
    bitmap.TextOut(at, kTitle, m_TitleFont, m_Palette.text);
    at.y += EUtils::GetLineHeight(m_TitleFont) + kGap;
    for (const CascadeString& line : m_Lines) {
        bitmap.TextOut(at, line, m_TextFont, m_Palette.quiet);
        at.y += EUtils::GetLineHeight(m_TextFont);
    }
}
