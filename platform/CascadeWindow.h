// A window: a rectangle of the screen on one of the planes above the video.
//
// Units:     logical pixels.
// Threads:   the user-interface thread.
// Keys:      a key goes to the window that has the focus: the four navigation keys as OnNavKey, every
//            other one as OnKeyDown; what the window does not handle goes to the application.
// Painting:  only after Materialize or Redraw, once per turn of the loop, into a bitmap of its own that is
//            kept until the next painting. OnPaint draws in screen coordinates. Where only a part is due the bitmap is
//            as large as that (CascadeBitmap::GetBounds): OnPaint may draw everything, but saves what it leaves out.
// Ownership: not owned by the platform; a window takes itself off the screen when it is destroyed. It may
//            delete itself in OnVanish as its last act.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/CascadeBitmap.h"
#include "platform/CascadeGeometry.h"
#include "platform/CascadeString.h"

class CascadeWindow {
public:
    enum Plane { kPlane0 = 0, kPlane1 = 1, kPlane2 = 2, kPlane3 = 3 };    // higher ones lie above

    CascadeWindow();
    virtual ~CascadeWindow();
    CascadeWindow(const CascadeWindow&) = delete;
    CascadeWindow& operator=(const CascadeWindow&) = delete;

    virtual void OnPaint(CascadeBitmap& /*bitmap*/) {}
    virtual void OnMaterialize() {}
    virtual void OnVanish() {}
    virtual bool OnKeyDown(unsigned long /*key*/) { return false; }
    virtual bool OnKeyUp(unsigned long /*key*/) { return false; }
    // True: handled. A window in `next` takes the focus.
    virtual bool OnNavKey(unsigned long /*key*/, CascadeWindow*& /*next*/) { return false; }
    // A character typed on a keyboard, UTF-8. True: handled.
    virtual bool OnText(const char* /*utf8*/) { return false; }
    virtual void OnFocus(bool /*hasFocus*/) {}

    virtual void Materialize(Plane plane = kPlane0);    // puts it on top of its plane; takes the focus when no window has it; calls OnMaterialize
    void Vanish();                                      // the focus goes to the topmost window left that ever had it (else the topmost), then OnVanish
    bool IsMaterialized() const;

    void SetRect(const CascadeRect& rect);
    const CascadeRect& GetRect() const { return m_Rect; }
    void SetTitle(const char* title) { m_Title = title; }    // for diagnostics and accessibility, not painted
    const CascadeString& GetTitle() const { return m_Title; }

    void Redraw();
    void Redraw(const CascadeRect& part);    // no more than that changed; several parts add up
    void TakeFocus();
    bool HasFocus() const;

private:
    CascadeRect m_Rect;
    CascadeString m_Title;
};
