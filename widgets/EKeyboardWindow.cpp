#include "widgets/EKeyboardWindow.h"

#include <cstring>

#include "platform/RemoteKeys.h"
#include "widgets/EUtils.h"

namespace {

constexpr int kUnit = 18;    // width of a quarter of a key, with its share of the gap
constexpr int kKeyHeight = 58;
constexpr int kKeyGap = 8;
constexpr int kMargin = 40;
constexpr int kTop = 28;
constexpr int kTitleGap = 16;
constexpr int kFieldHeight = 60;
constexpr int kFieldGap = 24;
constexpr int kFieldInset = 18;
constexpr int kCaretWidth = 2;
constexpr int kKeyRadius = 12;

constexpr int kTitleSize = 34;
constexpr int kFieldSize = 30;
constexpr int kKeySize = 28;
constexpr int kWordSize = 22;
constexpr char kTypedBackspace[] = "\b";
constexpr CascadeColor kFieldColor = 0x00000059;

void PaintCentred(CascadeBitmap& bitmap, const CascadeRect& box, const char* text, const CascadeFont& font, CascadeColor color)
{
    const CascadeDims extent = font.GetTextExtent(text);
    bitmap.TextOut({box.left + (box.width - extent.width) / 2, box.top + (box.height - extent.height) / 2}, text, font, color);
}

}    // namespace

EKeyboardWindow::EKeyboardWindow()
    : m_Field(kMaxCharacters)
    , m_TitleFont("system", kTitleSize)
    , m_FieldFont("system", kFieldSize)
    , m_KeyFont("system", kKeySize)
    , m_WordFont("system", kWordSize)
{
}

void EKeyboardWindow::SetGraphicsPath(const char* folder)
{
    m_Palette = EPalette::Load(folder);
    Redraw();
}

void EKeyboardWindow::ShowDialog(const char* title, bool password, Client* client, Plane plane)
{
    SetTitle(title);
    m_bPassword = password;
    m_pClient = client;
    m_Grid.Reset();
    const int height = kTop + EUtils::GetLineHeight(m_TitleFont) + kTitleGap + kFieldHeight + kFieldGap
        + KeyboardGrid::kRows * (kKeyHeight + kKeyGap) - kKeyGap + kMargin;
    CascadeRect rect = {0, 0, KeyboardGrid::kRowUnits * kUnit - kKeyGap + 2 * kMargin, height / 2 * 2};
    EUtils::CenterRectInScreen(rect);
    SetRect(rect);
    Materialize(plane);
    Redraw();
}

void EKeyboardWindow::OnMaterialize()
{
    TakeFocus();
}

// ---- keys

bool EKeyboardWindow::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    if (key == Remote::kUp || key == Remote::kDown) {
        m_Grid.MoveVertical(key == Remote::kUp ? -1 : 1);
    } else {
        m_Grid.MoveHorizontal(key == Remote::kLeft ? -1 : 1);
    }
    Redraw();
    return true;
}

// Every other key is swallowed: behind the keyboard nothing happens unseen.
bool EKeyboardWindow::OnKeyDown(unsigned long key)
{
    switch (key) {
    case Remote::kSelect:
        Press(m_Grid.Focused());    // may delete this
        break;
    case Remote::kRewind:
        m_Field.Backspace();
        Redraw();
        break;
    case Remote::kPlay:
    case Remote::kPlayPause:
        Finish(true);
        break;
    case Remote::kExit:
    case Remote::kMenu:
        Finish(false);
        break;
    default:
        break;
    }
    return true;
}

// Whoever types on a real keyboard ends with its Enter key, which presses the focused one: that is OK then.
bool EKeyboardWindow::OnText(const char* utf8)
{
    if (std::strcmp(utf8, kTypedBackspace) == 0) {
        m_Field.Backspace();
    } else if (!m_Field.Append(utf8)) {
        return false;
    }
    m_Grid.FocusAccept();
    Redraw();
    return true;
}

void EKeyboardWindow::Press(const KeyboardGrid::Key& key)
{
    switch (key.action) {
    case KeyboardGrid::Action::kType:
        m_Field.Append(m_Grid.LabelOf(key));
        break;
    case KeyboardGrid::Action::kSpace:
        m_Field.Append(" ");
        break;
    case KeyboardGrid::Action::kBackspace:
        m_Field.Backspace();
        break;
    case KeyboardGrid::Action::kShift:
        m_Grid.SetShift(!m_Grid.Shift());
        break;
    case KeyboardGrid::Action::kPage:
        m_Grid.SetPage(m_Grid.CurrentPage() == KeyboardGrid::Page::kLetters ? KeyboardGrid::Page::kSigns : KeyboardGrid::Page::kLetters);
        break;
    case KeyboardGrid::Action::kCancel:
    case KeyboardGrid::Action::kAccept:
        Finish(key.action == KeyboardGrid::Action::kAccept);
        return;
    }
    Redraw();
}

// The client may delete this window, or show it again; so its result is copied and nothing is touched afterwards.
void EKeyboardWindow::Finish(bool accepted)
{
    const CascadeString text = m_Field.Text();
    Client* const client = m_pClient;
    m_pClient = nullptr;
    m_Field.SetText("");
    Vanish();
    if (client != nullptr && accepted) {
        client->OnKeyboardText(text);
    } else if (client != nullptr) {
        client->OnKeyboardCancelled();
    }
}

// ---- drawing

void EKeyboardWindow::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& panel = GetRect();
    bitmap.Fill(0);
    m_Palette.PaintGround(bitmap, panel);
    m_Palette.PaintPanel(bitmap, panel);

    CascadeRect line = {panel.left + kMargin, panel.top + kTop, panel.width - 2 * kMargin, EUtils::GetLineHeight(m_TitleFont)};
    PaintCentred(bitmap, line, EUtils::TrimStringToWidth(GetTitle(), line.width, m_TitleFont, false), m_TitleFont, m_Palette.text);
    line.top = line.Bottom() + kTitleGap;
    line.height = kFieldHeight;
    PaintField(bitmap, line);

    int top = line.Bottom() + kFieldGap;
    for (int row = 0; row < KeyboardGrid::kRows; ++row) {
        const KeyboardGrid::Row keys = m_Grid.RowAt(row);
        for (size_t i = 0; i < keys.size(); ++i) {
            const CascadeRect cap = {line.left + KeyboardGrid::StartOf(keys, i) * kUnit, top, keys[i].units * kUnit - kKeyGap, kKeyHeight};
            PaintKey(bitmap, keys[i], cap, row == m_Grid.FocusRow() && i == m_Grid.FocusColumn());
        }
        top += kKeyHeight + kKeyGap;
    }
}

// The end of the text is what one looks at, so a long one loses its beginning.
void EKeyboardWindow::PaintField(CascadeBitmap& bitmap, const CascadeRect& box) const
{
    bitmap.FillRoundedRect(box, kKeyRadius, kFieldColor);
    bitmap.StrokeRoundedRect(box, kKeyRadius, 2, m_Palette.rim);
    const int room = box.width - 2 * kFieldInset - 2 * kCaretWidth;
    const CascadeString shown = EUtils::TrimStringToWidth(m_bPassword ? m_Field.Dots() : m_Field.Text(), room, m_FieldFont, true);
    const int height = EUtils::GetLineHeight(m_FieldFont);
    const CascadePoint at = {box.left + kFieldInset, box.top + (box.height - height) / 2};
    bitmap.TextOut(at, shown, m_FieldFont, m_Palette.text);
    const int width = shown.IsEmpty() ? 0 : m_FieldFont.GetTextExtent(shown).width + kCaretWidth;
    bitmap.FillRect({at.x + width, at.y, kCaretWidth, height}, m_Palette.accent);
}

void EKeyboardWindow::PaintKey(CascadeBitmap& bitmap, const KeyboardGrid::Key& key, const CascadeRect& cap, bool focused) const
{
    const bool on = key.action == KeyboardGrid::Action::kShift && m_Grid.Shift();
    if (focused) {
        m_Palette.PaintFocus(bitmap, cap, kKeyRadius);
    } else {
        bitmap.FillRoundedRect(cap, kKeyRadius, m_Palette.key);
        if (on) {
            bitmap.StrokeRoundedRect(cap, kKeyRadius, 2, m_Palette.accent);
        }
    }
    const CascadeFont& font = key.action == KeyboardGrid::Action::kType ? m_KeyFont : m_WordFont;
    PaintCentred(bitmap, cap, m_Grid.LabelOf(key), font, focused ? m_Palette.onAccent : on ? m_Palette.accent : m_Palette.text);
}
