#include "app/MyWindow.h"

#include <algorithm>
#include <cstdio>

#include "app/MThemeSelect.h"
#include "platform/CascadeApp.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeInput.h"
#include "widgets/EUtils.h"

namespace {

constexpr uint32_t kTickMs = 100;
constexpr int kTwoSeconds = 20;    // ticks
constexpr int kMargin = 20;    // pixels, above and to the right of icons
constexpr int kTextMargin = 25;
constexpr int kTextTrim = 50;    // by how much texts stay narrower than the screen
constexpr int kLineGap = 5;
constexpr int kDefaultFontSize = 40;
constexpr int kLargestFont = 720;    // the height of the screen
constexpr CascadeColor kTextColor = 0xA0A0FFFF;
constexpr CascadeColor kShadowColor = 0x000000FF;

}    // namespace

MyWindow::MyWindow(Client& client)
    : m_Client(client)
{
    SetTitle("Nuvid");
    SetFontSize(kDefaultFontSize);
}

void MyWindow::SetFontSize(int points)
{
    // The size comes unchecked from the command line; a font needs one that can be drawn.
    m_Font.Create("system", std::clamp(points, 1, kLargestFont));
}

void MyWindow::ShowMessage(const Message& message, int ticks)
{
    m_Message = message;
    m_nHide = ticks;
    Redraw();
}

void MyWindow::OnMaterialize()
{
    m_nTimer = SetTimer(kTickMs);
    m_nKeepAwake = kTwoSeconds;
    m_nHide = kTwoSeconds;
    m_Message = Message {};
    m_Message.first = "Nuvid is loading...";
    // Those that cannot be shown are told now. None is kept: together they are a megabyte of which a film shows little.
    for (const char* const name : Osd::kIconFiles) {
        const CascadeString path = g_ThemeSelect.GetCommonImagePath(name);
        CascadeBitmap tried;
        if (!tried.CreateFromFile(path)) {
            std::printf("Failed to load bitmap %s!\n", path.Text());
        }
    }
}

void MyWindow::OnVanish()
{
    KillTimer(m_nTimer);
    m_nTimer = 0;
    CascadeApp::s_pTheApp->Terminate(0);
}

bool MyWindow::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    std::printf("MyWindow: Got Nav 0x%lx\n", key);
    m_Client.OnKeyDown(key);
    return true;
}

void MyWindow::OnTimer(unsigned long /*id*/)
{
    if (--m_nKeepAwake < 1) {
        if (m_Client.IsVideoRunning()) {
            CascadeInput::NotifyScreenActivity();
        }
        m_nKeepAwake = kTwoSeconds;
    }
    if (m_nHide != 0 && --m_nHide == 0) {
        Redraw();
    }
    m_Client.TimerSeq();
}

void MyWindow::OnPaint(CascadeBitmap& bitmap)
{
    bitmap.Fill(0);
    if (m_nHide == 0) {
        return;
    }
    int y = GetRect().top + kMargin;
    if (!PaintIconLine(bitmap, y)) {
        PaintText(bitmap, m_Message.first, y);
    }
    if (!m_Message.third.IsEmpty()) {
        PaintText(bitmap, m_Message.third, y);
    }
    if (!m_Message.fourth.IsEmpty()) {
        PaintText(bitmap, m_Message.fourth, y);
    }
}

// False when the words of the first text are to stand in for the line.
bool MyWindow::PaintIconLine(CascadeBitmap& bitmap, int& y)
{
    if (m_Message.second.IsEmpty()) {
        return false;
    }
    if (m_Message.iconIndex != Osd::kNoIconIndex) {
        CascadeBitmap& icon = m_Icons[static_cast<size_t>(m_Message.iconIndex)];
        if (icon.IsEmpty()) {
            icon.CreateFromFile(g_ThemeSelect.GetCommonImagePath(Osd::kIconFiles[m_Message.iconIndex]));
        }
        PaintPicture(bitmap, icon, y);
        return true;
    }
    const CascadeString path = g_ThemeSelect.GetCommonImagePath(m_Message.second);
    CascadeBitmap picture;
    if (!CascadeFSObject::Exists(path) || !picture.CreateFromFile(path)) {
        return false;
    }
    PaintPicture(bitmap, picture, y);
    return true;
}

void MyWindow::PaintPicture(CascadeBitmap& bitmap, const CascadeBitmap& picture, int& y) const
{
    const CascadeDims dims = picture.GetDims();
    bitmap.Blit({GetRect().Right() - dims.width - kMargin, y}, picture);
    y += dims.height + kLineGap;
}

void MyWindow::PaintText(CascadeBitmap& bitmap, const CascadeString& text, int& y) const
{
    const CascadeString shown = EUtils::TrimStringInMiddle(text, GetRect().width - kTextTrim, m_Font);
    const CascadeDims extent = m_Font.GetTextExtent(shown);
    EUtils::ShadowedTextOut(
        bitmap, {GetRect().Right() - extent.width - kTextMargin, y}, shown, m_Font, kTextColor, kShadowColor, m_Font.GetSize() / 10);
    y += extent.height + kLineGap;
}
