#include "host/remote/PairingWindows.h"

#include <algorithm>

#include "platform/CascadeBitmap.h"
#include "platform/CascadeScreen.h"
#include "platform/RemoteKeys.h"

namespace host {
namespace {

constexpr CascadeColor kCardTop = 0x1B2233F4;
constexpr CascadeColor kCardBottom = 0x0D111BF4;
constexpr CascadeColor kEdge = 0xFFFFFF30;
constexpr CascadeColor kText = 0xE8ECF6FF;
constexpr CascadeColor kSoftText = 0xA9B4CCFF;
constexpr CascadeColor kDigits = 0xFFFFFFFF;
constexpr CascadeColor kBar = 0x6E9BFFFF;
constexpr CascadeColor kBarRoom = 0xFFFFFF20;
constexpr CascadeColor kCursor = 0x4A74D8FF;
constexpr CascadeColor kSure = 0xC0443CFF;

constexpr int kMargin = 48;    // from the screen's edges: televisions may cut some off
constexpr int kPad = 32;
constexpr int kRadius = 18;
constexpr int kCodeWidth = 440;
constexpr int kCodeHeight = 232;
constexpr int kListWidth = 760;
constexpr int kRowHeight = 44;
constexpr size_t kRows = 6;
constexpr uint32_t kTickMs = 1000;

void PaintCard(CascadeBitmap& bitmap, const CascadeRect& card)
{
    bitmap.Fill(0);
    bitmap.FillGradient(card, kRadius, kCardTop, kCardBottom, true);
    CascadeRect edge = card;
    edge.InsetRect(1, 1);
    bitmap.StrokeRoundedRect(edge, kRadius, 1.5, kEdge);
}

// As much of it as fits.
void PaintLine(CascadeBitmap& bitmap, CascadePoint at, std::string text, const CascadeFont& font, CascadeColor color, int width)
{
    while (text.size() > 1 && font.GetTextExtent(text.c_str()).width > width) {
        do {
            text.pop_back();
        } while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80);
    }
    bitmap.TextOut(at, text.c_str(), font, color);
}

}    // namespace

void CodeWindow::Display(const std::string& digits, const std::string& who, Clock::time_point until)
{
    m_Digits = digits.substr(0, 3) + " " + digits.substr(3);
    SetTitle(("Pairing code " + m_Digits).c_str());    // for who has it read aloud
    m_Who = who;
    m_Until = until;
    const CascadeDims screen = CascadeScreen::GetDims();
    SetRect({screen.width - kMargin - kCodeWidth, kMargin, kCodeWidth, kCodeHeight});
    if (!IsMaterialized()) {
        Materialize(kPlane3);
    }
    if (m_nTimer == 0) {
        m_nTimer = SetTimer(kTickMs);
    }
    Redraw();
}

void CodeWindow::OnVanish()
{
    KillTimer(m_nTimer);
    m_nTimer = 0;
}

void CodeWindow::OnTimer(unsigned long /*id*/)
{
    if (Clock::now() >= m_Until) {
        Vanish();
    } else {
        Redraw();
    }
}

void CodeWindow::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& card = GetRect();
    const int width = card.width - 2 * kPad;
    PaintCard(bitmap, card);
    const int left = card.left + kPad;
    PaintLine(bitmap, {left, card.top + 24}, "Code to pair a device", CascadeFont("system", 22), kSoftText, width);
    const CascadeFont large("system", 76);
    const CascadeDims extent = large.GetTextExtent(m_Digits.c_str());
    bitmap.TextOut({card.left + (card.width - extent.width) / 2, card.top + 58}, m_Digits.c_str(), large, kDigits);
    PaintLine(bitmap, {left, card.top + 162}, m_Who + " asks to drive this player", CascadeFont("system", 20), kText, width);

    const auto left_s = std::chrono::duration<double>(m_Until - Clock::now()).count();
    const CascadeRect room {left, card.top + 204, width, 6};
    CascadeRect rest = room;
    rest.width = static_cast<int>(std::clamp(left_s / 120.0, 0.0, 1.0) * width);
    bitmap.FillRoundedRect(room, 3, kBarRoom);
    if (rest.width > 6) {
        bitmap.FillRoundedRect(rest, 3, kBar);
    }
}

DevicesWindow::DevicesWindow(Source source)
    : m_Source(std::move(source))
{
    SetTitle("Paired devices");
}

void DevicesWindow::Display(std::vector<std::string> addresses)
{
    m_Addresses = std::move(addresses);
    Refresh();
    if (!IsMaterialized()) {
        Materialize(kPlane3);
    }
    TakeFocus();
}

void DevicesWindow::Refresh()
{
    m_Labels = m_Source.labels();
    m_nCursor = std::min(m_nCursor, m_Labels.empty() ? 0 : m_Labels.size() - 1);
    m_bSure = false;
    const CascadeDims screen = CascadeScreen::GetDims();
    const int rows = static_cast<int>(std::max<size_t>(1, std::min(m_Labels.size(), kRows)));
    const int height = 172 + 30 * static_cast<int>(m_Addresses.size()) + kRowHeight * rows;
    SetRect({(screen.width - kListWidth) / 2, (screen.height - height) / 2, kListWidth, height});
    Redraw();
}

bool DevicesWindow::OnKeyDown(unsigned long key)
{
    if (key == Remote::kExit || key == Remote::kMenu) {
        Vanish();
    } else if (key == Remote::kSelect && !m_Labels.empty()) {
        if (m_bSure) {
            m_Source.forget(m_nCursor);
            Refresh();
        } else {
            m_bSure = true;
            Redraw();
        }
    } else {
        m_bSure = false;
        Redraw();
    }
    return true;
}

bool DevicesWindow::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    m_bSure = false;
    if (key == Remote::kDown && m_nCursor + 1 < m_Labels.size()) {
        ++m_nCursor;
    } else if (key == Remote::kUp && m_nCursor > 0) {
        --m_nCursor;
    }
    Redraw();
    return true;
}

void DevicesWindow::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& card = GetRect();
    const int width = card.width - 2 * kPad;
    const CascadeFont title("system", 32);
    const CascadeFont font("system", 22);
    PaintCard(bitmap, card);
    CascadePoint at {card.left + kPad, card.top + 24};
    PaintLine(bitmap, at, "Phones and programs", title, kDigits, width);
    at.y += 50;
    for (const std::string& address : m_Addresses) {
        PaintLine(bitmap, at, address, font, kSoftText, width);
        at.y += 30;
    }
    at.y += 12;
    if (m_Labels.empty()) {
        PaintLine(bitmap, {at.x, at.y + 8}, "No device is paired", font, kText, width);
    }
    const size_t first = m_nCursor >= kRows ? m_nCursor - kRows + 1 : 0;
    for (size_t row = first; row < std::min(m_Labels.size(), first + kRows); ++row) {
        const CascadeRect bar {at.x - 12, at.y, width + 24, kRowHeight - 4};
        if (row == m_nCursor) {
            bitmap.FillRoundedRect(bar, 10, m_bSure ? kSure : kCursor);
        }
        PaintLine(bitmap, {at.x, at.y + 6}, m_Labels[row], font, kText, width);
        at.y += kRowHeight;
    }
    const char* const hint = m_Labels.empty() ? "Exit: close" : m_bSure ? "Select: forget it     Exit: close" : "Select twice: forget     Exit: close";
    PaintLine(bitmap, {at.x, card.Bottom() - 48}, hint, CascadeFont("system", 20), kSoftText, width);
}

}    // namespace host
