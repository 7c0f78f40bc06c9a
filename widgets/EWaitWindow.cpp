#include "widgets/EWaitWindow.h"

#include <cmath>
#include <numbers>

#include "widgets/EUtils.h"

namespace {

constexpr int kWidth = 420;
constexpr int kHeight = 150;
constexpr int kMargin = 32;
constexpr int kFontSize = 26;
constexpr uint32_t kTickMs = 100;
constexpr unsigned kTicksAround = 12;    // one round of the wave
constexpr int kDots = 5;
constexpr int kDot = 14;
constexpr int kSpacing = 32;
constexpr int kDotsTop = 46;    // middle of the dots
constexpr int kTextTop = 82;
constexpr double kFaintest = 0.25;
constexpr double kShift = 0.13;    // of a round between one dot and the next

// 0 to 1 and back, the dots one after the other.
double Glow(unsigned tick, int dot)
{
    const double phase = static_cast<double>(tick % kTicksAround) / kTicksAround - dot * kShift;
    return 0.5 + 0.5 * std::cos(2 * std::numbers::pi * phase);
}

}    // namespace

EWaitWindow::EWaitWindow()
    : m_Text("Please wait...")
    , m_Font("system", kFontSize)
{
    SetTitle("Please wait");
}

void EWaitWindow::SetGraphicsPath(const char* folder)
{
    m_Palette = EPalette::Load(folder);
    Redraw();
}

void EWaitWindow::SetText(const char* text)
{
    m_Text = text;
    Redraw();
}

void EWaitWindow::Show(const CascadeRect& over, Plane plane)
{
    SetRect({over.left + (over.width - kWidth) / 2, over.top + (over.height - kHeight) / 2, kWidth, kHeight});
    Materialize(plane);
}

void EWaitWindow::OnMaterialize()
{
    m_nTick = 0;
    m_nTimer = SetTimer(kTickMs);
}

void EWaitWindow::OnVanish()
{
    KillTimer(m_nTimer);
}

void EWaitWindow::OnTimer(unsigned long /*id*/)
{
    ++m_nTick;
    Redraw();
}

void EWaitWindow::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& panel = GetRect();
    bitmap.Fill(0);
    m_Palette.PaintPanel(bitmap, panel);
    const int middle = panel.left + panel.width / 2;
    for (int i = 0; i < kDots; ++i) {
        const double glow = Glow(m_nTick, i);
        const int size = kDot - 4 + static_cast<int>(std::lround(4 * glow)) / 2 * 2;
        const auto alpha = static_cast<CascadeColor>(std::lround(255 * (kFaintest + (1 - kFaintest) * glow)));
        const CascadePoint at = {middle + (2 * i - kDots + 1) * kSpacing / 2, panel.top + kDotsTop};
        bitmap.FillRoundedRect({at.x - size / 2, at.y - size / 2, size, size}, size / 2, (m_Palette.accent & 0xFFFFFF00) | alpha);
    }
    const CascadeString shown = EUtils::TrimStringToWidth(m_Text, panel.width - 2 * kMargin, m_Font, false);
    bitmap.TextOut({middle - m_Font.GetTextExtent(shown).width / 2, panel.top + kTextTop}, shown, m_Font, m_Palette.text);
}
