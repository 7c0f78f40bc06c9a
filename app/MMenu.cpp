#include "app/MMenu.h"

#include <algorithm>

#include "app/MThemeSelect.h"
#include "platform/CascadeArrays.h"
#include "platform/RemoteKeys.h"
#include "widgets/ESlices.h"
#include "widgets/EUtils.h"

namespace {

constexpr int kTitleSize = 34;
constexpr int kMargin = 44;    // between the panel's edge and what stands in it
constexpr int kTop = 26;
constexpr int kTitleGap = 12;    // above and below the rule under the title
constexpr int kBottom = 28;
constexpr int kItemHeight = 46;
constexpr int kHighestRow = 64;
constexpr int kLabelGap = 20;
constexpr int kControlEnd = 32;    // the pictures' round ends and arrows lie within
constexpr int kButtonInset = 16;    // of a text from the ends of its picture
constexpr int kSpinnerInset = 34;

constexpr CascadeColor kFocusColor = 0xFFFFFFFF;
constexpr CascadeColor kTextColor = 0xD5DCECFF;
constexpr CascadeColor kRuleColor = 0xFFFFFF30;

constexpr int Even(int value)
{
    return value / 2 * 2;
}

enum class Align { kLeft, kCentre };

void PaintText(CascadeBitmap& bitmap, const CascadeRect& box, const char* text, const CascadeFont& font, CascadeColor color, Align align)
{
    const CascadeString shown = EUtils::TrimStringToWidth(text, box.width, font, false);
    const CascadeDims extent = font.GetTextExtent(shown);
    const int x = align == Align::kLeft ? 0 : (box.width - extent.width) / 2;
    bitmap.TextOut({box.left + x, box.top + (box.height - extent.height) / 2}, shown, font, color);
}

}    // namespace

MMenu::MMenu()
    : m_TitleFont("system", kTitleSize)
    , m_Font(GetWidgetFont(0))
{
}

void MMenu::AddItem(unsigned long id, const char* text)
{
    Item& item = m_Items.emplace_back();
    item.id = id;
    item.text = text;
}

void MMenu::AddSpinner(unsigned long id, const char* label, int current, const char* const* choices, int count)
{
    AddItem(id, label);
    m_Items.back().spinner = true;
    for (int i = 0; i < std::min(count, kMaxChoices); ++i) {
        SetText(id, choices[i], i);
    }
    SetCurrentChoice(id, current);
}

const MMenu::Item* MMenu::Find(unsigned long id) const
{
    const auto found = std::find_if(m_Items.begin(), m_Items.end(), [id](const Item& item) { return item.id == id; });
    return found == m_Items.end() ? nullptr : &*found;
}

void MMenu::SetText(unsigned long id, const char* text, int choice)
{
    Item* const item = Find(id);
    if (item == nullptr) {
        return;
    }
    if (!item->spinner) {
        item->text = text;
    } else if (choice >= 0 && choice < kMaxChoices) {
        item->choices[static_cast<size_t>(choice)] = {text != nullptr, text};
    }
    Redraw();
}

void MMenu::SetCurrentChoice(unsigned long id, int choice)
{
    Item* const item = Find(id);
    if (item != nullptr && choice >= 0 && choice < kMaxChoices && item->choices[static_cast<size_t>(choice)].present) {
        item->current = choice;
        Redraw();
    }
}

int MMenu::GetCurrentChoice(unsigned long id) const
{
    const Item* const item = Find(id);
    return item == nullptr ? 0 : item->current;
}

// ---- keys

void MMenu::OnMaterialize()
{
    m_nFocus = 0;
    TakeFocus();
}

bool MMenu::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    if (m_Items.empty()) {
        return true;
    }
    if (key == Remote::kUp || key == Remote::kDown) {
        MoveFocus(key == Remote::kUp ? m_Items.size() - 1 : 1);
    } else {
        Spin(m_Items[m_nFocus], key == Remote::kLeft ? -1 : 1);
    }
    return true;
}

void MMenu::MoveFocus(size_t steps)
{
    m_nFocus = (m_nFocus + steps) % m_Items.size();
    Redraw();
}

// To the next choice that is there, round and round.
void MMenu::Spin(Item& item, int step)
{
    for (int i = 1; item.spinner && i <= kMaxChoices; ++i) {
        const int choice = (item.current + step * i + 2 * kMaxChoices) % kMaxChoices;
        if (item.choices[static_cast<size_t>(choice)].present) {
            item.current = choice;
            Redraw();
            return;
        }
    }
}

// A key that means nothing here is swallowed: behind a menu nothing happens unseen.
bool MMenu::OnKeyDown(unsigned long key)
{
    if (key == Remote::kMenu || key == Remote::kExit) {
        Close(IMMenu_CB::kCancelled);
    } else if (key == Remote::kSelect && !m_Items.empty()) {
        Item& item = m_Items[m_nFocus];
        if (item.spinner) {
            Spin(item, 1);
        } else {
            Close(item.id);
        }
    }
    return true;
}

void MMenu::Close(unsigned long id)
{
    Vanish();
    if (m_pHandler != nullptr) {
        m_pHandler->OnMenu(id);
    }
}

// ---- drawing

bool MMenu::HasSpinners() const
{
    return std::any_of(m_Items.begin(), m_Items.end(), [](const Item& item) { return item.spinner; });
}

// Buttons and spinners of a menu are equally wide, so that the focus moves along one column.
int MMenu::ControlWidth() const
{
    int labels = 0;
    for (const Item& item : m_Items) {
        if (item.spinner) {
            labels = std::max(labels, m_Font.GetTextExtent(item.text).width + kLabelGap);
        }
    }
    return Even(std::min(m_nButtonWidth, GetRect().width - (labels > 0 ? 2 * kMargin : kMargin) - labels));
}

void MMenu::OnPaint(CascadeBitmap& bitmap)
{
    const CascadeRect& panel = GetRect();
    bitmap.Fill(0);
    bitmap.StretchBlit(panel, *g_ThemeSelect.GetThemeBitmap(MThemeSelect::kDialog));
    const int top = PaintTitle(bitmap);
    if (m_Items.empty()) {
        return;
    }
    // The rows share what is left; a short column stands in the middle of it. Even edges keep the joints of
    // the pictures' slices on whole pixels.
    const int count = static_cast<int>(m_Items.size());
    const int room = panel.Bottom() - kBottom - top;
    const int height = Even(std::min(kHighestRow, room / count));
    CascadeRect row = {panel.left + kMargin, Even(top + (room - count * height) / 2), panel.width - 2 * kMargin, height};
    for (const Item& item : m_Items) {
        PaintItem(bitmap, item, row);
        row.top += height;
    }
}

int MMenu::PaintTitle(CascadeBitmap& bitmap) const
{
    const CascadeRect& panel = GetRect();
    const CascadeTokenArray lines(GetTitle(), "\n");
    CascadeRect box = {panel.left + kMargin, panel.top + kTop, panel.width - 2 * kMargin, 0};
    for (size_t i = 0; i < lines.GetSize(); ++i) {
        const CascadeFont& font = i == 0 ? m_TitleFont : m_Font;
        box.height = EUtils::GetLineHeight(font);
        PaintText(bitmap, box, lines[i], font, i == 0 ? kFocusColor : kTextColor, Align::kCentre);
        box.top += box.height;
    }
    bitmap.FillRect({box.left, box.top + kTitleGap, box.width, 2}, kRuleColor);
    return box.top + 2 * kTitleGap;
}

void MMenu::PaintItem(CascadeBitmap& bitmap, const Item& item, const CascadeRect& row) const
{
    const bool focused = &item == &m_Items[m_nFocus];
    const CascadeColor color = focused ? kFocusColor : kTextColor;
    CascadeRect control = {0, Even(row.top + (row.height - kItemHeight) / 2), ControlWidth(), kItemHeight};
    control.left = Even(HasSpinners() ? row.Right() - control.width : row.left + (row.width - control.width) / 2);

    using Theme = MThemeSelect;
    const auto picture
        = item.spinner ? (focused ? Theme::kSpinnerHighlight : Theme::kSpinnerNormal) : (focused ? Theme::kButtonHighlight : Theme::kButtonNormal);
    ESlices::Draw(bitmap, control, *g_ThemeSelect.GetThemeBitmap(picture), kControlEnd);
    CascadeRect inside = control;
    inside.InsetRect(item.spinner ? kSpinnerInset : kButtonInset, 0);
    if (!item.spinner) {
        PaintText(bitmap, inside, item.text, m_Font, color, Align::kCentre);
        return;
    }
    PaintText(bitmap, inside, item.choices[static_cast<size_t>(item.current)].text, m_Font, color, Align::kCentre);
    const CascadeRect label = {row.left, control.top, control.left - kLabelGap - row.left, control.height};
    PaintText(bitmap, label, item.text, m_Font, color, Align::kLeft);
}
