#include "browser/EInfoWindow.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "browser/TextBytes.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeScreen.h"
#include "platform/RemoteKeys.h"
#include "widgets/ESlices.h"
#include "widgets/EUtils.h"

namespace {

constexpr CascadeDims kWindow {700, 400};
constexpr int kMargin = 30;
constexpr int kTitleTop = 14;
constexpr int kTextTop = 60;
constexpr int kTextHeight = 270;
constexpr int kTextHeightNarrow = 180;    // above a header
constexpr int kHeaderTop = 245;
constexpr int kHeaderHeight = 90;
constexpr int kHeaderLines = 4;
constexpr int kHeaderLess = 40;    // of the window's width
constexpr int kHeaderLessNarrow = 250;    // beside a picture
constexpr int kPictureGap = 20;
constexpr int kButtonTop = 342;
constexpr int kButtonWidth = 170;
constexpr int kButtonHeight = 40;
constexpr int kButtonGap = 20;
constexpr int kButtonEnd = 20;    // the pictures' round ends lie within
constexpr int kShadow = 2;

constexpr CascadeColor kTitleColor = 0xFFFFFFFF;
constexpr CascadeColor kTextColor = 0xE6EAF6FF;
constexpr CascadeColor kShadowColor = 0x00000070;
constexpr CascadeColor kBarColor = 0xFFFFFF30;
constexpr CascadeColor kThumbColor = 0xFFFFFFA0;

constexpr const char* kPlay = "Play";
constexpr const char* kDelete = "Delete";
constexpr const char* kCancel = "Cancel";

}    // namespace

EInfoWindow::EInfoWindow()
    : m_TitleFont("system", 30)
    , m_TextFont("system", 22)
    , m_ButtonFont("system", 24)
{
    SetTitle("Information");
    m_Picture.SetTitle("Information picture");
}

void EInfoWindow::SetGraphicsPath(const char* folder)
{
    m_ThemeFolder = folder;
    m_Palette = EPalette::Load(folder);
}

void EInfoWindow::SetFile(const char* path)
{
    SetInfo(path, EInfoFile(path));
}

void EInfoWindow::SetInfo(const char* path, const EInfoFile& info)
{
    std::printf("SetFile( %s );\n", path);
    m_Path = path;
    m_Info = info;
    BuildHeader();
}

void EInfoWindow::BuildHeader()
{
    std::string header;
    std::string pad;
    const auto add = [&](const char* label, const CascadeString& text) {
        if (text.IsEmpty()) {
            pad += '\n';
        } else {
            header += label + text.Str() + "\n";
        }
    };
    add("", m_Info.rating);
    add("Directed by: ", m_Info.director);
    add("Written by: ", m_Info.writer);
    add("", m_Info.genre);
    m_Header = header.empty() ? std::string() : pad + header;
    if (!m_Info.year.IsEmpty()) {
        m_Info.title = m_Info.title + " (" + m_Info.year + ")";
    }
}

void EInfoWindow::ShowDialog(Client* client)
{
    m_pClient = client;
    m_Result.Empty();
    m_nFocus = 0;
    m_nFirstLine = 0;
    CascadeRect rect {0, 0, kWindow.width, kWindow.height};
    EUtils::CenterRectInScreen(rect);
    SetRect(rect);
    Materialize(kPlane3);
    Redraw();
}

void EInfoWindow::OnMaterialize()
{
    LoadPictures();
    LayOut();
    LayOutButtons();
    TakeFocus();
    if (!m_PicturePath.IsEmpty()) {
        const CascadeRect& panel = GetRect();
        m_Picture.SetRect({panel.Right() - kHeaderLessNarrow + kPictureGap, panel.top + kTextTop + 4, kHeaderLessNarrow - kPictureGap - kMargin, kTextHeight - 8});
        m_Picture.SetJpegFilePath(m_PicturePath);
        m_Picture.Materialize(kPlane3);
    }
}

void EInfoWindow::LoadPictures()
{
    const auto load = [this](CascadeBitmap& bitmap, const char* name) {
        EUtils::LoadBitmapFromFile(bitmap, m_ThemeFolder + name, CascadeString(CascadeGraphicsFolder()) + name);
    };
    load(m_Panel, "common/dialog.png");
    load(m_Normal, "common/textbutton-small-normal.png");
    load(m_Highlight, "common/textbutton-small-highlight.png");
}

void EInfoWindow::LayOut()
{
    const CascadeRect& panel = GetRect();
    const bool beside = !m_PicturePath.IsEmpty();
    m_TextBox = {panel.left + kMargin, panel.top + kTextTop, panel.width - 2 * kMargin, m_Header.IsEmpty() ? kTextHeight : kTextHeightNarrow};
    if (beside) {
        m_TextBox.width = panel.width - kHeaderLessNarrow - kMargin;
    }
    m_ShownTitle = EUtils::TrimStringToWidth(m_Info.title, panel.width - 2 * kMargin, m_TitleFont, false);
    CascadeString text = m_Info.description;
    if (!m_Info.actors.IsEmpty()) {
        text += "\n\n";
        text += m_Info.actors;
    }
    // Room for the bar is kept, so that a text does not change its lines because it needs one.
    m_Lines = text.IsEmpty() ? std::vector<CascadeString>() : EUtils::WrapText(m_TextFont, text, m_TextBox.width - kPictureGap);
}

void EInfoWindow::LayOutButtons()
{
    m_Buttons.clear();
    m_Buttons.push_back({kPlay, {}});
    if (m_bDeletion) {
        m_Buttons.push_back({kDelete, {}});
    }
    m_Buttons.push_back({kCancel, {}});
    const int count = static_cast<int>(m_Buttons.size());
    int left = GetRect().left + (kWindow.width - count * kButtonWidth - (count - 1) * kButtonGap) / 2;
    for (Button& button : m_Buttons) {
        button.rect = {left, GetRect().top + kButtonTop, kButtonWidth, kButtonHeight};
        left += kButtonWidth + kButtonGap;
    }
}

void EInfoWindow::OnVanish()
{
    m_Picture.Vanish();
    m_Picture.SetJpegFilePath("");
    m_Buttons.clear();
    Client* const client = std::exchange(m_pClient, nullptr);
    if (client == nullptr) {
        return;
    }
    // The client may show the window again, or delete it.
    if (m_Result.Compare(kPlay, true) == 0) {
        client->OnInfoPlay();
    } else if (m_Result.Compare(kDelete, true) == 0) {
        client->OnInfoDelete();
    }
}

void EInfoWindow::ProcessButtonPress(const char* label)
{
    m_Result = CascadeString(label) == kCancel ? "" : label;
    Vanish();
}

bool EInfoWindow::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    if (key == Remote::kUp || key == Remote::kDown) {
        Scroll(key == Remote::kUp ? -1 : 1);
        return true;
    }
    if (key == Remote::kLeft && m_nFocus > 0) {
        --m_nFocus;
        Redraw();
    } else if (key == Remote::kRight && m_nFocus + 1 < m_Buttons.size()) {
        ++m_nFocus;
        Redraw();
    }
    return true;
}

// Every other key is swallowed: nothing below hears keys while the window is open.
bool EInfoWindow::OnKeyDown(unsigned long key)
{
    switch (key) {
    case Remote::kSelect:
        if (m_nFocus < m_Buttons.size()) {
            ButtonCallback(*this, m_Buttons[m_nFocus].label);
        }
        break;
    case Remote::kPlay:
        ButtonCallback(*this, kPlay);
        break;
    case Remote::kExit:
    case Remote::kMenu:
    case Remote::kInfo:
        m_Result.Empty();
        Vanish();
        break;
    case Remote::kPrevChapter:
        Scroll(static_cast<int>(VisibleLines()) - 1);
        break;
    case Remote::kNextChapter:
        Scroll(1 - static_cast<int>(VisibleLines()));
        break;
    case Remote::kFastForward:
        std::printf("CK_NEXT down\n");
        break;
    default:
        break;
    }
    return true;
}

bool EInfoWindow::OnKeyUp(unsigned long key)
{
    if (key == Remote::kFastForward) {
        std::printf("CK_NEXT up\n");
    }
    return true;
}

size_t EInfoWindow::VisibleLines() const
{
    return static_cast<size_t>(std::max(1, m_TextBox.height / EUtils::GetLineHeight(m_TextFont)));
}

void EInfoWindow::Scroll(int lines)
{
    const size_t visible = VisibleLines();
    const auto last = static_cast<long>(m_Lines.size() > visible ? m_Lines.size() - visible : 0);
    const long first = std::clamp(static_cast<long>(m_nFirstLine) + lines, 0L, last);
    if (first != static_cast<long>(m_nFirstLine)) {
        m_nFirstLine = static_cast<size_t>(first);
        Redraw();
    }
}

void EInfoWindow::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& panel = GetRect();
    bitmap.Fill(0);
    m_Palette.PaintGround(bitmap, panel);
    bitmap.StretchBlit(panel, m_Panel);
    EUtils::ShadowedTextOut(bitmap, {panel.left + kMargin, panel.top + kTitleTop}, m_ShownTitle, m_TitleFont, kTitleColor, kShadowColor, kShadow);
    PaintDescription(bitmap);
    PaintHeader(bitmap);
    PaintButtons(bitmap);
}

void EInfoWindow::PaintDescription(CascadeBitmap& bitmap) const
{
    const int height = EUtils::GetLineHeight(m_TextFont);
    const size_t visible = VisibleLines();
    CascadePoint at {m_TextBox.left, m_TextBox.top};
    for (size_t i = m_nFirstLine; i < std::min(m_Lines.size(), m_nFirstLine + visible); ++i) {
        // A word that is wider than the box has a line of its own, and is cut.
        const CascadeString shown = EUtils::TrimStringToWidth(m_Lines[i], m_TextBox.width - kPictureGap, m_TextFont, false);
        EUtils::ShadowedTextOut(bitmap, at, shown, m_TextFont, kTextColor, kShadowColor, kShadow);
        at.y += height;
    }
    if (m_Lines.size() > visible) {
        const int track = static_cast<int>(visible) * height;
        const int thumb = std::max(20, static_cast<int>(track * visible / m_Lines.size()));
        const int top = static_cast<int>(static_cast<size_t>(track - thumb) * m_nFirstLine / (m_Lines.size() - visible));
        bitmap.FillRoundedRect({m_TextBox.Right() - 6, m_TextBox.top, 6, track}, 3, kBarColor);
        bitmap.FillRoundedRect({m_TextBox.Right() - 6, m_TextBox.top + top, 6, thumb}, 3, kThumbColor);
    }
}

void EInfoWindow::PaintHeader(CascadeBitmap& bitmap) const
{
    if (m_Header.IsEmpty()) {
        return;
    }
    const CascadeFont font("system", 20);
    const CascadeRect& panel = GetRect();
    const int width = panel.width - (m_PicturePath.IsEmpty() ? kHeaderLess : kHeaderLessNarrow) - kMargin;
    CascadePoint at {panel.left + kMargin, panel.top + kHeaderTop};
    for (const std::string_view line : TextBytes::Lines(m_Header.Str())) {
        const CascadeString shown = EUtils::TrimStringToWidth(CascadeString(line), width, font, false);
        EUtils::ShadowedTextOut(bitmap, at, shown, font, m_Palette.quiet, kShadowColor, kShadow);
        at.y += kHeaderHeight / kHeaderLines;
    }
}

void EInfoWindow::PaintButtons(CascadeBitmap& bitmap) const
{
    for (size_t i = 0; i < m_Buttons.size(); ++i) {
        const Button& button = m_Buttons[i];
        ESlices::Draw(bitmap, button.rect, i == m_nFocus ? m_Highlight : m_Normal, kButtonEnd);
        const CascadeDims extent = m_ButtonFont.GetTextExtent(button.label);
        const CascadePoint at {button.rect.left + (button.rect.width - extent.width) / 2, button.rect.top + (button.rect.height - extent.height) / 2};
        bitmap.TextOut(at, button.label, m_ButtonFont, i == m_nFocus ? kTitleColor : kTextColor);
    }
}
