// A keyboard on the screen for the remote: letters, digits and signs, a field above them for what is typed. A real
// keyboard may type into it too.
//
// Keys:      the four directions move, select presses the key that has the focus, exit and menu cancel, play accepts,
//            rewind removes the last character.
// Units:     logical pixels; a character is a Unicode code point.
// Errors:    a text of kMaxCharacters takes no more; control characters and invalid UTF-8 are not taken.
// Threads:   the user-interface thread.
// Ownership: the client is not owned and outlives the window. It is told of exactly one result for each ShowDialog,
//            after the window has left the screen, and may delete the window then; of none when the owner calls Vanish.
#pragma once

#include "platform/CascadeFont.h"
#include "platform/CascadeWindow.h"
#include "widgets/EPalette.h"
#include "widgets/KeyboardField.h"
#include "widgets/KeyboardGrid.h"

class EKeyboardWindow : public CascadeWindow {
public:
    class Client {
    public:
        virtual ~Client() = default;
        virtual void OnKeyboardText(const CascadeString& text) = 0;    // may be empty
        virtual void OnKeyboardCancelled() = 0;
    };

    static constexpr size_t kMaxCharacters = 128;

    EKeyboardWindow();

    void SetGraphicsPath(const char* folder);    // of the theme, with a trailing "/": colours
    void SetText(const char* text) { m_Field.SetText(text); }    // what stands in the field at first
    // Takes the focus. With `password` the field shows dots.
    void ShowDialog(const char* title, bool password, Client* client, Plane plane = kPlane3);

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long /*key*/) override { return true; }
    bool OnText(const char* utf8) override;

private:
    void Press(const KeyboardGrid::Key& key);
    void Finish(bool accepted);
    void PaintField(CascadeBitmap& bitmap, const CascadeRect& box) const;
    void PaintKey(CascadeBitmap& bitmap, const KeyboardGrid::Key& key, const CascadeRect& cap, bool focused) const;

    EPalette m_Palette;
    KeyboardField m_Field;
    KeyboardGrid m_Grid;
    bool m_bPassword = false;
    Client* m_pClient = nullptr;
    CascadeFont m_TitleFont;
    CascadeFont m_FieldFont;
    CascadeFont m_KeyFont;
    CascadeFont m_WordFont;
};
