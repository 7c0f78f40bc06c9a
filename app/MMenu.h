// A menu: a title and a column of buttons and spinners, drawn with the pictures of the theme in use.
//
// Units:     logical pixels. A spinner has up to eight choices, numbered from 0; a choice may be missing.
// Errors:    an id that no item has is ignored and answers 0.
// Threads:   the user-interface thread.
// Ownership: owns copies of its texts. The handler is not owned and outlives the menu; it may delete
//            nothing of the menu while it is told.
#pragma once

#include <array>
#include <vector>

#include "platform/CascadeFont.h"
#include "platform/CascadeWindow.h"

class IMMenu_CB {
public:
    static constexpr unsigned long kCancelled = 0xFFFFFFFF;

    virtual ~IMMenu_CB() = default;
    // A button was pressed, or the menu was left with kCancelled; it is no longer on the screen.
    virtual void OnMenu(unsigned long id) = 0;
};

class MMenu : public CascadeWindow {
public:
    static constexpr int kMaxChoices = 8;
    static constexpr int kDefaultButtonWidth = 270;

    MMenu();

    // The first line of the window's title is the heading, further ones stand small below it.
    void SetHandler(IMMenu_CB* handler) { m_pHandler = handler; }
    void SetButtonSize(int width) { m_nButtonWidth = width; }    // as far as labels leave room
    void AddItem(unsigned long id, const char* text);
    void AddSpinner(unsigned long id, const char* label, int current, const char* const* choices, int count);    // null: a missing choice

    // A button's text, or that of a spinner's choice; null removes the choice.
    void SetText(unsigned long id, const char* text, int choice);
    void SetCurrentChoice(unsigned long id, int choice);    // ignored when the choice is missing
    int GetCurrentChoice(unsigned long id) const;

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long /*key*/) override { return true; }

private:
    struct Choice {
        bool present = false;
        CascadeString text;
    };
    struct Item {
        unsigned long id = 0;
        bool spinner = false;
        CascadeString text;    // of the button, or the spinner's label
        std::array<Choice, kMaxChoices> choices;
        int current = 0;
    };

    const Item* Find(unsigned long id) const;
    Item* Find(unsigned long id) { return const_cast<Item*>(static_cast<const MMenu*>(this)->Find(id)); }
    void MoveFocus(size_t steps);
    void Spin(Item& item, int step);
    void Close(unsigned long id);
    int PaintTitle(CascadeBitmap& bitmap) const;    // answers where the items may begin
    void PaintItem(CascadeBitmap& bitmap, const Item& item, const CascadeRect& row) const;
    int ControlWidth() const;
    bool HasSpinners() const;

    std::vector<Item> m_Items;
    size_t m_nFocus = 0;
    int m_nButtonWidth = kDefaultButtonWidth;
    IMMenu_CB* m_pHandler = nullptr;
    CascadeFont m_TitleFont;
    CascadeFont m_Font;
};
