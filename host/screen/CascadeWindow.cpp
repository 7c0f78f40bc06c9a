#include "platform/CascadeWindow.h"

#include "host/base/UiQueue.h"
#include "host/screen/WindowStack.h"

using screen::WindowStack;

CascadeWindow::CascadeWindow() = default;

CascadeWindow::~CascadeWindow()
{
    WindowStack::Instance().Remove(this);
}

void CascadeWindow::Materialize(Plane plane)
{
    if (IsMaterialized()) {
        return;
    }
    WindowStack::Instance().Add(this, plane);
    OnMaterialize();
}

void CascadeWindow::Vanish()
{
    if (IsMaterialized()) {
        WindowStack::Instance().Remove(this);
        OnVanish();    // may delete this
    }
}

bool CascadeWindow::IsMaterialized() const
{
    return WindowStack::Instance().Contains(this);
}

void CascadeWindow::SetRect(const CascadeRect& rect)
{
    if (!(m_Rect == rect)) {
        m_Rect = rect;
        Redraw();
    }
}

void CascadeWindow::Redraw()
{
    if (host::IsUiThread()) {
        WindowStack::Instance().Redraw(this);
    } else {
        WindowStack::Instance().RequestRedraw(this);
    }
}

void CascadeWindow::Redraw(const CascadeRect& part)
{
    if (host::IsUiThread()) {
        WindowStack::Instance().Redraw(this, part);
    } else {
        WindowStack::Instance().RequestRedraw(this);
    }
}

void CascadeWindow::TakeFocus()
{
    WindowStack::Instance().SetFocus(this);
}

bool CascadeWindow::HasFocus() const
{
    return WindowStack::Instance().Focus() == this;
}
