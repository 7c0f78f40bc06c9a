// A small panel that says that something takes time, with a calm animation.
//
// Units:     logical pixels; ticks of 100 ms.
// Threads:   the user-interface thread.
// Focus:     never takes the keys: whoever waits can still be told to stop.
// Ownership: not owned by the screen; Vanish takes it away.
#pragma once

#include "platform/CascadeFont.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"
#include "widgets/EPalette.h"

class EWaitWindow : public CascadeWindow, public CascadeTimer {
public:
    EWaitWindow();

    void SetGraphicsPath(const char* folder);    // of the theme, with a trailing "/": colours
    void SetText(const char* text);    // one line, shortened where it is too long; default "Please wait..."
    void Show(const CascadeRect& over, Plane plane = kPlane3);    // in the middle of that rectangle

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    void OnVanish() override;
    void OnTimer(unsigned long id) override;

private:
    EPalette m_Palette;
    CascadeString m_Text;
    CascadeFont m_Font;
    uint32_t m_nTimer = 0;
    unsigned m_nTick = 0;
};
