// A question in the middle of the screen with up to four answers, over a picture that plays on.
//
// Units:     seconds; logical pixels.
// Errors:    a picture that is missing in the theme is taken from the platform's own graphics.
// Threads:   the user-interface thread.
// Ownership: the client is not owned and outlives the dialog. It is told of exactly one result for each
//            Show, after the dialog has left the screen; of none when the owner calls Vanish.
#pragma once

#include <initializer_list>
#include <vector>

#include "platform/CascadeFont.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"

class EDialog : public CascadeWindow, public CascadeTimer {
public:
    class Client {
    public:
        virtual ~Client() = default;
        // `button` is the text of the answer; empty: none was chosen, or time ran out.
        virtual void OnDialogResult(const CascadeString& dialogName, const CascadeString& button) = 0;
    };

    static constexpr size_t kMaxChoices = 4;

    EDialog();

    // Each with a trailing "/": a picture is looked for in the first, then in the second.
    void SetGraphicsFolders(const char* theme, const char* common);
    void SetText(const char* text) { m_Text = text; }
    void SetChoices(std::initializer_list<const char*> choices);    // the first has the focus; further than four are left out
    void SetTimeout(int seconds) { m_nTimeout = seconds; }    // 0: none
    // The window's title stands above the text. Takes the focus.
    void Show(const char* name, Client* client);

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    void OnVanish() override;
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long /*key*/) override { return true; }
    void OnTimer(unsigned long id) override;

private:
    void LoadPicture(CascadeBitmap& bitmap, const char* name) const;
    void LayOut();
    void PaintChoices(CascadeBitmap& bitmap) const;
    void MoveFocus(size_t steps);
    uint32_t SecondsLeft() const;    // rounded up
    void Finish(const CascadeString& button);

    CascadeString m_Name;
    CascadeString m_Text;
    CascadeString m_ThemeFolder;
    CascadeString m_CommonFolder;
    std::vector<CascadeString> m_Choices;
    std::vector<CascadeString> m_Lines;    // the text as it is laid out
    size_t m_nFocus = 0;
    Client* m_pClient = nullptr;
    int m_nTimeout = 0;
    uint32_t m_nTimer = 0;
    uint32_t m_nShownAt = 0;    // ms of uptime
    uint32_t m_nShownSeconds = 0;    // what the countdown says
    int m_nChoicesTop = 0;
    CascadeFont m_TitleFont;
    CascadeFont m_TextFont;
    CascadeFont m_ChoiceFont;
    CascadeBitmap m_Panel;
    CascadeBitmap m_Normal;
    CascadeBitmap m_Highlight;
};
